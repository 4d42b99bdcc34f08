// What the commands of the digital filters carry.
#pragma once

#include "answers.hpp"

namespace virtual_test {

inline constexpr std::uint8_t kFir = 0x80;
inline constexpr std::uint8_t kOutput = 0x10;  // of an index: a coefficient of the outputs
inline constexpr std::uint32_t kOne = 0x01000000;
inline constexpr std::uint32_t kNegative = 0x80000000;

}  // namespace virtual_test
