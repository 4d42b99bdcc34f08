#include "params/device_numbers.h"

#include <bit>
#include <cmath>
#include <limits>

namespace torvik {

namespace {
constexpr double largest32 = std::numeric_limits<std::int32_t>::max();
constexpr double smallest32 = std::numeric_limits<std::int32_t>::min();
}  // namespace

bool isNan(double value) {
    constexpr std::uint64_t infinity = std::uint64_t{0x7FF} << 52;
    return (std::bit_cast<std::uint64_t>(value) & ~(std::uint64_t{1} << 63)) > infinity;
}

std::optional<std::uint32_t> hundredths(double value) {
    // Compared before it is multiplied: the product of a huge number would overflow.
    if (isNan(value) || value < 0 || value > largest32) return std::nullopt;
    const double rounded = std::round(value * 100);
    if (rounded > largest32) return std::nullopt;
    return static_cast<std::uint32_t>(rounded);
}

std::optional<std::int32_t> truncated(double value) {
    if (isNan(value) || value <= smallest32 - 1 || value >= largest32 + 1) return std::nullopt;
    return static_cast<std::int32_t>(value);
}

}  // namespace torvik
