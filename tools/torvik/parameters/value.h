#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace torvik::tool {

/// What a parameter holds: a whole number, a number, or a text.
using Value = std::variant<std::int64_t, double, std::string>;

enum class ValueKind : std::uint8_t {
    whole,   ///< decimal
    word,    ///< bits: shown in hexadecimal
    single,  ///< a number that the device keeps, or derives from one, in single precision
    real,    ///< any other number
    text,
    unit,  ///< a text of the unit table, "user1" or "user2", or a unit number without text
};

struct Limits {
    double smallest = -std::numeric_limits<double>::infinity();
    double largest = std::numeric_limits<double>::infinity();  ///< of a text: its length
};

/// Reads a value as it stands on the command line. None: it is not of this kind, outside the limits, or
/// not finite.
std::optional<Value> parseValue(ValueKind kind, Limits limits, std::string_view text);

/// The value as `get` prints it and parseValue takes it.
std::string valueText(ValueKind kind, const Value& value);

/// The same in a line for people: a text of the device may be anything.
std::string shownText(ValueKind kind, const Value& value);

/// Whether a device that was sent one value and tells the other holds what it was sent.
bool sameValue(ValueKind kind, const Value& left, const Value& right);

/// What may be written, in words: "0..255", "a finite number", ...
std::string allowedValues(ValueKind kind, Limits limits);

}  // namespace torvik::tool
