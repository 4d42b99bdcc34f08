#include "calibration_memory.hpp"

#include <cmath>

namespace virtual_adapter {

SensorCalibration::SensorCalibration() {
    namespace array = calibration_array;
    constexpr auto one = std::bit_cast<std::uint32_t>(1.0F);
    word(array::kOutputScale, 0) = word(array::kInputScale, 0) = one;
    for (std::size_t axis = 0; axis < kAxes; ++axis) {
        word(array::kMatrix, axis * kAxes + axis) = one;
        word(array::kMaxima, axis) = one;
    }
}

std::optional<std::uint32_t> SensorCalibration::whole(std::size_t array, std::size_t element,
                                                      std::uint32_t highest) const {
    const double given = number(array, element);
    if (!(given >= 0 && given <= static_cast<double>(highest)) || given != std::floor(given)) return std::nullopt;
    return static_cast<std::uint32_t>(given);
}

}  // namespace virtual_adapter
