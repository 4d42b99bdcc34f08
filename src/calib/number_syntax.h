// Numbers in calibration files, read the same under every locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace torvik {

// As C's isspace has it, under every locale.
constexpr bool isWhiteSpace(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

// What a value in a file can be beside a number.
inline constexpr std::int32_t noInteger = -1;
inline constexpr double noReal = -1e10;

// A whole value: blanks, tabs and line ends are passed over; 1 to 10 digits without a sign; above 2147483647 it
// counts as that. Anything else gives noInteger.
std::int32_t parseInteger(std::string_view value);

// A whole value: blanks, tabs and line ends are passed over; a decimal comma is a decimal point; D and d read like E.
// As much of it as makes a number counts. What breaks the syntax or is too large gives noReal.
double parseReal(std::string_view value);

// The number that a text begins with, after white space.
struct LeadingReal {
    double value = 0;
    std::string_view rest;
    bool tooLarge = false;
};

// Nothing: the text does not begin with a number.
std::optional<LeadingReal> parseLeadingReal(std::string_view text);

}  // namespace torvik
