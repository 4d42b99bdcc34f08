#include "printable_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace torvik::tool {

namespace {

constexpr unsigned char firstPrintable = 0x20;
constexpr unsigned char del = 0x7F;
constexpr unsigned char firstBeyondC1 = 0xA0;

std::uint8_t byteAt(std::string_view text, std::size_t at) {
    return static_cast<std::uint8_t>(text[at]);
}

bool isPlain(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte >= firstPrintable && byte < del;
}

/// What the first byte says of a character of several bytes.
struct Sequence {
    std::size_t length = 0;  ///< 0: no character begins with this byte
    std::uint32_t bits = 0;
    std::uint32_t smallest = 0;  ///< that needs so many bytes
};

Sequence sequenceOf(std::uint8_t first) {
    if ((first & 0xE0U) == 0xC0) return {2, first & 0x1FU, 0x80};
    if ((first & 0xF0U) == 0xE0) return {3, first & 0x0FU, 0x800};
    if ((first & 0xF8U) == 0xF0) return {4, first & 0x07U, 0x10000};
    return {};
}

bool isCharacter(std::uint32_t number) {
    const bool surrogate = number >= 0xD800 && number <= 0xDFFF;
    return number <= 0x10FFFF && !surrogate;
}

template <class Keeps>
std::string escaped(std::string_view text, Keeps keeps) {
    std::string shown;
    while (!text.empty()) {
        const std::size_t length = utf8Length(text);
        const std::size_t taken = std::max<std::size_t>(length, 1);
        if (keeps(text.front()) || (length > 0 && !isControl(text))) {
            shown += text.substr(0, taken);
        } else {
            // The last byte of a control character is its number, in C1, too.
            fmt::format_to(std::back_inserter(shown), "\\x{:02X}", byteAt(text, taken - 1));
        }
        text.remove_prefix(taken);
    }
    return shown;
}

}  // namespace

std::size_t utf8Length(std::string_view text) {
    if (text.empty()) return 0;
    if (byteAt(text, 0) <= del) return 1;
    const Sequence sequence = sequenceOf(byteAt(text, 0));
    if (sequence.length == 0 || text.size() < sequence.length) return 0;
    std::uint32_t number = sequence.bits;
    for (std::size_t at = 1; at < sequence.length; ++at) {
        if ((byteAt(text, at) & 0xC0U) != 0x80) return 0;
        number = number << 6U | (byteAt(text, at) & 0x3FU);
    }
    return number >= sequence.smallest && isCharacter(number) ? sequence.length : 0;
}

bool isControl(std::string_view text) {
    if (text.empty()) return false;
    const std::uint8_t first = byteAt(text, 0);
    if (first < firstPrintable || first == del) return true;
    return first == 0xC2 && text.size() > 1 && byteAt(text, 1) > del && byteAt(text, 1) < firstBeyondC1;
}

std::string printable(std::string_view text) {
    return escaped(text, [](char) { return false; });
}

std::string printableLines(std::string_view text) {
    const auto keeps = [](char character) { return character == '\n' || character == '\t'; };
    const auto isUsual = [keeps](char character) { return isPlain(character) || keeps(character); };
    if (std::ranges::all_of(text, isUsual)) return std::string(text);
    return escaped(text, keeps);
}

}  // namespace torvik::tool
