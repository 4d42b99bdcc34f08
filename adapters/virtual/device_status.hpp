#pragma once

#include <cstdint>

// Status bytes of an amplifier's answers; 0x40 and above are errors.
namespace virtual_adapter::device_status {

inline constexpr std::uint8_t kDone = 0x00;
inline constexpr std::uint8_t kFirstError = 0x40;
inline constexpr std::uint8_t kUnknownCommand = 0x40;
inline constexpr std::uint8_t kWrongIndex = 0x51;
inline constexpr std::uint8_t kWrongData = 0x52;
inline constexpr std::uint8_t kWrongParameterNumber = 0x5B;

}  // namespace virtual_adapter::device_status
