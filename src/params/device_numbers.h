// Doubles of the caller that become whole numbers on the wire.
#pragma once

#include <cstdint>
#include <optional>

namespace torvik {

// Looks at the bits, so that a NaN raises no floating-point exception.
bool isNan(double value);

// `value` x 100, rounded half away from zero. Nothing unless the result is 0..2147483647.
std::optional<std::uint32_t> hundredths(double value);

// `value` truncated toward zero. Nothing unless the result is -2147483648..2147483647.
std::optional<std::int32_t> truncated(double value);

}  // namespace torvik
