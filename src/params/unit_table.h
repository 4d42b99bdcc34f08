// The units that a channel can carry, in every character set that they are asked for.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace torvik {

inline constexpr std::uint32_t unitCount = 47;
inline constexpr std::size_t unitTextSize = 10;  // of a caller's buffer, with the terminating zero

// Any other number means Windows-1252.
namespace charset {
inline constexpr std::uint32_t ascii = 1;
inline constexpr std::uint32_t codePage437 = 437;
inline constexpr std::uint32_t utf8 = 0x10000;
}  // namespace charset

// The unit's text in a character set of single bytes or UTF-8. Nothing: there is no such unit.
std::optional<std::string_view> unitText(std::uint32_t unitNo, std::uint32_t unitCharset);

// The same in UTF-16.
std::optional<std::u16string_view> wideUnitText(std::uint32_t unitNo);

// The first unit with exactly this text. Nothing: there is none.
std::optional<std::uint32_t> findUnit(std::string_view text, std::uint32_t unitCharset);

}  // namespace torvik
