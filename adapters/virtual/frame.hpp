#pragma once

#include <array>
#include <cstdint>
#include <limits>

namespace virtual_adapter {

// Points in time are counted from an arbitrary origin on the monotonic clock (see platform.hpp).
using Nanoseconds = std::uint64_t;
inline constexpr Nanoseconds kNever = std::numeric_limits<Nanoseconds>::max();

// Message types as the entry points use them; they can be combined.
inline constexpr std::uint8_t kStandardFrame = 0x00;
inline constexpr std::uint8_t kRemoteFrame = 0x01;
inline constexpr std::uint8_t kExtendedFrame = 0x02;

inline constexpr std::uint32_t kHighestStandardId = 0x7FF;
inline constexpr std::uint32_t kHighestExtendedId = 0x1FFFFFFF;

// No member initialisers: rings of many thousand frames must not be cleared when they are made.
struct Frame {
    std::uint32_t id;
    std::uint8_t type;
    std::uint8_t length;
    std::array<std::uint8_t, 8> data;
};

struct TimedFrame {
    Nanoseconds time;
    Frame frame;
};

}  // namespace virtual_adapter
