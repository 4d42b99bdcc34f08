#include "core/set_assembly.h"

#include <bit>
#include <cmath>
#include <vector>

#include "core/buffer_bound.h"
#include "core/measured_values.h"
#include "support/record_test.h"

namespace torvik {
namespace {

using test::float32Type;
using test::int16Type;
using test::int24Type;
using test::RecordTest;

constexpr std::uint64_t quietNan = 0x7FF8000000000000;

class SetAssemblyTest : public RecordTest {
  protected:
    DeviceRecord& amplifier(std::uint32_t channels, std::int32_t bufferLength = 8) {
        DeviceRecord& record = activate(1, {}, channels);
        allocateBuffers(record, bufferLength);
        return record;
    }

    static void takeInt16(DeviceRecord& record, std::uint8_t channelIndex, std::uint16_t sequence, std::int16_t value) {
        const auto bits = static_cast<std::uint16_t>(value);
        assembleValueFrame(record, {channelIndex, int16Type, high(sequence), low(sequence), high(bits), low(bits)});
    }

    static void takeSetOfOne(DeviceRecord& record, std::uint8_t type, std::array<std::uint8_t, 4> value) {
        assembleValueFrame(record, {0, type, 0, 1, value[0], value[1], value[2], value[3]});
    }

    static void takeSets(DeviceRecord& record, std::int16_t count) {
        for (std::int16_t value = 1; value <= count; ++value)
            takeInt16(record, 0, static_cast<std::uint16_t>(value), value);
    }

    static double storedValue(const DeviceRecord& record, std::size_t channelIndex, std::size_t entry = 0) {
        return bufferOf(record, channelIndex).entries[entry].value;
    }

    static std::int32_t waiting(const DeviceRecord& record, std::size_t channelIndex = 0) {
        return bufferOf(record, channelIndex).count;
    }

    // Reads channel 1 until it is empty, as raw int16 counts.
    static std::vector<int> readAll(DeviceRecord& record) {
        std::vector<int> values;
        double value = 0;
        while (readValue(record, 1, value) == 1)
            values.push_back(static_cast<int>(std::lround(value * 65535 / 2.1)));
        return values;
    }

  private:
    static std::uint8_t high(std::uint16_t word) { return static_cast<std::uint8_t>(word >> 8); }
    static std::uint8_t low(std::uint16_t word) { return static_cast<std::uint8_t>(word); }
};

TEST_F(SetAssemblyTest, StoresOneEntryInEachChannelOfACompleteSet) {
    DeviceRecord& record = amplifier(3);
    takeInt16(record, 0, 0x1234, 10);
    takeInt16(record, 1, 0x1234, 20);
    EXPECT_EQ(waiting(record), 0);
    EXPECT_FALSE(record.newValues);
    takeInt16(record, 2, 0x1234, -200);
    for (std::size_t channel = 0; channel < 3; ++channel)
        EXPECT_EQ(waiting(record, channel), 1);
    EXPECT_EQ(waiting(record, 3), 0);
    EXPECT_EQ(storedValue(record, 0), 10.0);
    EXPECT_EQ(storedValue(record, 1), 20.0);
    EXPECT_EQ(storedValue(record, 2), -200.0);
    EXPECT_TRUE(record.newValues);
}

TEST_F(SetAssemblyTest, StoresSignedSixteenBitNumbers) {
    DeviceRecord& record = amplifier(1);
    takeSetOfOne(record, int16Type, {0xFF, 0x38, 0x55, 0x55});
    EXPECT_EQ(storedValue(record, 0), -200.0);
    EXPECT_EQ(lastValueTypeOf(record), ValueType::int16);
}

TEST_F(SetAssemblyTest, StoresSignedTwentyFourBitNumbers) {
    DeviceRecord& record = amplifier(1);
    takeSetOfOne(record, int24Type, {0x80, 0x00, 0x00, 0x55});
    takeSetOfOne(record, int24Type, {0x7F, 0xFF, 0xFF, 0x55});
    EXPECT_EQ(storedValue(record, 0, 0), -8388608.0);
    EXPECT_EQ(storedValue(record, 0, 1), 8388607.0);
    EXPECT_EQ(lastValueTypeOf(record), ValueType::int24);
}

TEST_F(SetAssemblyTest, StoresFloats) {
    DeviceRecord& record = amplifier(1);
    takeSetOfOne(record, float32Type, {0xC0, 0x20, 0x00, 0x00});
    EXPECT_EQ(storedValue(record, 0), -2.5);
    EXPECT_EQ(lastValueTypeOf(record), ValueType::float32);
}

TEST_F(SetAssemblyTest, StoresAQuietNanForEveryOtherType) {
    DeviceRecord& record = amplifier(1);
    std::size_t entry = 0;
    for (const std::uint8_t type : std::to_array<std::uint8_t>({0x00, 0x40, 0x50, 0x60, 0x70})) {
        takeSetOfOne(record, type, {0x12, 0x34, 0x56, 0x78});
        EXPECT_EQ(std::bit_cast<std::uint64_t>(storedValue(record, 0, entry++)), quietNan);
        EXPECT_EQ(lastValueTypeOf(record), ValueType::unknown);
    }
}

TEST_F(SetAssemblyTest, LetsTheNextReadFailAfterAnUnknownType) {
    DeviceRecord& record = amplifier(1);
    takeSetOfOne(record, 0x00, {});
    double value = 1.0;
    EXPECT_EQ(readValue(record, 1, value), -1);
    EXPECT_EQ(record.lastError, 0x30000063U);
}

TEST_F(SetAssemblyTest, StoresTheStatusByteAsItCame) {
    DeviceRecord& record = amplifier(1);
    takeSetOfOne(record, 0x9D, {0, 7});
    EXPECT_EQ(bufferOf(record, 0).entries[0].status, 0x9D);
    EXPECT_EQ(storedValue(record, 0), 7.0);
}

TEST_F(SetAssemblyTest, TakesAZeroLengthFrameAsChannelZeroOfUnknownType) {
    DeviceRecord& record = amplifier(1);
    assembleValueFrame(record, {});
    EXPECT_EQ(waiting(record), 1);
    EXPECT_TRUE(std::isnan(storedValue(record, 0)));
    EXPECT_EQ(lastValueTypeOf(record), ValueType::unknown);
}

TEST_F(SetAssemblyTest, DoesNotLookAtBitsFourAndFiveOfTheFirstByte) {
    DeviceRecord& record = amplifier(2);
    takeInt16(record, 0x30, 1, 5);
    takeInt16(record, 0x21, 1, 6);
    EXPECT_EQ(storedValue(record, 0), 5.0);
    EXPECT_EQ(storedValue(record, 1), 6.0);
}

TEST_F(SetAssemblyTest, DropsASetWhoseSecondFrameHasAnotherSequenceNumber) {
    DeviceRecord& record = amplifier(2);
    takeInt16(record, 0, 1, 10);
    takeInt16(record, 1, 2, 20);
    takeInt16(record, 1, 1, 20);
    EXPECT_EQ(waiting(record), 0);
    takeInt16(record, 0, 3, 30);
    takeInt16(record, 1, 3, 40);
    EXPECT_EQ(waiting(record), 1);
    EXPECT_EQ(storedValue(record, 0), 30.0);
    EXPECT_EQ(storedValue(record, 1), 40.0);
}

TEST_F(SetAssemblyTest, ComparesBothBytesOfTheSequenceNumber) {
    DeviceRecord& record = amplifier(2);
    takeInt16(record, 0, 0x0105, 10);
    takeInt16(record, 1, 0x0205, 20);
    EXPECT_EQ(waiting(record), 0);
}

TEST_F(SetAssemblyTest, DropsASetWhoseFirstFrameIsLost) {
    DeviceRecord& record = amplifier(2);
    takeInt16(record, 1, 1, 20);
    EXPECT_EQ(waiting(record, 1), 0);
    takeInt16(record, 0, 2, 30);
    takeInt16(record, 1, 2, 40);
    EXPECT_EQ(waiting(record, 1), 1);
    EXPECT_EQ(storedValue(record, 1), 40.0);
}

TEST_F(SetAssemblyTest, StartsAfreshWithEveryFirstFrame) {
    DeviceRecord& record = amplifier(2);
    takeInt16(record, 0, 1, 10);
    takeInt16(record, 0, 2, 11);
    EXPECT_EQ(waiting(record), 0);
    takeInt16(record, 1, 2, 20);
    EXPECT_EQ(storedValue(record, 0), 11.0);
    EXPECT_EQ(waiting(record), 1);
}

TEST_F(SetAssemblyTest, CountsARepeatedChannelTowardsTheSet) {
    DeviceRecord& record = amplifier(3);
    takeInt16(record, 0, 1, 10);
    takeInt16(record, 1, 1, 20);
    takeInt16(record, 1, 1, 21);
    EXPECT_EQ(waiting(record, 1), 1);
    EXPECT_EQ(storedValue(record, 1), 21.0);
    EXPECT_EQ(waiting(record, 2), 1);
}

TEST_F(SetAssemblyTest, CountsAChannelBehindTheLastTowardsTheSet) {
    DeviceRecord& record = amplifier(2);
    takeInt16(record, 0, 1, 10);
    takeInt16(record, 7, 1, 70);
    EXPECT_EQ(waiting(record), 1);
    EXPECT_EQ(waiting(record, 7), 0);
}

TEST_F(SetAssemblyTest, DropsChannelIndicesFromEightOn) {
    DeviceRecord& record = amplifier(2);
    takeInt16(record, 0, 1, 10);
    for (std::uint8_t channelIndex = 8; channelIndex < 16; ++channelIndex)
        takeInt16(record, channelIndex, 1, 99);
    EXPECT_EQ(waiting(record), 0);
    takeInt16(record, 1, 1, 20);
    EXPECT_EQ(waiting(record), 1);
    EXPECT_EQ(storedValue(record, 1), 20.0);
}

TEST_F(SetAssemblyTest, AChannelIndexFromEightOnDoesNotEndTheSetByItsSequenceNumber) {
    DeviceRecord& record = amplifier(2);
    takeInt16(record, 0, 1, 10);
    takeInt16(record, 8, 2, 99);
    takeInt16(record, 1, 1, 20);
    EXPECT_EQ(waiting(record), 1);
}

TEST_F(SetAssemblyTest, StoresAllEightChannels) {
    DeviceRecord& record = amplifier(8);
    for (std::uint8_t channelIndex = 0; channelIndex < 8; ++channelIndex)
        takeInt16(record, channelIndex, 1, static_cast<std::int16_t>(channelIndex + 1));
    for (std::size_t channelIndex = 0; channelIndex < 8; ++channelIndex)
        EXPECT_EQ(storedValue(record, channelIndex), static_cast<double>(channelIndex + 1));
}

TEST_F(SetAssemblyTest, DropsEverythingWhileTheNumberOfChannelsIsUnknown) {
    DeviceRecord& record = amplifier(0);
    takeSets(record, 3);
    EXPECT_EQ(waiting(record), 0);
    EXPECT_FALSE(record.newValues);
}

TEST_F(SetAssemblyTest, ForgetsABegunSetWhenTheRecordIsSetUpAgain) {
    takeInt16(amplifier(2), 0, 1, 10);
    ASSERT_TRUE(zeroRecord(deviceRecord(1)));
    DeviceRecord& record = amplifier(2);
    takeInt16(record, 1, 1, 20);
    EXPECT_EQ(waiting(record), 0);
}

TEST_F(SetAssemblyTest, StoresNothingInARecordThatIsTakenDown) {
    DeviceRecord& record = amplifier(2);
    takeInt16(record, 0, 1, 10);
    deactivate(1);
    takeInt16(record, 1, 1, 20);
    EXPECT_EQ(waiting(record), 0);
}

TEST_F(SetAssemblyTest, GoesOnCountingWhereABufferIsAbsent) {
    DeviceRecord& record = activate(1, {}, 1);
    libraryState.valueBufferLength = 4;
    takeSets(record, 3);
    EXPECT_EQ(waiting(record), 3);
    EXPECT_EQ(bufferOf(record, 0).writeIndex, 3);
    double value = 1.0;
    EXPECT_EQ(readValue(record, 1, value), -1);
    EXPECT_EQ(record.lastError, 0x30000106U);
}

TEST_F(SetAssemblyTest, GivesTheNewestFirstAfterOneSetTooMany) {
    DeviceRecord& record = amplifier(1, 4);
    takeSets(record, 5);
    EXPECT_EQ(waiting(record), 4);
    EXPECT_EQ(readAll(record), (std::vector<int>{5, 2, 3, 4}));
}

TEST_F(SetAssemblyTest, GivesTheTwoNewestFirstAfterTwoSetsTooMany) {
    DeviceRecord& record = amplifier(1, 4);
    takeSets(record, 6);
    EXPECT_EQ(readAll(record), (std::vector<int>{5, 6, 3, 4}));
}

TEST_F(SetAssemblyTest, LeavesReadAndWritePositionApartAfterAnOverflow) {
    DeviceRecord& record = amplifier(1, 4);
    takeSets(record, 5);
    readAll(record);
    takeInt16(record, 0, 9, 9);
    EXPECT_EQ(readAll(record), (std::vector<int>{5}));
}

TEST_F(SetAssemblyTest, AFullBufferThatDoesNotOverflowKeepsTheOrder) {
    DeviceRecord& record = amplifier(1, 4);
    takeSets(record, 4);
    EXPECT_EQ(readAll(record), (std::vector<int>{1, 2, 3, 4}));
}

TEST_F(SetAssemblyTest, ABufferOfOneKeepsTheNewestValue) {
    DeviceRecord& record = amplifier(1, 1);
    for (std::int16_t value = 1; value <= 3; ++value) {
        takeInt16(record, 0, 1, value);
        EXPECT_EQ(waiting(record), 1);
        EXPECT_EQ(storedValue(record, 0), value);
    }
    EXPECT_EQ(readAll(record), (std::vector<int>{3}));
}

TEST_F(SetAssemblyTest, ALargerBoundLaterDoesNotReachBeyondAnEarlierAllocation) {
    DeviceRecord& record = amplifier(1, 2);
    setValueBufferLength(100);
    takeSets(record, 5);
    EXPECT_EQ(waiting(record), 2);
    EXPECT_LE(bufferOf(record, 0).writeIndex, 2);
    EXPECT_EQ(readAll(record), (std::vector<int>{5, 4}));
}

TEST_F(SetAssemblyTest, ASmallerBoundLaterLimitsWhatIsWaiting) {
    DeviceRecord& record = amplifier(1, 4);
    takeSets(record, 4);
    setValueBufferLength(2);
    EXPECT_EQ(waiting(record), 2);
    takeInt16(record, 0, 1, 9);
    EXPECT_EQ(waiting(record), 2);
    EXPECT_EQ(storedValue(record, 0), 9.0);
}

}  // namespace
}  // namespace torvik
