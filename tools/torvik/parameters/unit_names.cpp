#include "parameters/unit_names.h"

#include <fmt/format.h>

#include "number_text.h"
#include "params/unit_table.h"

namespace torvik::tool {

namespace {

/// The table's UTF-8 text of this one is a control character; people are shown the sign that is meant.
constexpr std::uint32_t perMille = 26;
constexpr std::string_view perMilleSign = "\xE2\x80\xB0";

/// Command lines of Windows come in this character set.
constexpr std::uint32_t windows1252Texts = 0;

constexpr std::string_view user1 = "user1";
constexpr std::string_view user2 = "user2";

constexpr unsigned char firstBeyondAscii = 0x80;
constexpr unsigned char firstPrintableBeyondAscii = 0xA0;

}  // namespace

std::string unitName(std::uint32_t unitNo) {
    if (unitNo == perMille) return std::string(perMilleSign);
    if (unitNo == userUnit1) return std::string(user1);
    if (unitNo == userUnit2) return std::string(user2);
    const auto text = unitText(unitNo, charset::utf8);
    return text ? std::string(*text) : fmt::format("{}", unitNo);
}

std::optional<std::uint32_t> unitNumber(std::string_view name) {
    if (name == user1) return userUnit1;
    if (name == user2) return userUnit2;
    if (name == perMilleSign) return perMille;
    if (const auto unitNo = findUnit(name, charset::utf8)) return unitNo;
    if (const auto unitNo = findUnit(name, charset::ascii)) return unitNo;
    if (const auto unitNo = findUnit(name, windows1252Texts)) return unitNo;
    constexpr std::uint32_t largest = 255;
    const auto number = parseNumber(name);
    return number && *number <= largest ? number : std::nullopt;
}

std::string utf8FromDevice(std::string_view bytes) {
    std::string text;
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < firstBeyondAscii) {
            text += character;
        } else if (byte < firstPrintableBeyondAscii) {
            text += '?';
        } else {
            text += static_cast<char>(0xC0U | byte >> 6U);
            text += static_cast<char>(0x80U | (byte & 0x3FU));
        }
    }
    return text;
}

std::optional<std::string> deviceFromUtf8(std::string_view text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        if (byte >= 0x20 && byte < 0x7F) {
            bytes += text[at];
            continue;
        }
        const bool latin1 = (byte == 0xC2 || byte == 0xC3) && at + 1 < text.size();
        if (!latin1) return std::nullopt;
        const auto low = static_cast<unsigned char>(text[++at]);
        const auto character = static_cast<unsigned char>((byte & 0x03U) << 6U | (low & 0x3FU));
        if ((low & 0xC0U) != 0x80 || character < firstPrintableBeyondAscii) return std::nullopt;
        bytes += static_cast<char>(character);
    }
    return bytes;
}

}  // namespace torvik::tool
