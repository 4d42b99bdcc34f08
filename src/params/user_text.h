// The two free unit texts that a device keeps, each sent and read in two halves of four characters.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace torvik {

inline constexpr std::size_t userTextLength = 8;
using UserText = std::array<char, userTextLength>;

// Reads user text 1 or 2, up to its first zero byte; the rest is zero. Nothing: lastError is set.
std::optional<UserText> readUserText(std::uint8_t deviceNo, std::uint32_t textNo);

// Writes user text 1 or 2: at most seven characters. Result: 0; -1 with lastError set, the text possibly half-written.
std::int32_t writeUserText(std::uint8_t deviceNo, std::uint32_t textNo, std::string_view text);

// Gives a channel the unit number of user text 1 or 2. Result: 0; -1 with lastError set.
std::int32_t setUserTextUnit(std::uint8_t deviceNo, std::uint32_t channel, std::uint32_t textNo);

// The unit numbers of the user texts: 255 and 254.
constexpr std::uint32_t unitOfUserText(std::uint32_t textNo) {
    return 256 - textNo;
}

}  // namespace torvik
