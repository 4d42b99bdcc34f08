#include "force_matrix.hpp"

namespace virtual_adapter {
namespace {

namespace array = calibration_array;

// What the low byte of the format word says.
constexpr std::uint32_t kWithMatrixB = 1;
constexpr std::uint32_t kOwnDimensions = 2;

}  // namespace

std::optional<ForceMatrix> ForceMatrix::of(const SensorCalibration& calibration) {
    ForceMatrix matrix;
    if (!matrix.takeFormat(calibration)) return std::nullopt;
    if (matrix.hasMatrixB_ && !matrix.takeMatrixB(calibration)) return std::nullopt;
    matrix.inputScale_ = calibration.number(array::kInputScale);
    matrix.outputScale_ = calibration.number(array::kOutputScale);
    for (std::size_t i = 0; i < matrix.offsets_.size(); ++i)
        matrix.offsets_[i] = calibration.number(array::kOffsets, i);
    for (std::size_t input = 0; input < matrix.inputs_; ++input) {
        matrix.zeros_[input] = calibration.number(array::kZeroSignals, input);
        for (std::size_t output = 0; output < matrix.outputs_; ++output)
            matrix.matrix_[output][input] = calibration.number(array::kMatrix, output * matrix.inputs_ + input);
    }
    return matrix;
}

bool ForceMatrix::takeFormat(const SensorCalibration& calibration) {
    constexpr std::uint32_t highest = 0x7FFFFFFF;
    const auto format = calibration.whole(array::kFormat, 0, highest);
    if (!format) return false;
    const std::uint32_t kind = *format & 0xFFU;
    hasMatrixB_ = kind == kWithMatrixB;
    if (kind != kOwnDimensions) return true;
    inputs_ = (*format >> 16U) + 1U;
    outputs_ = (*format >> 12U & 0xFU) + 1U;
    return inputs_ <= kAxes && outputs_ <= kAxes;
}

bool ForceMatrix::takeMatrixB(const SensorCalibration& calibration) {
    for (std::size_t column = 0; column < kAxes; ++column) {
        const auto first = calibration.whole(array::kFirstFactors, column, kAxes - 1);
        const auto second = calibration.whole(array::kSecondFactors, column, kAxes - 1);
        if (!first || !second) return false;
        products_[column] = {*first, *second};
        for (std::size_t output = 0; output < kAxes; ++output)
            matrixB_[output][column] = calibration.number(array::kMatrixB, output * kAxes + column);
    }
    return true;
}

void ForceMatrix::apply(std::span<double> signals) const {
    Axes input{};
    for (std::size_t i = 0; i < inputs_; ++i)
        input[i] = (signals[i] - zeros_[i]) * inputScale_;
    Axes output{};
    for (std::size_t o = 0; o < outputs_; ++o) {
        for (std::size_t i = 0; i < inputs_; ++i)
            output[o] += matrix_[o][i] * input[i];
        for (std::size_t column = 0; hasMatrixB_ && column < kAxes; ++column)
            output[o] += matrixB_[o][column] * input[products_[column].first] * input[products_[column].second];
    }
    if (outputs_ == kAxes) moveTorques(output);
    for (std::size_t o = 0; o < outputs_; ++o)
        signals[o] = output[o] * outputScale_;
}

// A torque about another point is less by what the force does at that distance.
void ForceMatrix::moveTorques(Axes& output) const {
    const auto& [x, y, z] = offsets_;
    const double fx = output[0];
    const double fy = output[1];
    const double fz = output[2];
    output[3] -= y * fz - z * fy;
    output[4] -= z * fx - x * fz;
    output[5] -= x * fy - y * fx;
}

}  // namespace virtual_adapter
