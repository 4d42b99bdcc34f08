#include "params/device_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "params/input_ranges.h"

namespace torvik {
namespace {

using Limits = std::numeric_limits<double>;

TEST(Hundredths, AreRoundedHalfAwayFromZero) {
    EXPECT_EQ(hundredths(0), 0U);
    EXPECT_EQ(hundredths(0.004), 0U);
    EXPECT_EQ(hundredths(0.006), 1U);
    EXPECT_EQ(hundredths(0.125), 13U);
    EXPECT_EQ(hundredths(0.375), 38U);
    EXPECT_EQ(hundredths(2.5), 250U);
}

TEST(Hundredths, TakeTheWholePositiveRange) {
    EXPECT_EQ(hundredths(21474836.47), 2147483647U);
    EXPECT_EQ(hundredths(21474836.474), 2147483647U);
    EXPECT_EQ(hundredths(Limits::denorm_min()), 0U);
    EXPECT_EQ(hundredths(-0.0), 0U);
}

TEST(Hundredths, RefuseWhatDoesNotFit) {
    for (const double value :
         {21474836.476, 21474836.48, 2147483647.0, 2147483648.0, 1e308, Limits::infinity(), -Limits::denorm_min(),
          -0.001, -1.0, -Limits::infinity(), Limits::quiet_NaN(), -Limits::quiet_NaN(), Limits::signaling_NaN()})
        EXPECT_FALSE(hundredths(value)) << value;
}

TEST(Truncated, GoesTowardZero) {
    EXPECT_EQ(truncated(2.7), 2);
    EXPECT_EQ(truncated(-2.7), -2);
    EXPECT_EQ(truncated(-0.9), 0);
    EXPECT_EQ(truncated(0.9), 0);
}

TEST(Truncated, TakesTheWholeRange) {
    EXPECT_EQ(truncated(2147483647.0), 2147483647);
    EXPECT_EQ(truncated(std::nextafter(2147483648.0, 0.0)), 2147483647);
    EXPECT_EQ(truncated(-2147483648.0), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(truncated(std::nextafter(-2147483649.0, 0.0)), std::numeric_limits<std::int32_t>::min());
}

TEST(Truncated, RefusesWhatDoesNotFit) {
    for (const double value : {2147483648.0, -2147483649.0, 1e308, -1e308, Limits::infinity(), -Limits::infinity(),
                               Limits::quiet_NaN(), -Limits::quiet_NaN(), Limits::signaling_NaN()})
        EXPECT_FALSE(truncated(value)) << value;
}

TEST(IsNan, TellsNansFromNumbers) {
    for (const double value : {Limits::quiet_NaN(), -Limits::quiet_NaN(), Limits::signaling_NaN()})
        EXPECT_TRUE(isNan(value));
    for (const double value : {0.0, -0.0, 1.0, Limits::max(), Limits::lowest(), Limits::denorm_min(),
                               Limits::infinity(), -Limits::infinity()})
        EXPECT_FALSE(isNan(value)) << value;
}

constexpr InputRange ranges[] = {{1, 10}, {2, 5}, {3, 2.5}, {4, 1}, {5, 0.1}};

TEST(ChooseInputRange, TakesTheFirstNotAboveTwiceTheSensitivity) {
    EXPECT_EQ(chooseInputRange(ranges, 3).type, 2U);
    EXPECT_EQ(chooseInputRange(ranges, 2.5).type, 2U);
    EXPECT_EQ(chooseInputRange(ranges, 2.49).type, 3U);
    EXPECT_EQ(chooseInputRange(ranges, 10).type, 1U);
}

TEST(ChooseInputRange, TakesTheFirstInTheOrderOfTheList) {
    constexpr InputRange unordered[] = {{1, 10}, {2, 1}, {3, 5}};
    EXPECT_EQ(chooseInputRange(unordered, 3).type, 2U);
}

TEST(ChooseInputRange, TakesTheLastOfTheFirstFourWhenNoneFits) {
    EXPECT_EQ(chooseInputRange(ranges, 0.1).type, 4U);
    EXPECT_EQ(chooseInputRange(std::span(ranges).first(2), 0.1).type, 2U);
    EXPECT_EQ(chooseInputRange(std::span(ranges).first(1), 0.1).type, 1U);
}

}  // namespace
}  // namespace torvik
