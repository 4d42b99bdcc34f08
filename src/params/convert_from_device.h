// Turning the bytes of an answer into numbers of this machine.
#pragma once

#include <cstddef>
#include <cstdint>

namespace torvik {

enum class DeviceNumber : std::uint8_t {
    byte = 0,              // one byte, whatever the length
    littleEndian16 = 1,    // 16-bit, cleared, bytes in order
    bigEndian16 = 2,       // 16-bit, cleared, bytes reversed
    littleEndian32 = 3,    // 32-bit, cleared, bytes in order
    bigEndian32 = 4,       // 32-bit, cleared, bytes reversed: two bytes give a 16-bit number
    bigEndian32Again = 5,  // the same
    reversed = 6,          // as many bytes as there are, reversed, nothing cleared
    leftAligned32 = 7,     // 32-bit, cleared, reversed from the highest byte down: two bytes fill the upper half
    widenedFloat = 8,      // leftAligned32 as a float, widened to double
    bytes = 9,             // as many bytes as there are, in order
    text = 10,             // bytes up to and including the first zero
};

// `kind` is a DeviceNumber; above 10 succeeds without doing anything. `length` bytes of `source` are used;
// `destination` has the width of the kind. Result: 1; 0 when a pointer is null, the length is below 1, or it exceeds
// the width of the kind.
std::uint32_t convertFromDevice(std::uint32_t kind, void* destination, const std::uint8_t* source, std::int32_t length);

}  // namespace torvik
