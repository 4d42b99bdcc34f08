// Values that no device takes, whether they come from a caller or from a file.
#pragma once

#include <cstdint>
#include <optional>

namespace torvik {

inline constexpr std::uint32_t highestFactor = 5;
inline constexpr std::size_t longestUnitText = 10;

// The digits of a serial number text: leading other characters are skipped, a text without digits is 0.
// Nothing: above 99999999.
std::optional<std::uint32_t> parseSerialText(const char* text);

// Whether a scale factor is 0 or so small that single precision does not hold it in full.
bool isTooSmallForScale(double scale);

}  // namespace torvik
