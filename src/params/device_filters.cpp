#include "params/device_filters.h"

#include <algorithm>
#include <cmath>

#include "core/ask.h"
#include "core/library_state.h"
#include "params/device_numbers.h"

namespace torvik {

namespace {

constexpr double coefficientScale = 16777216.0;
constexpr std::uint32_t signBit = 0x80000000;
constexpr std::uint32_t yCoefficient = 0x10;
constexpr std::uint8_t presentSet = 0;

bool setCutoff(std::uint8_t deviceNo, std::uint32_t filterNo, std::uint32_t index, double cutoff) {
    return acknowledge(deviceNo, Command::setFilterCutoff, filterParameters(filterNo, index).f32(cutoff)) == 0;
}

bool setCoefficients(std::uint8_t deviceNo, std::uint32_t filterNo, std::uint32_t firstIndex,
                     std::span<const double> coefficients) {
    for (std::size_t i = 0; i < coefficients.size(); ++i) {
        const auto index = firstIndex + static_cast<std::uint32_t>(i);
        const std::uint32_t word = encodeCoefficient(coefficients[i], libraryState.protocolKind);
        if (acknowledge(deviceNo, Command::setFilterCoefficient, filterParameters(filterNo, index).u32(word)) != 0)
            return false;
    }
    return true;
}

}  // namespace

Parameters filterParameters(std::uint32_t filterNo, std::uint32_t second) {
    return Parameters().u8(static_cast<std::uint8_t>(filterNo)).u8(static_cast<std::uint8_t>(second));
}

std::uint32_t filterBit(std::uint32_t filterNo, bool fir) {
    // Kept: of the IIR bank filter 0 means six filters and not eight.
    if (filterNo == 0) return fir ? 0xFF00 : 0x3F;
    return (fir ? 0x100U : 1U) << ((filterNo - 1) & 31);
}

std::uint32_t encodeCoefficient(double coefficient, std::uint32_t protocolKind) {
    if (protocolKind != 32) return narrowToFloat(coefficient);
    constexpr std::uint32_t largest = 0x7FFFFFFF;
    const bool negative = !isNan(coefficient) && coefficient < 0;
    // A number that the format cannot hold becomes its largest.
    std::uint32_t magnitude = largest;
    if (!isNan(coefficient) && std::abs(coefficient) < 128.0)
        magnitude = static_cast<std::uint32_t>(
            std::min(std::round(std::abs(coefficient) * coefficientScale), static_cast<double>(largest)));
    return magnitude | (negative ? signBit : 0);
}

std::optional<double> decodeCoefficient(std::uint32_t word) {
    // Kept: a negative coefficient is passed over, although it is written so.
    if ((word & signBit) != 0) return std::nullopt;
    return word / coefficientScale;
}

std::int32_t loadFilter(std::uint8_t deviceNo, std::uint32_t filterNo, std::int32_t type, const double* cutoffs,
                        const double* x, const double* y) {
    const auto word = static_cast<std::uint32_t>(type);
    const std::size_t order = word & filter_type::orderMask;
    const bool fir = type < 0;
    if (acknowledge(deviceNo, Command::setFilterType, filterParameters(filterNo, word & 0xFF)) != 0) return -1;
    if (!setCutoff(deviceNo, filterNo, 0, cutoffs[0])) return -1;
    if (filter_type::isBand(word) && !setCutoff(deviceNo, filterNo, 1, cutoffs[1])) return -1;
    if (!setCoefficients(deviceNo, filterNo, fir ? firBank : 0, {x, order + 1})) return -1;
    if (!fir && !setCoefficients(deviceNo, filterNo, yCoefficient, {y, order})) return -1;
    return acknowledge(deviceNo, Command::storeSettings, Parameters().u8(presentSet));
}

}  // namespace torvik
