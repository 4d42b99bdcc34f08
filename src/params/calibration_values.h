// The number formats of the factory calibration values.
#pragma once

#include <cstdint>

namespace torvik {

enum class CalibrationFormat : std::uint8_t { none, floating, integer, unknownProtocol };

// The format of the value with an index 0..48 under the protocol kind, which is 16 or 32.
CalibrationFormat calibrationFormat(std::uint32_t protocolKind, std::uint32_t index);

}  // namespace torvik
