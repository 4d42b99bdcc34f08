#include "parameters/value.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "number_text.h"
#include "parameters/unit_names.h"
#include "printable_text.h"

namespace torvik::tool {

namespace {

constexpr double largestSingle = std::numeric_limits<float>::max();

/// A negative number must be decimal.
std::optional<std::int64_t> parseWhole(std::string_view text) {
    if (!text.starts_with('-')) {
        const auto number = parseNumber(text);
        return number ? std::optional<std::int64_t>(*number) : std::nullopt;
    }
    std::int64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc{} && stop == end ? std::optional(number) : std::nullopt;
}

/// Finite numbers only: a device that keeps NaN or infinity spoils every value that it makes with it.
std::optional<double> parseFinite(std::string_view text) {
    const auto number = parseReal(text);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

bool isWithin(double number, Limits limits) {
    return number >= limits.smallest && number <= limits.largest;
}

bool fitsSingle(double number) {
    return !std::isfinite(number) || std::abs(number) <= largestSingle;
}

bool keepsInSingle(double number) {
    return std::isnan(number) || static_cast<double>(static_cast<float>(number)) == number;
}

template <class Number>
std::string shortest(Number number) {
    std::array<char, 40> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    return {buffer.data(), result.ptr};
}

bool sameNumber(double left, double right, double tolerance) {
    if (std::isnan(left) || std::isnan(right)) return std::isnan(left) && std::isnan(right);
    if (left == right) return true;
    return std::abs(left - right) <= tolerance * std::max(std::abs(left), std::abs(right));
}

}  // namespace

std::optional<Value> parseValue(ValueKind kind, Limits limits, std::string_view text) {
    switch (kind) {
        case ValueKind::whole:
        case ValueKind::word: {
            const auto number = parseWhole(text);
            if (!number || !isWithin(static_cast<double>(*number), limits)) return std::nullopt;
            return Value(*number);
        }
        case ValueKind::single:
        case ValueKind::real: {
            const auto number = parseFinite(text);
            if (!number || !isWithin(*number, limits)) return std::nullopt;
            if (kind == ValueKind::single && !fitsSingle(*number)) return std::nullopt;
            return Value(*number);
        }
        case ValueKind::text:
            if (const auto bytes = deviceFromUtf8(text);
                !bytes || static_cast<double>(bytes->size()) > limits.largest) {
                return std::nullopt;
            }
            return Value(std::string(text));
        case ValueKind::unit: {
            const auto unitNo = unitNumber(text);
            return unitNo ? std::optional<Value>(unitName(*unitNo)) : std::nullopt;
        }
    }
    return std::nullopt;
}

std::string valueText(ValueKind kind, const Value& value) {
    if (const auto* const text = std::get_if<std::string>(&value)) return *text;
    if (const auto* const whole = std::get_if<std::int64_t>(&value)) {
        return kind == ValueKind::word && *whole >= 0 ? fmt::format("0x{:X}", *whole) : shortest(*whole);
    }
    const double number = std::get<double>(value);
    const bool isSingle = kind == ValueKind::single && fitsSingle(number) && keepsInSingle(number);
    return isSingle ? shortest(static_cast<float>(number)) : shortest(number);
}

std::string shownText(ValueKind kind, const Value& value) {
    return printable(valueText(kind, value));
}

bool sameValue(ValueKind kind, const Value& left, const Value& right) {
    const auto* const leftNumber = std::get_if<double>(&left);
    const auto* const rightNumber = std::get_if<double>(&right);
    if (leftNumber == nullptr || rightNumber == nullptr) return left == right;
    constexpr double ofSingle = std::numeric_limits<float>::epsilon();
    constexpr double ofReal = 1e-12;
    return sameNumber(*leftNumber, *rightNumber, kind == ValueKind::single ? ofSingle : ofReal);
}

std::string allowedValues(ValueKind kind, Limits limits) {
    switch (kind) {
        case ValueKind::text:
            return fmt::format("a text of at most {} Latin-1 characters", shortest(limits.largest));
        case ValueKind::unit:
            return "a unit ('torvik units'), user1 or user2";
        case ValueKind::word:
            return fmt::format("0..0x{:X}", static_cast<std::int64_t>(limits.largest));
        case ValueKind::whole:
            return fmt::format("{}..{}", static_cast<std::int64_t>(limits.smallest),
                               static_cast<std::int64_t>(limits.largest));
        default:
            break;
    }
    if (std::isfinite(limits.largest)) {
        return fmt::format("{}..{}", shortest(limits.smallest), shortest(limits.largest));
    }
    if (std::isfinite(limits.smallest)) return fmt::format("{} and more", shortest(limits.smallest));
    return kind == ValueKind::single ? "a finite number up to 3.4e38" : "a finite number";
}

}  // namespace torvik::tool
