#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace torvik::tool {

inline constexpr std::uint32_t userUnit1 = 255;
inline constexpr std::uint32_t userUnit2 = 254;

/// The unit's text in UTF-8; "user1" and "user2" for the user texts, the number itself where there is no text.
std::string unitName(std::uint32_t unitNo);

/// Finds a unit by its text in UTF-8, ASCII or Windows-1252, by "user1" or "user2", or by its number. None: there is no
/// such unit.
std::optional<std::uint32_t> unitNumber(std::string_view name);

/// Texts that the device keeps as Windows-1252 bytes. Characters beyond Latin-1 become '?'.
std::string utf8FromDevice(std::string_view bytes);

/// None: a character has no place in such a text.
std::optional<std::string> deviceFromUtf8(std::string_view text);

}  // namespace torvik::tool
