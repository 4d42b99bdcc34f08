#pragma once

#include <cstdint>

namespace virtual_adapter {

using Status = std::uint32_t;

// Status codes of the adapter interface, as far as this adapter has words for them or gives them.
inline constexpr Status kOk = 0x0;
inline constexpr Status kTransmitQueueFull = 0x80;
inline constexpr Status kReceiveQueueEmpty = 0x20;
inline constexpr Status kReceiveQueueOverrun = 0x40;
inline constexpr Status kHardwareInUse = 0x400;
inline constexpr Status kIllegalHandle = 0x1400;
inline constexpr Status kNoResource = 0x2000;
inline constexpr Status kIllegalParameter = 0x4000;
inline constexpr Status kIllegalValue = 0x8000;
inline constexpr Status kIllegalData = 0x20000;
inline constexpr Status kNotInitialised = 0x4000000;
inline constexpr Status kIllegalOperation = 0x8000000;

// The text of a status; null when the status is none of the interface's.
[[nodiscard]] const char* statusText(Status status);

}  // namespace virtual_adapter
