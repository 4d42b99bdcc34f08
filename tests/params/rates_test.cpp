// Data rate limits, counter modes and what is peculiar to the analogue filter.
#include "params/params_bench.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DataRateRange : public ParamsBench {
  protected:
    static void answerOne() { answerWith(0x63, {0, 0x3F, 0x80, 0, 0}); }
    double min = 77;
    double max = 77;
};

TEST_F(DataRateRange, AsksOnlyForTheMaximumWhenOnlyThatIsWanted) {
    answerOne();
    EXPECT_EQ(TORVIKgetDataRateRange(device, nullptr, &max), 0);
    EXPECT_EQ(max, 1.0);
    EXPECT_THAT(takeSent(), ElementsAre("81 63 01"));
}

TEST_F(DataRateRange, AsksOnlyForTheMinimumWhenOnlyThatIsWanted) {
    answerOne();
    EXPECT_EQ(TORVIKgetDataRateRange(device, &min, nullptr), 0);
    EXPECT_EQ(min, 1.0);
    EXPECT_THAT(takeSent(), ElementsAre("81 63 00"));
}

TEST_F(DataRateRange, AsksForNothingWhenNothingIsWanted) {
    EXPECT_EQ(TORVIKgetDataRateRange(device, nullptr, nullptr), 0);
    EXPECT_THAT(takeSent(), IsEmpty());
    EXPECT_EQ(takeCode(), code::none);
}

TEST_F(DataRateRange, KeepsTheMinimumWhenTheMaximumIsRefused) {
    script({accepts(0x63, {0x3F, 0x80}), Answer{0x63, {0x52}}});
    EXPECT_EQ(TORVIKgetDataRateRange(device, &min, &max), -1);
    EXPECT_EQ(takeCode(), 0x52U);
    EXPECT_EQ(min, 1.0);
    EXPECT_EQ(max, 77);
}

struct CountCase {
    const char* name;
    std::uint8_t high;
    std::uint8_t low;
    std::uint32_t activeChannels;  // afterwards, 6 before
};

class CounterMode : public ParamsBench, public testing::WithParamInterface<CountCase> {
  protected:
    std::int32_t set() {
        return run([] { return TORVIKsetCounterFreqMode(device, 2, 0, 0x01020304); });
    }
};

TEST_P(CounterMode, RefreshesTheNumberOfChannels) {
    script({accepts(0x6A), accepts(0x49, {GetParam().high, GetParam().low})});
    EXPECT_EQ(set(), 0);
    EXPECT_THAT(takeSent(), ElementsAre("85 6A 20 01 02 03 04", "81 49 00"));
    EXPECT_EQ(record().activeChannels, GetParam().activeChannels);
}

INSTANTIATE_TEST_SUITE_P(Params, CounterMode,
                         testing::Values(CountCase{"Three", 0, 3, 3}, CountCase{"Eight", 0, 8, 8},
                                         CountCase{"NineIsNotTaken", 0, 9, 6},
                                         CountCase{"TwoHundredFiftyNineIsNotThree", 1, 3, 6},
                                         CountCase{"TheSame", 0, 6, 6}, CountCase{"None", 0, 0, 0}),
                         [](const auto& instance) { return instance.param.name; });

class CounterModeRefresh : public ParamsBench {
  protected:
    std::int32_t set() {
        return run([] { return TORVIKsetCounterFreqMode(device, 2, 0, 0x01020304); });
    }
};

TEST_F(CounterModeRefresh, IsLeftOutForOtherSubs) {
    for (const std::uint32_t sub : {1U, 15U}) {
        script({accepts(0x6A), accepts(0x49, {0, 3})});
        EXPECT_EQ(TORVIKsetCounterFreqMode(device, 0, sub, 0), 0);
    }
    EXPECT_THAT(takeSent(), ElementsAre("85 6A 01 00 00 00 00", "85 6A 0F 00 00 00 00"));
    EXPECT_EQ(record().activeChannels, 6U);
}

TEST_F(CounterModeRefresh, IsLeftOutWhenTheModeIsRefused) {
    script({Answer{0x6A, {0x52}}});
    EXPECT_EQ(set(), -1);
    EXPECT_THAT(takeSent(), ElementsAre("85 6A 20 01 02 03 04"));
}

TEST_F(CounterModeRefresh, StoresTheStatusOfARefusal) {
    script({accepts(0x6A), Answer{0x49, {0x52, 0, 3}}});
    EXPECT_EQ(set(), -1);
    EXPECT_EQ(takeCode(), 0x52U);
    EXPECT_EQ(record().activeChannels, 6U);
}

TEST_F(CounterModeRefresh, FailsWithoutAnAnswer) {
    script({accepts(0x6A)});
    drop(0x49);
    EXPECT_EQ(set(), -1);
    EXPECT_EQ(takeCode(), code::answerTimeout);
    EXPECT_EQ(record().activeChannels, 6U);
    expectFree();
}

TEST_F(ParamsBench, WriteAnalogueFilterOnAReleasedDeviceGives0) {
    TORVIKrelease(device);
    EXPECT_EQ(TORVIKwriteAnalogueFilter(device, 1), 0);
    EXPECT_EQ(takeCode(), code::notActive);
    EXPECT_THAT(takeWritten(), IsEmpty());
}

TEST_F(ParamsBench, GetCounterFreqModeAboveNumber39LeavesAnOlderError) {
    double frequency = 0;
    ASSERT_EQ(TORVIKgetFrequency(40, &frequency), -1);
    EXPECT_EQ(TORVIKgetCounterFreqMode(40, 9, 99, nullptr), -1);
    EXPECT_EQ(takeCode(40), code::parameterExceedance);
    EXPECT_EQ(TORVIKgetCounterFreqMode(40, 9, 99, nullptr), -1);
    EXPECT_EQ(takeCode(40), code::none);
}

}  // namespace
}  // namespace torvik::test
