#include <array>
#include <bit>
#include <cmath>
#include <limits>

#include "support/bench_fixture.h"

namespace {

using namespace torvik::test;
using testing::DoubleEq;
using testing::ElementsAre;

constexpr double int16Scale = 2.1 / 65535;
constexpr double int24Scale = 2.1 / 16777215;

class MeasuredValues : public Bench {
  protected:
    // One read of a channel: what it delivers, as counts of the 16-bit format, when the result is 1.
    static double readCounts(std::uint32_t channel = 1) {
        double value = std::numeric_limits<double>::quiet_NaN();
        EXPECT_EQ(TORVIKread(device, channel, &value), 1) << takeLastError(device).text;
        return std::round(value / int16Scale * 1000) / 1000;
    }

    static std::int32_t waiting(std::uint32_t channel) {
        std::int32_t count = -1;
        EXPECT_EQ(TORVIKreceived(device, channel, &count), 0);
        return count;
    }

    static void expectEmpty(std::uint32_t channel = 1) {
        double value = 1;
        EXPECT_EQ(TORVIKread(device, channel, &value), 0);
        EXPECT_EQ(value, 0.0);
        expectNoError(device);
    }

    // Cycles of one channel with the values 1, 2, 3 and so on.
    static void pushCycles(std::int32_t cycles) {
        for (std::int32_t i = 1; i <= cycles; ++i)
            pushSet(static_cast<unsigned>(i), int16Type, {i});
        settle();
    }
};

TEST_F(MeasuredValues, EmptyBufferReadsAsZero) {
    activate();
    expectEmpty();
}

TEST_F(MeasuredValues, SixteenBitCountsAreScaledToTwoPointOneOfFullScale) {
    activate(100, 2);
    pushSet(0, int16Type, {-200, 32767});
    settle();
    double value = 0;
    ASSERT_EQ(TORVIKread(device, 1, &value), 1);
    EXPECT_DOUBLE_EQ(value, -200 * int16Scale);
    ASSERT_EQ(TORVIKread(device, 2, &value), 1);
    EXPECT_DOUBLE_EQ(value, 32767 * int16Scale);
}

TEST_F(MeasuredValues, TwentyFourBitCountsAreSignExtendedAndScaled) {
    activate(100, 2);
    pushSet(0, int24Type, {-8388608, 8388607});
    settle();
    double value = 0;
    ASSERT_EQ(TORVIKread(device, 1, &value), 1);
    EXPECT_DOUBLE_EQ(value, -8388608 * int24Scale);
    ASSERT_EQ(TORVIKread(device, 2, &value), 1);
    EXPECT_DOUBLE_EQ(value, 8388607 * int24Scale);
}

TEST_F(MeasuredValues, FloatsComeUnchanged) {
    activate(100, 1);
    pushSet(0, float32Type, {std::bit_cast<std::int32_t>(-1234.5F)});
    settle();
    double value = 0;
    ASSERT_EQ(TORVIKread(device, 1, &value), 1);
    EXPECT_EQ(value, -1234.5);
}

TEST_F(MeasuredValues, FormatOfTheLastChannelScalesAllChannels) {
    activate(100, 2);
    push({valueFrame(valueId, 0, 0, int16Type, 100), valueFrame(valueId, 1, 0, int24Type, 7)});
    settle();
    double value = 0;
    ASSERT_EQ(TORVIKread(device, 1, &value), 1);
    EXPECT_DOUBLE_EQ(value, 100 * int24Scale);
}

TEST_F(MeasuredValues, UnknownFormatIsRefusedAndTheValueConsumed) {
    activate(100, 1);
    pushSet(0, 0, {5});
    settle();
    double value = 0;
    EXPECT_EQ(TORVIKread(device, 1, &value), -1);
    expectLastError(device, 0x30000063, "VARDA Device: VARDA dataformat is no set [805306467]");
    expectEmpty();
}

TEST_F(MeasuredValues, UnknownFormatRefusesABlockToo) {
    activate(100, 2);
    pushSet(0, 7, {5, 6});
    settle();
    std::array<double, 2> values{};
    std::int32_t count = -1;
    EXPECT_EQ(TORVIKreadMultiple(device, 0, values.data(), 2, &count, nullptr), -1);
    EXPECT_EQ(count, 0);
    expectLastError(device, 0x30000063, "VARDA Device: VARDA dataformat is no set [805306467]");
}

TEST_F(MeasuredValues, ValueOfUnknownFormatReadsAsNotANumberOnceAFormatIsKnown) {
    activate(100, 1);
    pushSet(0, 0, {5});
    pushSet(1, int16Type, {6});
    settle();
    double value = 0;
    ASSERT_EQ(TORVIKread(device, 1, &value), 1);
    EXPECT_TRUE(std::isnan(value));
    EXPECT_EQ(readCounts(), 6);
}

TEST_F(MeasuredValues, CycleWithoutItsFirstFrameIsDropped) {
    activate(100, 3);
    push({valueFrame(valueId, 1, 1, int16Type, 11), valueFrame(valueId, 2, 1, int16Type, 12)});
    pushSet(2, int16Type, {20, 21, 22});
    settle();
    EXPECT_EQ(waiting(0), 1);
    EXPECT_EQ(readCounts(2), 21);
}

TEST_F(MeasuredValues, AnotherSequenceNumberCancelsTheCycle) {
    activate(100, 2);
    push({valueFrame(valueId, 0, 1, int16Type, 10), valueFrame(valueId, 1, 2, int16Type, 11),
          valueFrame(valueId, 1, 1, int16Type, 12)});
    settle();
    EXPECT_EQ(waiting(0), 0);
    pushSet(3, int16Type, {30, 31});
    settle();
    EXPECT_EQ(waiting(0), 1);
    EXPECT_EQ(readCounts(1), 30);
}

TEST_F(MeasuredValues, RepeatedChannelCountsTowardsTheCycle) {
    activate(100, 3);
    pushSet(0, int16Type, {1, 2, 3});
    push({valueFrame(valueId, 0, 1, int16Type, 10), valueFrame(valueId, 1, 1, int16Type, 11),
          valueFrame(valueId, 1, 1, int16Type, 12)});
    settle();
    EXPECT_EQ(waiting(0), 2);
    EXPECT_EQ(readCounts(2), 2);
    EXPECT_EQ(readCounts(2), 12);
    // The channel that did not come again keeps what it had.
    EXPECT_EQ(readCounts(3), 3);
    EXPECT_EQ(readCounts(3), 3);
}

TEST_F(MeasuredValues, ChannelIndexEightAndAboveIsDropped) {
    activate(100, 2);
    push({valueFrame(valueId, 0, 1, int16Type, 10), valueFrame(valueId, 8, 1, int16Type, 99),
          valueFrame(valueId, 15, 1, int16Type, 99), valueFrame(valueId, 1, 1, int16Type, 11)});
    settle();
    EXPECT_EQ(waiting(0), 1);
    EXPECT_EQ(readCounts(2), 11);
}

TEST_F(MeasuredValues, ZeroLengthFrameIsAFirstFrameOfUnknownFormat) {
    activate(100, 1);
    push({VirtualFrame{valueId, 0, 0, {}}});
    settle();
    EXPECT_EQ(waiting(1), 1);
    double value = 0;
    EXPECT_EQ(TORVIKread(device, 1, &value), -1);
    EXPECT_EQ(takeLastError(device).code, 0x30000063u);
}

TEST_F(MeasuredValues, FramesOfOtherIdentifiersAreDropped) {
    activate(100, 1);
    push({valueFrame(0x7FF, 0, 1, int16Type, 10)});
    settle();
    EXPECT_EQ(waiting(1), 0);
}

TEST_F(MeasuredValues, BufferOfOneValueKeepsTheNewest) {
    activate(1, 1);
    pushCycles(3);
    EXPECT_EQ(waiting(1), 1);
    EXPECT_EQ(readCounts(), 3);
    expectEmpty();
}

TEST_F(MeasuredValues, BufferSizeZeroMeansOneValue) {
    activate(0, 1);
    pushCycles(2);
    EXPECT_EQ(waiting(1), 1);
}

TEST_F(MeasuredValues, OneCycleTooManyStandsInThePlaceOfTheOldest) {
    activate(4, 1);
    pushCycles(5);
    EXPECT_EQ(waiting(1), 4);
    for (const double expected : {5, 2, 3, 4})
        EXPECT_EQ(readCounts(), expected);
    expectEmpty();
}

TEST_F(MeasuredValues, TwoCyclesTooManyStandInThePlaceOfTheOldestTwo) {
    activate(4, 1);
    pushCycles(6);
    for (const double expected : {5, 6, 3, 4})
        EXPECT_EQ(readCounts(), expected);
    expectEmpty();
}

TEST_F(MeasuredValues, ReadingAndWritingStayApartAfterAnOverflow) {
    activate(4, 1);
    pushCycles(5);
    for (const double expected : {5, 2, 3, 4})
        EXPECT_EQ(readCounts(), expected);
    pushSet(6, int16Type, {6});
    settle();
    // The new value went to the second slot; the first one is read again.
    EXPECT_EQ(readCounts(), 5);
    expectEmpty();
}

TEST_F(MeasuredValues, LargestBufferHolds65534Values) {
    activate(70000, 1);
    std::vector<VirtualFrame> frames;
    for (unsigned i = 0; i < 5000; ++i)
        frames.push_back(valueFrame(valueId, 0, i, int16Type, i));
    for (int block = 0; block < 14; ++block) {
        push(frames);
        settle();
    }
    EXPECT_EQ(waiting(1), 65534);
}

TEST_F(MeasuredValues, AllChannelsAreReadCycleByCycle) {
    activate(100, 4);
    pushSet(0, int16Type, {1, 2, 3, 4});
    pushSet(1, int16Type, {11, 12, 13, 14});
    pushSet(2, int16Type, {21, 22, 23, 24});
    settle();
    std::array<double, 8> values{};
    std::int32_t count = -1;
    ASSERT_EQ(TORVIKreadMultiple(device, 0, values.data(), 8, &count, nullptr), 1);
    EXPECT_EQ(count, 8);
    EXPECT_THAT(values, ElementsAre(DoubleEq(1 * int16Scale), DoubleEq(2 * int16Scale), DoubleEq(3 * int16Scale),
                                    DoubleEq(4 * int16Scale), DoubleEq(11 * int16Scale), DoubleEq(12 * int16Scale),
                                    DoubleEq(13 * int16Scale), DoubleEq(14 * int16Scale)));
    EXPECT_EQ(waiting(0), 1);
}

TEST_F(MeasuredValues, BlockIsLimitedToTheWholeCyclesWaiting) {
    activate(100, 2);
    pushSet(0, int16Type, {1, 2});
    settle();
    std::array<double, 10> values{};
    std::int32_t count = -1;
    ASSERT_EQ(TORVIKreadMultiple(device, 0, values.data(), 10, &count, nullptr), 1);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(TORVIKreadMultiple(device, 0, values.data(), 10, &count, nullptr), 0);
    EXPECT_EQ(count, 0);
}

TEST_F(MeasuredValues, OneChannelIsReadAsABlockWithItsStatus) {
    activate(100, 2);
    push({valueFrame(valueId, 0, 0, int16Type, 1, 0x3), valueFrame(valueId, 1, 0, int16Type, 2, 0xF),
          valueFrame(valueId, 0, 1, int16Type, 3), valueFrame(valueId, 1, 1, int16Type, 4, 0x8)});
    settle();
    std::array<double, 5> values{};
    std::array<std::uint32_t, 5> status{99, 99, 99, 99, 99};
    std::int32_t count = -1;
    ASSERT_EQ(TORVIKreadMultiple(device, 2, values.data(), 5, &count, status.data()), 1);
    EXPECT_EQ(count, 2);
    EXPECT_DOUBLE_EQ(values[0], 2 * int16Scale);
    EXPECT_DOUBLE_EQ(values[1], 4 * int16Scale);
    EXPECT_THAT(status, ElementsAre(0xF, 0x8, 99, 99, 99));
    EXPECT_EQ(waiting(1), 2);
    EXPECT_EQ(waiting(2), 0);
}

TEST_F(MeasuredValues, StatusOfAllChannelsFollowsTheValues) {
    activate(100, 2);
    push({valueFrame(valueId, 0, 0, int16Type, 1, 0x3), valueFrame(valueId, 1, 0, int16Type, 2, 0xF)});
    settle();
    std::array<double, 2> values{};
    std::array<std::uint32_t, 2> status{};
    std::int32_t count = -1;
    ASSERT_EQ(TORVIKreadMultiple(device, 0, values.data(), 2, &count, status.data()), 1);
    EXPECT_THAT(status, ElementsAre(0x3, 0xF));
}

TEST_F(MeasuredValues, BlockContinuesAcrossTheEndOfTheBuffer) {
    activate(4, 1);
    pushCycles(3);
    for (const double expected : {1, 2, 3})
        EXPECT_EQ(readCounts(), expected);
    for (std::int32_t i = 4; i <= 6; ++i)
        pushSet(static_cast<unsigned>(i), int16Type, {i});
    settle();
    std::array<double, 3> values{};
    std::int32_t count = 0;
    ASSERT_EQ(TORVIKreadMultiple(device, 1, values.data(), 3, &count, nullptr), 1);
    EXPECT_THAT(values, ElementsAre(DoubleEq(4 * int16Scale), DoubleEq(5 * int16Scale), DoubleEq(6 * int16Scale)));
}

TEST_F(MeasuredValues, RefusedReadsKeepWhatIsWaiting) {
    activate(100, 4);
    pushSet(0, int16Type, {1, 2, 3, 4});
    settle();
    takeWritten();
    std::array<double, 10> values{};
    double* const none = nullptr;
    std::int32_t count = 0;
    const auto refused = [](std::int32_t result) {
        EXPECT_EQ(result, -1);
        expectLastError(device, 0x30000100, parameterExceedance);
    };
    refused(TORVIKread(device, 0, values.data()));
    refused(TORVIKread(device, 9, values.data()));
    refused(TORVIKread(device, 257, values.data()));
    refused(TORVIKread(device, 1, nullptr));
    refused(TORVIKreadMultiple(device, 8, values.data(), 4, &count, nullptr));
    refused(TORVIKreadMultiple(device, 256, values.data(), 4, &count, nullptr));
    refused(TORVIKreadMultiple(device, 0, values.data(), 10, &count, nullptr));
    refused(TORVIKreadMultiple(device, 1, values.data(), 0, &count, nullptr));
    refused(TORVIKreadMultiple(device, 1, values.data(), -1, &count, nullptr));
    refused(TORVIKreadMultiple(device, 0, values.data(), -4, &count, nullptr));
    refused(TORVIKreadMultiple(device, 1, none, 4, &count, nullptr));
    refused(TORVIKreadMultiple(device, 1, values.data(), 4, nullptr, nullptr));
    refused(TORVIKreceived(device, 10, &count));
    expectNothingSent();
    EXPECT_EQ(waiting(0), 1);
}

TEST_F(MeasuredValues, InactiveDeviceIsRefused) {
    double value = 0;
    std::int32_t count = 0;
    EXPECT_EQ(TORVIKread(device, 1, &value), -1);
    expectLastError(device, 0x30000113, notInitialized);
    EXPECT_EQ(TORVIKreadMultiple(device, 1, &value, 1, &count, nullptr), -1);
    expectLastError(device, 0x30000113, notInitialized);
    EXPECT_EQ(TORVIKreceived(device, 0, &count), -1);
    expectLastError(device, 0x30000113, notInitialized);
    EXPECT_EQ(TORVIKclearDLLbuffer(device), 229);
    expectNoError(device);
}

TEST_F(MeasuredValues, ActivityIsCheckedBeforeTheChannelOfASingleRead) {
    double value = 0;
    EXPECT_EQ(TORVIKread(device, 0, &value), -1);
    expectLastError(device, 0x30000113, notInitialized);
}

TEST_F(MeasuredValues, DeviceNumberAboveThirtyNineIsRefused) {
    double value = 0;
    std::int32_t count = 0;
    for (const std::int32_t number : {40, 255}) {
        EXPECT_EQ(TORVIKread(number, 1, &value), -1);
        expectLastError(number, 0x30000100, parameterExceedance);
        EXPECT_EQ(TORVIKreadMultiple(number, 1, &value, 1, &count, nullptr), -1);
        expectLastError(number, 0x30000100, parameterExceedance);
        EXPECT_EQ(TORVIKreceived(number, 0, &count), -1);
        expectNoError(number);
        EXPECT_EQ(TORVIKclearDLLbuffer(number), 229);
        expectNoError(number);
    }
}

TEST_F(MeasuredValues, DeviceNumberCountsByItsLowEightBits) {
    activate(100, 1);
    pushSet(0, int16Type, {7});
    settle();
    double value = 0;
    ASSERT_EQ(TORVIKread(device + 256, 1, &value), 1);
    EXPECT_DOUBLE_EQ(value, 7 * int16Scale);
}

TEST_F(MeasuredValues, ReceivedTellsSmallestLargestAndSingleCounts) {
    activate(100, 2);
    pushSet(0, int16Type, {1, 2});
    pushSet(1, int16Type, {1, 2});
    settle();
    readCounts(1);
    EXPECT_EQ(waiting(0), 1);
    EXPECT_EQ(waiting(1), 1);
    EXPECT_EQ(waiting(2), 2);
    EXPECT_EQ(waiting(3), 2);
    EXPECT_EQ(waiting(9), 2);
    EXPECT_EQ(TORVIKreceived(device, 0, nullptr), 0);
}

TEST_F(MeasuredValues, DeviceWithoutChannelsHasNoSmallestCount) {
    answerWith(0x49, {0, 0, 9}, 1);
    std::uint32_t channels = 99;
    ASSERT_EQ(TORVIKactivateStd(device, &channels), -1);
    expectLastError(device, 246, "TORVIKLIB: setting active chanels failed [246]");
    EXPECT_EQ(waiting(0), 0x7FFFFFFF);
    EXPECT_EQ(waiting(1), 0);
    std::array<double, 2> values{};
    std::int32_t count = 0;
    EXPECT_EQ(TORVIKreadMultiple(device, 0, values.data(), 2, &count, nullptr), -1);
    expectLastError(device, 0x30000113, notInitialized);
}

TEST_F(MeasuredValues, ClearThrowsAwayWhatIsWaiting) {
    activate(4, 2);
    pushSet(0, int16Type, {1, 2});
    settle();
    EXPECT_EQ(TORVIKclearDLLbuffer(device), 0);
    EXPECT_EQ(waiting(9), 0);
    expectEmpty(1);
    pushSet(1, int16Type, {3, 4});
    settle();
    EXPECT_EQ(readCounts(1), 3);
    EXPECT_EQ(readCounts(2), 4);
}

TEST_F(MeasuredValues, ReadingSendsNothing) {
    activate(100, 1);
    double value = 0;
    std::int32_t count = 0;
    TORVIKread(device, 1, &value);
    TORVIKreadMultiple(device, 0, &value, 1, &count, nullptr);
    TORVIKreceived(device, 0, &count);
    TORVIKclearDLLbuffer(device);
    expectNothingSent();
}

TEST_F(MeasuredValues, StreamOfTheAmplifierArrivesWithoutGaps) {
    activate(1000, 6);
    virtualSendSets(amplifier, 50);
    settle();
    ASSERT_EQ(waiting(0), 50);
    for (std::uint64_t set = 0; set < 50; ++set) {
        for (std::uint32_t channel = 1; channel <= 6; ++channel) {
            double counts = 0;
            double value = 0;
            ASSERT_EQ(virtualValue(amplifier, channel - 1, set, &counts), 0);
            ASSERT_EQ(TORVIKread(device, channel, &value), 1);
            ASSERT_DOUBLE_EQ(value, counts * int24Scale) << "set " << set << " channel " << channel;
        }
    }
}

}  // namespace
