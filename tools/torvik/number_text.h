#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace torvik::tool {

/// Reads a whole number, decimal or hexadecimal with 0x in front. Anything else, or beyond 32 bits: none.
inline std::optional<std::uint32_t> parseNumber(std::string_view text) {
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        base = 16;
        text.remove_prefix(2);
    }
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base);
    if (error != std::errc{} || stop != end) return std::nullopt;
    return number;
}

/// Reads a number as C writes it, NaN and infinity among them. Anything else: none.
inline std::optional<double> parseReal(std::string_view text) {
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc{} && stop == end ? std::optional(number) : std::nullopt;
}

}  // namespace torvik::tool
