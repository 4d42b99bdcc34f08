#include "answers.hpp"

namespace virtual_test {
namespace {

using RateCommands = QuickAmplifier;

TEST_F(RateCommands, FrequencyIsReadBackAlsoAfterAReset) {
    EXPECT_EQ(ask({0x8A}), toldFloat(100));
    EXPECT_EQ(askWithFloat({0x8B}, 12.5F), kAcknowledged);
    EXPECT_EQ(ask({0x8A}), toldFloat(12.5F));
    restart();
    EXPECT_EQ(ask({0x8A}), toldFloat(12.5F));
}

TEST_F(RateCommands, FrequencyChangesTheStreamAtOnce) {
    configure("frequency = 0.1\n");
    EXPECT_EQ(ask({0x24}), kAcknowledged);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(askWithFloat({0x8B}, 1000), kAcknowledged);
    EXPECT_TRUE(eventually([] { return virtualQueued() >= 100U * 6; }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(95));
}

TEST_F(RateCommands, FrequenciesOutsideTheDataRateRangeAreRefused) {
    EXPECT_EQ(ask({0x63, 0}), toldFloat(0.1F));
    EXPECT_EQ(ask({0x63, 1}), toldFloat(20'000));
    EXPECT_EQ(ask({0x63, 2}), refusal(kWrongIndex));
    EXPECT_EQ(askWithFloat({0x8B}, 0.09F), refusal(kWrongData));
    EXPECT_EQ(askWithFloat({0x8B}, 20'001), refusal(kWrongData));
    EXPECT_EQ(askWithNumber({0x8B}, 0x7FC00000), refusal(kWrongData));
    EXPECT_EQ(askWithFloat({0x8B}, 20'000), kAcknowledged);
    EXPECT_EQ(askWithFloat({0x8B}, 0.1F), kAcknowledged);
}

TEST_F(RateCommands, CounterModesAreReadBack) {
    EXPECT_EQ(askWithNumber({0x6A, 0x2F}, 0x12345678), kAcknowledged);
    EXPECT_EQ(ask({0x69, 0x2F}), toldNumber(0x12345678));
    EXPECT_EQ(ask({0x69, 0x0F}), toldNumber(0));
    restart();
    EXPECT_EQ(ask({0x69, 0x2F}), toldNumber(0x12345678));
}

TEST_F(RateCommands, CounterInputsAreThree) {
    EXPECT_EQ(ask({0x69, 0x30}), refusal(kWrongIndex));
    EXPECT_EQ(askWithNumber({0x6A, 0xF0}, 1), refusal(kWrongIndex));
}

TEST_F(RateCommands, CounterThatIsOnIsOneMoreChannel) {
    EXPECT_EQ(askWithNumber({0x6A, 0x10}, 2), kAcknowledged);
    EXPECT_EQ(ask({0x49, 0}), told({0, 7}));
    EXPECT_EQ(askWithNumber({0x6A, 0x10}, 3), kAcknowledged);
    EXPECT_EQ(ask({0x49, 0}), told({0, 7})) << "it was on already";
    ASSERT_EQ(virtualSendSets(0, 1), 7U);
    drain();
    EXPECT_EQ(askWithNumber({0x6A, 0x10}, 0), kAcknowledged);
    EXPECT_EQ(ask({0x49, 0}), told({0, 6}));
}

TEST_F(RateCommands, OtherCounterItemsLeaveTheChannelsAlone) {
    EXPECT_EQ(askWithNumber({0x6A, 0x11}, 2), kAcknowledged);
    EXPECT_EQ(ask({0x49, 0}), told({0, 6}));
}

TEST_F(RateCommands, AmplifierCountsNineChannelsButSendsEight) {
    configure("channels = 8\n");
    EXPECT_EQ(askWithNumber({0x6A, 0x00}, 1), kAcknowledged);
    EXPECT_EQ(ask({0x49, 0}), told({0, 9}));
    EXPECT_EQ(virtualSendSets(0, 1), 8U);
}

TEST_F(RateCommands, AnalogueFilterIsReadBack) {
    EXPECT_EQ(ask({0x90, 0}), told({0, 0}));
    EXPECT_EQ(ask({0x91, 0x12, 0x34}), kAcknowledged);
    EXPECT_EQ(ask({0x90, 0}), told({0x12, 0x34}));
}

}  // namespace
}  // namespace virtual_test
