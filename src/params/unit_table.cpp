#include "params/unit_table.h"

#include <algorithm>
#include <array>

namespace torvik {

namespace {

// Windows-1252, by unit number.
constexpr std::array<std::string_view, unitCount> units = {
    "mV/V",
    "kg",
    "g",
    "N",
    "cN",
    "V",
    "\xB5m/m",
    " ",
    "t",
    "kN",
    "lb",
    "oz",
    "kp",
    "lbf",
    "pdl",
    "mm",
    "m",
    "cNm",
    "Nm",
    "\xB0"
    "C",
    "\xB0"
    "F",
    "K",
    "oztr",
    "dwt",
    "kNm",
    "%",
    "\x89",
    "W",
    "kW",
    "rpm",
    "bar",
    "Pa",
    "hPa",
    "MPa",
    "N/mm\xB2",
    "\xB0",
    "Hz",
    "m/s",
    "km/h",
    "m\xB3/h",
    "mA",
    "A",
    "m/s\xB2",
    "flbs",
    "ftlb",
    "J",
    "kWh",
};

// The units with a character outside ASCII. Kept byte for byte, the odd UTF-16 texts of 19 and 20 and the per mille
// sign of 26 too: texts that devices and files carry are compared with them.
struct Variant {
    std::uint32_t unitNo;
    std::string_view ascii;
    std::string_view codePage437;
    std::string_view utf8;
    std::u16string_view utf16;
};

constexpr Variant variants[] = {
    {6, "um/m", "\xE6m/m", "\xC2\xB5m/m", u"\u00B5m/m"},
    {19, "C",
     "\xF8"
     "C",
     "\xC2\xB0"
     "C",
     u"\u0B0C"},
    {20, "F",
     "\xF8"
     "F",
     "\xC2\xB0"
     "F",
     u"\u0B0F"},
    {26, "0/00", "0/00", "\xC2\x89", u"\x89"},
    {34, "N/mm2", "N/mm\xFD", "N/mm\xC2\xB2", u"N/mm\u00B2"},
    {35, "^", "\xF8", "\xC2\xB0", u"\u00B0"},
    {39, "m3/h", "m3/h", "m\xC2\xB3/h", u"m\u00B3/h"},
    {42, "m/s2", "m/s\xFD", "m/s\xC2\xB2", u"m/s\u00B2"},
};

const Variant* variantOf(std::uint32_t unitNo) {
    const auto* const found = std::ranges::find(variants, unitNo, &Variant::unitNo);
    return found == std::end(variants) ? nullptr : found;
}

// The units that are the same in every character set, as UTF-16.
struct WideText {
    std::array<char16_t, unitTextSize> characters{};
    std::size_t length = 0;
};

constexpr auto wideUnits = [] {
    std::array<WideText, unitCount> texts{};
    for (std::size_t unit = 0; unit < unitCount; ++unit) {
        for (const char character : units[unit])
            texts[unit].characters[texts[unit].length++] = static_cast<unsigned char>(character);
    }
    return texts;
}();

}  // namespace

std::optional<std::string_view> unitText(std::uint32_t unitNo, std::uint32_t unitCharset) {
    if (unitNo >= unitCount) return std::nullopt;
    if (const Variant* const variant = variantOf(unitNo); variant != nullptr) {
        switch (unitCharset) {
            case charset::ascii:
                return variant->ascii;
            case charset::codePage437:
                return variant->codePage437;
            case charset::utf8:
                return variant->utf8;
            default:
                break;
        }
    }
    return units[unitNo];
}

std::optional<std::u16string_view> wideUnitText(std::uint32_t unitNo) {
    if (unitNo >= unitCount) return std::nullopt;
    if (const Variant* const variant = variantOf(unitNo); variant != nullptr) return variant->utf16;
    const WideText& text = wideUnits[unitNo];
    return std::u16string_view(text.characters.data(), text.length);
}

std::optional<std::uint32_t> findUnit(std::string_view text, std::uint32_t unitCharset) {
    for (std::uint32_t unitNo = 0; unitNo < unitCount; ++unitNo) {
        if (unitText(unitNo, unitCharset) == text) return unitNo;
    }
    return std::nullopt;
}

}  // namespace torvik
