// Numbers as calibration files write them.
#include "calib/number_syntax.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace torvik {
namespace {

TEST(Integer, IsMadeOfDigits) {
    EXPECT_EQ(parseInteger("0"), 0);
    EXPECT_EQ(parseInteger("7"), 7);
    EXPECT_EQ(parseInteger("2147483647"), 2147483647);
}

TEST(Integer, IsDecimalWithLeadingZerosToo) {
    EXPECT_EQ(parseInteger("010"), 10);
    EXPECT_EQ(parseInteger("0000000012"), 12);
}

TEST(Integer, IsReadWithoutTheBlanksInIt) {
    EXPECT_EQ(parseInteger(" \t4\r\n"), 4);
    EXPECT_EQ(parseInteger("1 2\t3"), 123);
}

TEST(Integer, HasNoSign) {
    EXPECT_EQ(parseInteger("+3"), noInteger);
    EXPECT_EQ(parseInteger("-3"), noInteger);
    EXPECT_EQ(parseInteger("3-"), noInteger);
}

TEST(Integer, HasAtMostTenDigits) {
    EXPECT_EQ(parseInteger("1234567890"), 1234567890);
    EXPECT_EQ(parseInteger("00000000001"), noInteger);
}

// A huge number stays one: it must not pass for a missing value.
TEST(Integer, OfTenDigitsThatNoWordHoldsIsTheLargest) {
    EXPECT_EQ(parseInteger("2147483648"), 2147483647);
    EXPECT_EQ(parseInteger("9999999999"), 2147483647);
}

TEST(Integer, IsNothingElse) {
    for (const char* const text : {"", " ", "a", "4a", "0x10", "1.0", "1,0", "1e2", ";4", "\"4\""})
        EXPECT_EQ(parseInteger(text), noInteger) << text;
}

struct Number {
    const char* text;
    double value;
};

void expectReals(std::initializer_list<Number> numbers) {
    for (const Number& number : numbers)
        EXPECT_EQ(parseReal(number.text), number.value) << number.text;
}

TEST(Real, IsANumberWithOrWithoutAPoint) {
    expectReals({{"0", 0.0}, {"5", 5.0}, {"1.25", 1.25}, {".5", 0.5}, {"5.", 5.0}, {"000.125", 0.125}});
}

TEST(Real, TakesADecimalComma) {
    expectReals({{"1,25", 1.25}, {",5", 0.5}, {"-0,5", -0.5}});
}

TEST(Real, TakesASign) {
    expectReals({{"+1.5", 1.5}, {"-1.5", -1.5}, {"-.5", -0.5}, {"+.5", 0.5}});
    EXPECT_TRUE(std::signbit(parseReal("-0")));
}

TEST(Real, TakesAnExponentOfFourLetters) {
    expectReals({{"1E2", 100.0}, {"1e2", 100.0}, {"1D2", 100.0}, {"1d2", 100.0}});
    expectReals({{"25e-1", 2.5}, {"2.5D+1", 25.0}, {"1.e2", 100.0}, {".5e1", 5.0}});
}

TEST(Real, NeedsADigitBeforeAndSomethingBehindTheExponentLetter) {
    expectReals({{"e5", noReal}, {".e5", noReal}, {"+E5", noReal}, {"1e", noReal}, {"1d", noReal}, {"1e.5", noReal}});
}

TEST(Real, LeavesAnExponentWithoutDigitsOut) {
    expectReals({{"1.5e+", 1.5}, {"1.5D-", 1.5}, {"2e+-3", 2.0}});
}

TEST(Real, NeedsADigit) {
    expectReals({{"", noReal}, {" ", noReal}, {"+", noReal}, {"-", noReal}, {".", noReal}, {"-.", noReal}});
}

TEST(Real, IsReadWithoutTheBlanksInIt) {
    expectReals({{" \t1.5\r\n", 1.5}, {"1 000,5", 1000.5}, {"- 2", -2.0}, {"1 e 2", 100.0}});
}

TEST(Real, IsWhatTheTextBeginsWith) {
    expectReals({{"1.2.3", 1.2}, {"1-2", 1.0}, {"1+", 1.0}, {"1e2e3", 100.0}, {"1,5,7", 1.5}, {"1e2.5", 100.0}});
}

TEST(Real, OfSignsThatNoNumberFollowsIsZero) {
    expectReals({{"--5", 0.0}, {"+-5", 0.0}, {"..5", 0.0}, {".-5", 0.0}});
}

TEST(Real, IsNothingElse) {
    expectReals({{"a", noReal}, {"1a", noReal}, {"nan", noReal}, {"inf", noReal}, {"-Infinity", noReal}});
    expectReals(
        {{"0x10", noReal}, {"1;2", noReal}, {"1/2", noReal}, {"\"1\"", noReal}, {"1\v", noReal}, {"1f", noReal}});
}

TEST(Real, IsShorterThanAHundredCharacters) {
    const std::string digits(98, '0');
    EXPECT_EQ(parseReal(digits + "1"), 1.0);
    EXPECT_EQ(parseReal(digits + "01"), noReal);
    EXPECT_EQ(parseReal(digits + " 1"), 1.0);
}

TEST(Real, ThatIsTooLargeIsNone) {
    expectReals({{"1e309", noReal}, {"-1e309", noReal}, {"1e99999999999999999999999", noReal}, {"1.8e308", noReal}});
    EXPECT_EQ(parseReal("1.7976931348623157e308"), std::numeric_limits<double>::max());
}

TEST(Real, ThatIsTooSmallIsZero) {
    expectReals({{"1e-400", 0.0}, {"1e-99999999999999999999999", 0.0}});
    EXPECT_TRUE(std::signbit(parseReal("-1e-400")));
}

TEST(Real, OfZeroHasAnyExponent) {
    expectReals({{"0e400", 0.0}, {"0e99999999999999999999999", 0.0}, {"0.000e-400", 0.0}});
}

TEST(Real, KeepsTheSmallestNumbers) {
    EXPECT_EQ(parseReal("4.9406564584124654e-324"), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(parseReal("2.2250738585072014e-308"), std::numeric_limits<double>::min());
}

TEST(Real, IsRoundedToTheNearestDouble) {
    EXPECT_EQ(parseReal("0,1"), 0.1);
    EXPECT_EQ(parseReal("9007199254740993"), 9007199254740992.0);
    EXPECT_EQ(parseReal("9007199254740993.00000000000000000001"), 9007199254740994.0);
}

TEST(LeadingReal, StandsBehindWhiteSpace) {
    const auto number = parseLeadingReal(" \t\v\f\r\n1.5 2.5");
    ASSERT_TRUE(number);
    EXPECT_EQ(number->value, 1.5);
    EXPECT_EQ(number->rest, " 2.5");
    EXPECT_FALSE(number->tooLarge);
}

TEST(LeadingReal, EndsWhereTheNumberEnds) {
    EXPECT_EQ(parseLeadingReal("1.2.3")->rest, ".3");
    EXPECT_EQ(parseLeadingReal("1-2")->rest, "-2");
    EXPECT_EQ(parseLeadingReal("1e+x")->rest, "e+x");
    EXPECT_EQ(parseLeadingReal("1D2x")->rest, "x");
}

TEST(LeadingReal, TakesASignAndAnExponent) {
    EXPECT_EQ(parseLeadingReal("-2.5E-1")->value, -0.25);
    EXPECT_EQ(parseLeadingReal("+2.5d1")->value, 25.0);
}

TEST(LeadingReal, EndsWithTheText) {
    constexpr std::string_view longer = "12.34e56";
    EXPECT_EQ(parseLeadingReal(longer.substr(0, 1))->value, 1.0);
    EXPECT_EQ(parseLeadingReal(longer.substr(0, 2))->value, 12.0);
    EXPECT_EQ(parseLeadingReal(longer.substr(0, 4))->value, 12.3);
    EXPECT_EQ(parseLeadingReal(longer.substr(0, 7))->value, 1234e3);
}

TEST(LeadingReal, IsMissingWhereNoNumberBegins) {
    for (const char* const text : {"", " ", "-", ".", "-.", "x1", "--1", ";1", "e5", "nan"})
        EXPECT_FALSE(parseLeadingReal(text)) << text;
}

TEST(LeadingReal, SaysThatItIsTooLarge) {
    EXPECT_TRUE(parseLeadingReal("1e309")->tooLarge);
    EXPECT_TRUE(parseLeadingReal("-1e309")->tooLarge);
    EXPECT_FALSE(parseLeadingReal("1e-400")->tooLarge);
    EXPECT_TRUE(parseLeadingReal(std::string(310, '9'))->tooLarge);
}

}  // namespace
}  // namespace torvik
