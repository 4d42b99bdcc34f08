#pragma once

#include <cstdint>

#include "frame.hpp"

namespace virtual_adapter {

// Bit rate in bit/s of a Btr0Btr1 code; 0 when the code is not known.
[[nodiscard]] std::uint32_t bitRateOf(std::uint16_t btr0btr1);

// Bits of a data frame on the wire, from its start bit to the end of the space after it. Half of the greatest possible
// number of stuff bits is counted, so that the time does not depend on the data: 123 bits for 8 bytes.
[[nodiscard]] std::uint32_t frameBits(std::uint8_t type, std::uint8_t length);

[[nodiscard]] Nanoseconds frameDuration(std::uint32_t bits, std::uint32_t bitRate);

}  // namespace virtual_adapter
