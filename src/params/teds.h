// The sensor's data memory.
#pragma once

#include <cstdint>
#include <span>

namespace torvik {

// Fills `bytes` word by word, beginning at a byte offset that is a multiple of 4. What was read before a failure stays.
// Result: 0; -1 with lastError set.
std::int32_t readTedsData(std::uint8_t deviceNo, std::uint8_t selector, std::span<std::uint8_t> bytes,
                          std::uint32_t offset);

}  // namespace torvik
