// The unit table, written out once more.
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "params/unit_table.h"

namespace torvik {
namespace {

using namespace std::string_view_literals;

struct UnitRow {
    std::string_view windows1252;
    std::string_view ascii;
    std::string_view codePage437;
    std::string_view utf8;
    std::u16string_view utf16;
};

// The same in every character set.
constexpr UnitRow same(std::string_view text, std::u16string_view wide) {
    return {text, text, text, text, wide};
}

// Hexadecimal escapes end where a letter follows that could be a digit: hence the separate pieces.
constexpr std::array<UnitRow, 47> table = {{
    same("mV/V", u"mV/V"),
    same("kg", u"kg"),
    same("g", u"g"),
    same("N", u"N"),
    same("cN", u"cN"),
    same("V", u"V"),
    {"\xB5m/m", "um/m", "\xE6m/m", "\xC2\xB5m/m", u"\x00B5m/m"},
    same(" ", u" "),
    same("t", u"t"),
    same("kN", u"kN"),
    same("lb", u"lb"),
    same("oz", u"oz"),
    same("kp", u"kp"),
    same("lbf", u"lbf"),
    same("pdl", u"pdl"),
    same("mm", u"mm"),
    same("m", u"m"),
    same("cNm", u"cNm"),
    same("Nm", u"Nm"),
    // clang-format off
    {"\xB0" "C", "C", "\xF8" "C", "\xC2\xB0" "C", u"\x0B0C"},
    {"\xB0" "F", "F", "\xF8" "F", "\xC2\xB0" "F", u"\x0B0F"},
    // clang-format on
    same("K", u"K"),
    same("oztr", u"oztr"),
    same("dwt", u"dwt"),
    same("kNm", u"kNm"),
    same("%", u"%"),
    {"\x89", "0/00", "0/00", "\xC2\x89", u"\x0089"},
    same("W", u"W"),
    same("kW", u"kW"),
    same("rpm", u"rpm"),
    same("bar", u"bar"),
    same("Pa", u"Pa"),
    same("hPa", u"hPa"),
    same("MPa", u"MPa"),
    {"N/mm\xB2", "N/mm2", "N/mm\xFD", "N/mm\xC2\xB2", u"N/mm\x00B2"},
    {"\xB0", "^", "\xF8", "\xC2\xB0", u"\x00B0"},
    same("Hz", u"Hz"),
    same("m/s", u"m/s"),
    same("km/h", u"km/h"),
    {"m\xB3/h", "m3/h", "m3/h", "m\xC2\xB3/h", u"m\x00B3/h"},
    same("mA", u"mA"),
    same("A", u"A"),
    {"m/s\xB2", "m/s2", "m/s\xFD", "m/s\xC2\xB2", u"m/s\x00B2"},
    same("flbs", u"flbs"),
    same("ftlb", u"ftlb"),
    same("J", u"J"),
    same("kWh", u"kWh"),
}};

class UnitTexts : public testing::TestWithParam<std::uint32_t> {};

TEST_P(UnitTexts, AreTheSameByteForByte) {
    const std::uint32_t unitNo = GetParam();
    const UnitRow& row = table[unitNo];
    EXPECT_EQ(unitText(unitNo, 0), row.windows1252);
    EXPECT_EQ(unitText(unitNo, 1), row.ascii);
    EXPECT_EQ(unitText(unitNo, 437), row.codePage437);
    EXPECT_EQ(unitText(unitNo, 0x10000), row.utf8);
    EXPECT_EQ(wideUnitText(unitNo), row.utf16);
}

TEST_P(UnitTexts, FitACallersBuffer) {
    const UnitRow& row = table[GetParam()];
    for (const std::string_view text : {row.windows1252, row.ascii, row.codePage437, row.utf8})
        EXPECT_LT(text.size(), unitTextSize);
    EXPECT_LT(row.utf16.size(), unitTextSize);
}

TEST_P(UnitTexts, LeadBackToTheirUnit) {
    const UnitRow& row = table[GetParam()];
    EXPECT_EQ(findUnit(row.windows1252, 0), GetParam());
    EXPECT_EQ(findUnit(row.ascii, 1), GetParam());
    EXPECT_EQ(findUnit(row.codePage437, 437), GetParam());
    EXPECT_EQ(findUnit(row.utf8, 0x10000), GetParam());
}

INSTANTIATE_TEST_SUITE_P(All, UnitTexts, testing::Range(0U, 47U));

TEST(UnitTable, TakesAnyOtherCharacterSetForWindows1252) {
    for (const std::uint32_t charset : {2U, 436U, 438U, 1252U, 0xFFFFU})
        EXPECT_EQ(unitText(6, charset), "\xB5m/m"sv);
}

TEST(UnitTable, EndsAt46) {
    for (const std::uint32_t unitNo : {47U, 253U, 254U, 255U, 0xFFFFFFFFU}) {
        EXPECT_FALSE(unitText(unitNo, 0));
        EXPECT_FALSE(wideUnitText(unitNo));
    }
}

TEST(UnitTable, FindsOnlyWholeTexts) {
    for (const std::string_view text : {"", "k", "kNmm", "KN", "Lbs"})
        EXPECT_FALSE(findUnit(text, 0)) << text;
    EXPECT_FALSE(findUnit("N/mm2", 0));
    EXPECT_FALSE(findUnit("N/mm\xB2", 1));
}

}  // namespace
}  // namespace torvik
