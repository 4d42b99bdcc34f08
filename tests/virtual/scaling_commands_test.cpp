#include "answers.hpp"

namespace virtual_test {
namespace {

constexpr std::uint8_t kOverload = 0x31;  // type byte of a float that was cut

// Two channels that constantly stream 100 and -40.
class ScalingCommands : public QuickAmplifier {
  protected:
    void SetUp() override {
        QuickAmplifier::SetUp();
        configure(
            "channels = 2\nvalue_type = 'float32'\nunit = 'counts'\n"
            "[[amplifier.signal]]\noffset = 100\n[[amplifier.signal]]\noffset = -40\n");
    }

    static Data frameOfNextSet(std::size_t channel) {
        virtualSendSets(0, 1);
        const auto frames = drain();
        return channel < frames.size() ? dataOf(frames[channel]) : Data{};
    }
    static float nextValue(std::size_t channel) {
        const Data data = frameOfNextSet(channel);
        return std::bit_cast<float>(
            static_cast<std::uint32_t>(data[4] << 24U | data[5] << 16U | data[6] << 8U | data[7]));
    }
};

struct ScalingNumber {
    const char* name;
    std::uint8_t read;
    std::uint8_t write;
    float factory;
    bool stored;  // outlasts a reset as soon as it is written
};

class ScalingNumbers : public QuickAmplifier, public testing::WithParamInterface<ScalingNumber> {};

TEST_P(ScalingNumbers, IsReadBackFromTheChannelItWasWrittenTo) {
    const ScalingNumber& number = GetParam();
    EXPECT_EQ(ask({number.read, 8}), toldFloat(number.factory));
    EXPECT_EQ(askWithFloat({number.write, 8}, 2.5F), kAcknowledged);
    EXPECT_EQ(ask({number.read, 8}), toldFloat(2.5F));
    EXPECT_EQ(ask({number.read, 7}), toldFloat(number.factory));
}

TEST_P(ScalingNumbers, IsWrittenToAllChannelsBySelectorZero) {
    const ScalingNumber& number = GetParam();
    EXPECT_EQ(askWithFloat({number.write, 0}, -0.5F), kAcknowledged);
    EXPECT_EQ(ask({number.read, 1}), toldFloat(-0.5F));
    EXPECT_EQ(ask({number.read, 8}), toldFloat(-0.5F));
}

TEST_P(ScalingNumbers, IsRefusedForOtherChannels) {
    const ScalingNumber& number = GetParam();
    EXPECT_EQ(ask({number.read, 0}), refusal(kWrongIndex));
    EXPECT_EQ(ask({number.read, 9}), refusal(kWrongIndex));
    EXPECT_EQ(askWithFloat({number.write, 9}, 1), refusal(kWrongIndex));
}

TEST_P(ScalingNumbers, OutlastsAResetWhenItsCommandStoresIt) {
    const ScalingNumber& number = GetParam();
    EXPECT_EQ(askWithFloat({number.write, 3}, 7.0F), kAcknowledged);
    restart();
    EXPECT_EQ(ask({number.read, 3}), toldFloat(number.stored ? 7.0F : number.factory));
}

INSTANTIATE_TEST_SUITE_P(Each, ScalingNumbers,
                         testing::Values(ScalingNumber{"OutputOffset", 0x04, 0x05, 0, true},
                                         ScalingNumber{"OutputScale", 0x06, 0x07, 1, false},
                                         ScalingNumber{"UserScale", 0x14, 0x15, 1, false},
                                         ScalingNumber{"NoiseCut", 0x94, 0x95, 0, false},
                                         ScalingNumber{"UserOffset", 0x9A, 0x9B, 0, false}),
                         [](const auto& row) { return row.param.name; });

TEST_F(ScalingCommands, ZeroIsReadBack) {
    EXPECT_EQ(ask({0x02, 1}), toldNumber(0));
    EXPECT_EQ(askWithNumber({0x03, 1}, 0xFFFFFFFF), kAcknowledged);
    EXPECT_EQ(ask({0x02, 1}), toldNumber(0xFFFFFFFF));
    EXPECT_EQ(ask({0x02, 2}), toldNumber(0));
    EXPECT_EQ(ask({0x02, 0}), refusal(kWrongIndex));
    EXPECT_EQ(askWithNumber({0x03, 9}, 0), refusal(kWrongIndex));
}

TEST_F(ScalingCommands, WrittenZeroIsSubtractedFromTheValues) {
    EXPECT_EQ(askWithNumber({0x03, 1}, 30), kAcknowledged);
    EXPECT_EQ(nextValue(0), 70.0F);
    EXPECT_EQ(nextValue(1), -40.0F);
}

TEST_F(ScalingCommands, PresentValueBecomesTheZero) {
    EXPECT_EQ(ask({0x0C, 1}), kAcknowledged);
    EXPECT_EQ(ask({0x02, 1}), toldNumber(100));
    EXPECT_EQ(nextValue(0), 0.0F);
    EXPECT_EQ(nextValue(1), -40.0F);
}

TEST_F(ScalingCommands, AllChannelsAreZeroedBySelectorZero) {
    EXPECT_EQ(ask({0x0C, 0}), kAcknowledged);
    EXPECT_EQ(nextValue(0), 0.0F);
    EXPECT_EQ(nextValue(1), 0.0F);
    EXPECT_EQ(ask({0x0C, 9}), refusal(kWrongIndex));
}

TEST_F(ScalingCommands, ZeroDoesNotDependOnScaleAndOffset) {
    EXPECT_EQ(askWithFloat({0x15, 1}, 2), kAcknowledged);
    EXPECT_EQ(askWithFloat({0x9B, 1}, 5), kAcknowledged);
    EXPECT_EQ(ask({0x0C, 1}), kAcknowledged);
    EXPECT_EQ(ask({0x02, 1}), toldNumber(100));
    EXPECT_EQ(nextValue(0), 5.0F);
}

TEST_F(ScalingCommands, ValuesAreZeroedScaledAndOffsetInThisOrder) {
    EXPECT_EQ(askWithNumber({0x03, 1}, 10), kAcknowledged);
    EXPECT_EQ(askWithFloat({0x15, 1}, 0.5F), kAcknowledged);
    EXPECT_EQ(askWithFloat({0x9B, 1}, -3), kAcknowledged);
    EXPECT_EQ(nextValue(0), 42.0F);
}

TEST_F(ScalingCommands, OffsetIsAFractionOfTheFullScaleWhereSignalsAre) {
    configure("channels = 1\nvalue_type = 'int16'\n[[amplifier.signal]]\noffset = 0.25\n");
    EXPECT_EQ(askWithFloat({0x9B, 1}, 0.5F), kAcknowledged);
    const Data data = frameOfNextSet(0);
    EXPECT_NEAR((data[4] << 8U | data[5]) * 2.1 / 65535, 0.75, 2e-5);
}

TEST_F(ScalingCommands, ZeroOfFloatsCountsInStepsOf24Bits) {
    configure("channels = 1\nvalue_type = 'float32'\n[[amplifier.signal]]\noffset = 0.42\n");
    EXPECT_EQ(ask({0x0C, 1}), kAcknowledged);
    EXPECT_EQ(ask({0x02, 1}), toldNumber(3'355'443));
    EXPECT_NEAR(static_cast<double>(nextValue(0)), 0.0, 1e-7);
}

TEST_F(ScalingCommands, ValuesBelowTheNoiseCutAreZero) {
    EXPECT_EQ(askWithFloat({0x95, 0}, 50), kAcknowledged);
    EXPECT_EQ(nextValue(0), 100.0F);
    EXPECT_EQ(nextValue(1), 0.0F);
}

TEST_F(ScalingCommands, ScaleThatIsNoNumberMakesEveryValueAnOverload) {
    EXPECT_EQ(askWithNumber({0x15, 1}, 0x7FC00000), kAcknowledged);
    EXPECT_EQ(ask({0x14, 1}), toldNumber(0x7FC00000));
    EXPECT_EQ(frameOfNextSet(0)[1], kOverload);
    EXPECT_EQ(nextValue(0), 0.0F);
}

TEST_F(ScalingCommands, OutputTypesAreToldInTheOrderTheyWereWritten) {
    EXPECT_EQ(ask({0x0E, 2, 0x11, 0x22}), kAcknowledged);
    EXPECT_EQ(ask({0x0D, 2}), told({0x11, 0x22}));
    EXPECT_EQ(ask({0x0D, 1}), told({0, 0}));
    restart();
    EXPECT_EQ(ask({0x0D, 2}), told({0x11, 0x22}));
    EXPECT_EQ(ask({0x0D, 0}), refusal(kWrongIndex));
    EXPECT_EQ(ask({0x0E, 9, 0, 0}), refusal(kWrongIndex));
}

TEST_F(ScalingCommands, OutputValueIsAcknowledged) {
    EXPECT_EQ(ask({0x08, 0, 0x23, 0x45}), kAcknowledged);
    EXPECT_EQ(ask({0x08, 9, 0x23, 0x45}), refusal(kWrongIndex));
}

TEST_F(ScalingCommands, SmallestAndLargestValueComeInTwoAnswers) {
    nextValue(0);
    EXPECT_EQ(askWithNumber({0x03, 1}, 30), kAcknowledged);
    nextValue(0);
    EXPECT_EQ(ask({0x53, 1}), toldFloat(70.0F));
    EXPECT_EQ(secondAnswer(), toldFloat(100.0F));
    EXPECT_EQ(virtualQueued(), 0U);
}

TEST_F(ScalingCommands, SmallestAndLargestValueAreClearedWithTheMaximum) {
    nextValue(0);
    EXPECT_EQ(ask({0x3C, 1}), kAcknowledged);
    EXPECT_EQ(ask({0x53, 1}), toldFloat(0));
    EXPECT_EQ(secondAnswer(), toldFloat(0));
}

TEST_F(ScalingCommands, SmallestAndLargestValueOfNoChannelAreRefusedOnce) {
    EXPECT_EQ(ask({0x53, 0}), refusal(kWrongIndex));
    EXPECT_EQ(ask({0x53, 9}), refusal(kWrongIndex));
    EXPECT_EQ(virtualQueued(), 0U);
}

}  // namespace
}  // namespace virtual_test
