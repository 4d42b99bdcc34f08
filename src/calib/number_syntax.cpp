#include "calib/number_syntax.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>

namespace torvik {

namespace {

constexpr std::size_t realLimit = 100;
constexpr std::size_t mostDigits = 10;
constexpr std::string_view blanksAndLineEnds = " \t\r\n";

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

bool isSign(char character) {
    return character == '+' || character == '-';
}

bool isExponentLetter(char character) {
    return std::string_view("DEde").find(character) != std::string_view::npos;
}

std::string withoutBlanks(std::string_view value) {
    std::string text(value);
    std::erase_if(text, [](char character) { return blanksAndLineEnds.find(character) != std::string_view::npos; });
    return text;
}

// Looser than a number: "1.2.3" passes, and the number is what it begins with.
bool isRealSyntax(std::string_view text) {
    if (text.size() >= realLimit) return false;
    bool digitSeen = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char character = text[i];
        if (isDigit(character)) {
            digitSeen = true;
        } else if (isExponentLetter(character)) {
            const char next = i + 1 < text.size() ? text[i + 1] : '\0';
            if (!digitSeen || (!isSign(next) && !isDigit(next))) return false;
        } else if (!isSign(character) && character != '.') {
            return false;
        }
    }
    return digitSeen;
}

// Length of the decimal number that a text without a sign begins with; 0: none.
std::size_t numberLength(std::string_view text) {
    const auto digitsFrom = [text](std::size_t place) {
        while (place < text.size() && isDigit(text[place]))
            ++place;
        return place;
    };
    std::size_t end = digitsFrom(0);
    std::size_t digits = end;
    if (end < text.size() && text[end] == '.') {
        const std::size_t fractionEnd = digitsFrom(end + 1);
        digits += fractionEnd - end - 1;
        end = fractionEnd;
    }
    if (digits == 0) return 0;
    if (end < text.size() && isExponentLetter(text[end])) {
        const std::size_t exponent = end + 1 + (end + 1 < text.size() && isSign(text[end + 1]) ? 1 : 0);
        const std::size_t exponentEnd = digitsFrom(exponent);
        if (exponentEnd > exponent) end = exponentEnd;
    }
    return end;
}

// A number that from_chars cannot hold: too large, or too small and then 0.
bool isTooLarge(std::string_view number) {
    const std::size_t exponent = number.find('e');
    return exponent == std::string_view::npos || number[exponent + 1] != '-';
}

}  // namespace

std::int32_t parseInteger(std::string_view value) {
    const std::string text = withoutBlanks(value);
    if (text.empty() || text.size() > mostDigits || !std::ranges::all_of(text, isDigit)) return noInteger;
    std::int64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    // Kept: a number that is too large becomes the largest, and so never passes for a missing one.
    return static_cast<std::int32_t>(std::min<std::int64_t>(number, std::numeric_limits<std::int32_t>::max()));
}

double parseReal(std::string_view value) {
    std::string text = withoutBlanks(value);
    std::ranges::replace(text, ',', '.');
    if (!isRealSyntax(text)) return noReal;
    const auto number = parseLeadingReal(text);
    if (!number) return 0.0;
    return number->tooLarge ? noReal : number->value;
}

std::optional<LeadingReal> parseLeadingReal(std::string_view text) {
    text.remove_prefix(static_cast<std::size_t>(std::ranges::find_if_not(text, isWhiteSpace) - text.begin()));
    const bool negative = !text.empty() && text.front() == '-';
    if (!text.empty() && isSign(text.front())) text.remove_prefix(1);
    const std::size_t length = numberLength(text);
    if (length == 0) return std::nullopt;
    std::string number(text.substr(0, length));
    std::ranges::replace_if(number, isExponentLetter, 'e');
    LeadingReal result{.value = 0, .rest = text.substr(length), .tooLarge = false};
    const auto parsed = std::from_chars(number.data(), number.data() + number.size(), result.value);
    if (parsed.ec == std::errc::result_out_of_range) result.tooLarge = isTooLarge(number);
    if (negative) result.value = -result.value;
    return result;
}

}  // namespace torvik
