#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>

#include "calibration_memory.hpp"

namespace virtual_adapter {

// How a sensor's signals become its forces and torques: with u = (signal - zero signal) * input scale,
//
//     output = (matrix * u + matrix B * (products of two u)) * output scale,
//
// the torques about the point at the geometric offsets.
class ForceMatrix {
  public:
    // Nothing when the calibration makes no sense: more than six inputs or outputs, or factors that do not exist.
    [[nodiscard]] static std::optional<ForceMatrix> of(const SensorCalibration& calibration);

    // Puts the outputs in the place of the signals, of which there are six at least. Those that are not outputs stay.
    void apply(std::span<double> signals) const;

  private:
    static constexpr std::size_t kAxes = SensorCalibration::kAxes;
    using Axes = std::array<double, kAxes>;

    struct Product {
        std::size_t first = 0;
        std::size_t second = 0;
    };

    [[nodiscard]] bool takeFormat(const SensorCalibration& calibration);
    [[nodiscard]] bool takeMatrixB(const SensorCalibration& calibration);
    void moveTorques(Axes& output) const;

    std::size_t inputs_ = kAxes;
    std::size_t outputs_ = kAxes;
    bool hasMatrixB_ = false;
    double inputScale_ = 1;
    double outputScale_ = 1;
    std::array<double, 3> offsets_{};
    Axes zeros_{};
    std::array<Axes, kAxes> matrix_{};
    std::array<Axes, kAxes> matrixB_{};
    std::array<Product, kAxes> products_{};
};

}  // namespace virtual_adapter
