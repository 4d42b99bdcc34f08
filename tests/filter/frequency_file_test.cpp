// Files of frequency responses, character by character.
#include "filter/response_bench.h"

namespace torvik::test {
namespace {

using namespace torvik::option;
using testing::EndsWith;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

class FrequencyFile : public ResponseFiles {};

TEST_F(FrequencyFile, OfOnePointHasThreeDecimalsAndNoLineEnd) {
    ASSERT_EQ(frequency(100, 400, 1), 0U);
    EXPECT_EQ(content(),
              "Frequency response of IIR low pass 4th order. Cutoff freq: 100.000 Sampling freq: 1000.0\n"
              "f [Hz]\tAmplitude [dB]\n"
              "100.000\t-3.01");
}

TEST_F(FrequencyFile, OfTwoPointsHasThreeDecimalsAndNoLineEndAfterTheLast) {
    ASSERT_EQ(frequency(100, 400, 2), 0U);
    EXPECT_THAT(rows(), StartsWith("100.000\t-3.01\n400.000\t-"));
    EXPECT_THAT(rows(), Not(EndsWith("\n")));
}

TEST_F(FrequencyFile, OfThreePointsHasTwoDecimalsTheMiddleAndALineEndAfterTheLast) {
    ASSERT_EQ(frequency(100, 400, 3), 0U);
    const std::string text = rows();
    EXPECT_THAT(text, StartsWith("100.00\t-3.01\n250.00\t-"));
    EXPECT_THAT(text, testing::HasSubstr("\n400.00\t-"));
    EXPECT_THAT(text, EndsWith("\n"));
}

TEST_F(FrequencyFile, ShowsTheButterworthAmplitudes) {
    ASSERT_EQ(frequency(20, 200, 10), 0U);
    std::istringstream stream(rows());
    for (int i = 1; i <= 10; ++i) {
        double f = 0;
        double decibels = 0;
        stream >> f >> decibels;
        EXPECT_EQ(f, 20.0 * i);
        const double ratio = warped(f / fs) / warped(0.1);
        EXPECT_NEAR(decibels, -10 * std::log10(1 + std::pow(ratio, 8)), 0.0051);
    }
}

TEST_F(FrequencyFile, InFixedPointShowsNearlyTheSame) {
    ASSERT_EQ(frequency(100, 400, 1, iirInFixedPoint), 0U);
    EXPECT_EQ(rows(), "100.000\t-3.01");
}

TEST_F(FrequencyFile, HasAsManyLinesAsWanted) {
    ASSERT_EQ(frequency(10, 400, 1234), 0U);
    EXPECT_THAT(lines(), SizeIs(1236));
}

TEST_F(FrequencyFile, Response_ThatMustEndAfterThreePoints_HasThreeLinesAndTheCodeOfARelease) {
    int asked = 0;
    EXPECT_EQ(writeFrequencyResponse(filter, singlePrecision, 100, 400, fs, 1000, file.c_str(),
                                     [&asked] { return ++asked > 3; }),
              0x30000113U);
    EXPECT_THAT(lines(), SizeIs(2 + 3));
}

TEST_F(FrequencyFile, AccumulatesItsFrequencies) {
    ASSERT_EQ(frequency(10, 11, 101), 0U);
    EXPECT_THAT(lines()[2], StartsWith("10.00\t"));
    EXPECT_THAT(lines()[3], StartsWith("10.01\t"));
    EXPECT_THAT(lines()[102], StartsWith("11.00\t"));
}

TEST_F(FrequencyFile, GoesDownwardsWhenAsked) {
    ASSERT_EQ(frequency(300, 100, 3), 0U);
    EXPECT_THAT(lines()[3], StartsWith("200.00\t"));
    EXPECT_EQ(lines()[4], "100.00\t-3.01");
}

TEST_F(FrequencyFile, ShowsMinus320WhereNothingComesOut) {
    filter.rawX.fill(0);
    for (const std::uint32_t kindWord : {iirInFixedPoint, singlePrecision}) {
        ASSERT_EQ(frequency(100, 400, 1, kindWord), 0U);
        EXPECT_EQ(rows(), "100.000\t-320.00");
    }
}

TEST_F(FrequencyFile, RefusesFewerThanOnePoint) {
    for (const std::int32_t points : {0, -1})
        EXPECT_EQ(frequency(100, 400, points), filter_error::wrongArguments);
    EXPECT_FALSE(fileThere());
}

TEST_F(FrequencyFile, RefusesToHaveNoName) {
    EXPECT_EQ(writeFrequencyResponse(filter, singlePrecision, 1, 2, fs, 1, nullptr), filter_error::wrongArguments);
}

TEST_F(FrequencyFile, RefusesSamplingFrequenciesBelowOne) {
    for (const double wrong : {0.999999, 0.0, -1.0, static_cast<double>(NAN)})
        EXPECT_EQ(writeFrequencyResponse(filter, singlePrecision, -9, -8, wrong, 1, file.c_str()),
                  filter_error::wrongArguments);
    EXPECT_FALSE(fileThere());
}

TEST_F(FrequencyFile, RefusesToStartAtTheSamplingFrequency) {
    EXPECT_EQ(frequency(1000, 400, 2), filter_error::wrongArguments);
    EXPECT_EQ(frequency(NAN, 400, 2), filter_error::wrongArguments);
    EXPECT_EQ(frequency(999.9, 400, 2), 0U);
}

TEST_F(FrequencyFile, RefusesToEndAboveTheSamplingFrequency) {
    EXPECT_EQ(frequency(100, 1000.1, 2), filter_error::wrongArguments);
    EXPECT_EQ(frequency(100, NAN, 2), filter_error::wrongArguments);
    EXPECT_EQ(frequency(100, 1000, 2), 0U);
}

}  // namespace
}  // namespace torvik::test
