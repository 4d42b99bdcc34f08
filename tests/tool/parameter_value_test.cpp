#include <gtest/gtest.h>

#include <cmath>

#include "parameters/unit_names.h"
#include "parameters/value.h"

namespace torvik::tool {
namespace {

constexpr Limits unlimited{};

std::string roundTrip(ValueKind kind, Limits limits, std::string_view text) {
    const auto value = parseValue(kind, limits, text);
    return value ? valueText(kind, *value) : "refused";
}

TEST(ParameterValue, WholeNumbersStayWithinTheirLimits) {
    constexpr Limits limits{-5, 10};
    EXPECT_EQ(roundTrip(ValueKind::whole, limits, "-5"), "-5");
    EXPECT_EQ(roundTrip(ValueKind::whole, limits, "10"), "10");
    EXPECT_EQ(roundTrip(ValueKind::whole, limits, "11"), "refused");
    EXPECT_EQ(roundTrip(ValueKind::whole, limits, "-6"), "refused");
    EXPECT_EQ(roundTrip(ValueKind::whole, limits, "1.0"), "refused");
}

TEST(ParameterValue, WordsAreTakenInBothBasesAndShownInHexadecimal) {
    constexpr Limits limits{0, 0xFFFF};
    EXPECT_EQ(roundTrip(ValueKind::word, limits, "256"), "0x100");
    EXPECT_EQ(roundTrip(ValueKind::word, limits, "0xFFFF"), "0xFFFF");
    EXPECT_EQ(roundTrip(ValueKind::word, limits, "0x10000"), "refused");
}

TEST(ParameterValue, NumbersInSinglePrecisionAreShownWithTheirOwnDigits) {
    EXPECT_EQ(valueText(ValueKind::single, Value(static_cast<double>(0.1F))), "0.1");
    EXPECT_EQ(valueText(ValueKind::real, Value(0.1)), "0.1");
}

TEST(ParameterValue, WhatSinglePrecisionCannotHoldIsShownWhole) {
    EXPECT_EQ(valueText(ValueKind::single, Value(16777217.0)), "16777217");
}

TEST(ParameterValue, NumbersTooLargeForSinglePrecisionAreRefused) {
    EXPECT_EQ(roundTrip(ValueKind::single, unlimited, "3e38"), "3e+38");
    EXPECT_EQ(roundTrip(ValueKind::single, unlimited, "4e38"), "refused");
}

TEST(ParameterValue, NumbersThatAreNotFiniteAreRefused) {
    for (const char* const text : {"nan", "-nan", "nan(7)", "inf", "-inf", "infinity", "1e999"}) {
        EXPECT_EQ(roundTrip(ValueKind::single, unlimited, text), "refused") << text;
        EXPECT_EQ(roundTrip(ValueKind::real, unlimited, text), "refused") << text;
        EXPECT_EQ(roundTrip(ValueKind::real, {0, Limits{}.largest}, text), "refused") << text;
    }
}

TEST(ParameterValue, WhatMayBeWrittenIsToldAsFinite) {
    EXPECT_EQ(allowedValues(ValueKind::single, unlimited), "a finite number up to 3.4e38");
    EXPECT_EQ(allowedValues(ValueKind::real, unlimited), "a finite number");
}

TEST(ParameterValue, ADecimalCommaIsRefused) {
    EXPECT_EQ(roundTrip(ValueKind::real, unlimited, "0,5"), "refused");
}

TEST(ParameterValue, TextsCountTheirCharactersNotTheirBytes) {
    constexpr Limits limits{0, 3};
    EXPECT_EQ(roundTrip(ValueKind::text, limits, "\xC2\xB5\xC2\xB5m"), "\xC2\xB5\xC2\xB5m");
    EXPECT_EQ(roundTrip(ValueKind::text, limits, "four"), "refused");
    EXPECT_EQ(roundTrip(ValueKind::text, limits, "\xE2\x82\xAC"), "refused");
}

TEST(ParameterValue, ANumberSentAndItsSinglePrecisionAreTheSame) {
    EXPECT_TRUE(sameValue(ValueKind::single, Value(0.1), Value(static_cast<double>(0.1F))));
    EXPECT_FALSE(sameValue(ValueKind::single, Value(0.1), Value(0.1001)));
    EXPECT_FALSE(sameValue(ValueKind::real, Value(2.504), Value(2.5)));
}

TEST(ParameterValue, NumbersThatAreNoneAreTheSame) {
    EXPECT_TRUE(sameValue(ValueKind::single, Value(std::nan("")), Value(std::nan(""))));
    EXPECT_FALSE(sameValue(ValueKind::single, Value(std::nan("")), Value(0.0)));
}

TEST(UnitNames, AUnitIsFoundByEachOfItsNames) {
    for (const char* const name : {"\xC2\xB0"
                                   "C",
                                   "\xB0"
                                   "C",
                                   "C", "19"}) {
        EXPECT_EQ(unitNumber(name), 19U) << name;
    }
    EXPECT_EQ(unitNumber("user1"), 255U);
    EXPECT_EQ(unitNumber("user2"), 254U);
    EXPECT_EQ(unitNumber("furlong"), std::nullopt);
    EXPECT_EQ(unitNumber("256"), std::nullopt);
}

TEST(UnitNames, EveryUnitNumberIsFoundByTheNameItIsShownWith) {
    for (std::uint32_t unitNo = 0; unitNo <= 255; ++unitNo)
        EXPECT_EQ(unitNumber(unitName(unitNo)), unitNo) << unitName(unitNo);
}

TEST(UnitNames, DeviceTextsComeBackAsTheyWere) {
    const std::string bytes = "m\xB3/h";
    EXPECT_EQ(utf8FromDevice(bytes), "m\xC2\xB3/h");
    EXPECT_EQ(deviceFromUtf8("m\xC2\xB3/h"), bytes);
}

}  // namespace
}  // namespace torvik::tool
