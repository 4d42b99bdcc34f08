// Files of step responses, character by character.
#include "filter/response_bench.h"

namespace torvik::test {
namespace {

using namespace torvik::option;
using testing::EndsWith;
using testing::SizeIs;
using testing::StartsWith;

class StepFile : public ResponseFiles {};

TEST_F(StepFile, Of20PointsHasTheHeadingTheColumnLineAnd20Lines) {
    ASSERT_EQ(step(20), 0U);
    ASSERT_THAT(lines(), SizeIs(22));
    EXPECT_EQ(lines()[0], "Step response of IIR low pass 4th order. Cutoff freq: 100.000 Sampling freq: 1000.0");
    EXPECT_EQ(lines()[1], "Time [ms]\tAmplitude");
    EXPECT_THAT(content(), EndsWith("\n"));
}

TEST_F(StepFile, StepsItsTimesByTheSamplingInterval) {
    ASSERT_EQ(writeStepResponse(filter, singlePrecision, 0, 1, 3000, 20, file.c_str()), 0U);
    EXPECT_THAT(lines()[2], StartsWith("0.000\t"));
    EXPECT_THAT(lines()[3], StartsWith("0.333\t"));
    EXPECT_THAT(lines()[4], StartsWith("0.667\t"));
    EXPECT_THAT(lines()[21], StartsWith("6.333\t"));
}

TEST_F(StepFile, HasAmplitudesWithFiveDecimals) {
    make(lowPassOf(butterworth, 1, 0.25));
    ASSERT_EQ(step(20), 0U);
    EXPECT_EQ(lines()[2], "0.000\t0.50000");
    EXPECT_EQ(lines()[3], "1.000\t1.00000");
}

TEST_F(StepFile, InFixedPointShowsTheLevelsAsPartsOfFullScale) {
    make(lowPassOf(butterworth, 1, 0.25));
    ASSERT_EQ(writeStepResponse(filter, iirInFixedPoint, -0.5, 0.25, fs, 20, file.c_str()), 0U);
    EXPECT_EQ(lines()[3], "1.000\t-0.50000");
    EXPECT_EQ(lines()[12], "10.000\t-0.12500");
    EXPECT_EQ(lines()[13], "11.000\t0.25000");
}

TEST_F(StepFile, KeepsTheLevels) {
    ASSERT_EQ(writeStepResponse(filter, singlePrecision, -0.75, 0.25, fs, 20, file.c_str()), 0U);
    EXPECT_EQ(filter.stepLevelBefore, -0.75);
    EXPECT_EQ(filter.stepLevelAfter, 0.25);
}

TEST_F(StepFile, HasOneThousandLinesWhenThatManyAreWanted) {
    ASSERT_EQ(step(1000), 0U);
    EXPECT_THAT(lines(), SizeIs(1002));
}

TEST_F(StepFile, HasNotMoreThanOneThousandLines) {
    for (const std::int32_t points : {1001, 2000, 2147483647}) {
        ASSERT_EQ(step(points), 0U);
        EXPECT_THAT(lines(), SizeIs(1002));
    }
}

TEST_F(StepFile, RefusesFewerThan20Points) {
    for (const std::int32_t points : {19, 0, -1})
        EXPECT_EQ(step(points), filter_error::wrongArguments);
    EXPECT_FALSE(fileThere());
}

TEST_F(StepFile, RefusesToHaveNoName) {
    EXPECT_EQ(writeStepResponse(filter, singlePrecision, 0, 1, fs, 20, nullptr), filter_error::wrongArguments);
}

TEST_F(StepFile, RefusesSamplingFrequenciesBelowOne) {
    for (const double wrong : {0.999999, 0.0, -1.0, -HUGE_VAL, static_cast<double>(NAN)})
        EXPECT_EQ(writeStepResponse(filter, singlePrecision, 0, 1, wrong, 20, file.c_str()),
                  filter_error::wrongArguments);
    EXPECT_FALSE(fileThere());
}

TEST_F(StepFile, TakesASamplingFrequencyOfOne) {
    EXPECT_EQ(writeStepResponse(filter, singlePrecision, 0, 1, 1.0, 20, file.c_str()), 0U);
    EXPECT_THAT(lines()[3], StartsWith("1000.000\t"));
}

}  // namespace
}  // namespace torvik::test
