// Reading what complete sets have left in the buffers.
#include <gmock/gmock.h>

#include <array>
#include <vector>

#include "core/measured_values.h"
#include "core/set_assembly.h"
#include "support/record_test.h"

namespace torvik {
namespace {

using test::int16Type;
using test::RecordTest;
using testing::ElementsAre;

constexpr std::int32_t bufferLength = 8;
constexpr double int16Scale = 2.1 / 65535;
constexpr double untouched = 77.0;

// Two channels: set n carries n counts in the first and 100 + n in the second, and n as its status.
class StoredValues : public RecordTest {
  protected:
    void SetUp() override {
        RecordTest::SetUp();
        activate(1, {}, 2);
        allocateBuffers(record, bufferLength);
    }

    void takeSets(std::uint8_t first, std::uint8_t last) {
        for (std::uint8_t set = first; set <= last; ++set) {
            const auto type = static_cast<std::uint8_t>(int16Type | set);
            assembleValueFrame(record, {0, type, 0, set, 0, set});
            assembleValueFrame(record, {1, type, 0, set, 0, static_cast<std::uint8_t>(100 + set)});
        }
    }

    // The counts behind the first `count` values.
    static std::vector<int> countsOf(std::span<const double> values, std::int32_t count) {
        std::vector<int> counts;
        for (const double value : values.first(static_cast<std::size_t>(count)))
            counts.push_back(static_cast<int>(value / int16Scale + 0.5));
        return counts;
    }

    std::vector<int> readBlock(std::uint32_t channel) {
        values.fill(untouched);
        status.fill(0);
        EXPECT_EQ(readChannel(record, channel, values, count, status.data()), 1);
        EXPECT_EQ(bufferOf(record, channel - 1).count, 0);
        return countsRead();
    }

    std::vector<int> readAllChannels() {
        values.fill(untouched);
        EXPECT_EQ(readSets(record, values, count, status.data()), 1);
        return countsRead();
    }

    std::vector<int> countsRead() const {
        EXPECT_EQ(values[static_cast<std::size_t>(count)], untouched);
        return countsOf(values, count);
    }

    std::uint64_t overwritten() const { return record.frames.read(record.staged).valuesOverwritten; }

    DeviceRecord& record = deviceRecord(1);
    std::array<double, 16> values{};
    std::array<std::uint32_t, 16> status{};
    std::int32_t count = 0;
    double value = 5.0;
};

TEST_F(StoredValues, OfAChannelAreReadInOrderWithTheirStatus) {
    takeSets(1, 7);
    EXPECT_THAT(readBlock(1), ElementsAre(1, 2, 3, 4, 5, 6, 7));
    EXPECT_THAT(std::span(status).first(8), ElementsAre(1, 2, 3, 4, 5, 6, 7, 0));
    status[3] = 99;
    takeSets(8, 10);
    ASSERT_EQ(readChannel(record, 1, values, count, status.data()), 1);
    EXPECT_EQ(status[3], 99U);
}

TEST_F(StoredValues, OfTheOtherChannelStayWhenOneIsRead) {
    takeSets(1, 5);
    EXPECT_THAT(readBlock(1), ElementsAre(1, 2, 3, 4, 5));
    EXPECT_THAT(readBlock(2), ElementsAre(101, 102, 103, 104, 105));
}

TEST_F(StoredValues, AreReadAcrossTheEndOfTheRing) {
    takeSets(1, 5);
    readBlock(1);
    takeSets(6, 12);
    EXPECT_THAT(readBlock(1), ElementsAre(6, 7, 8, 9, 10, 11, 12));
    EXPECT_THAT(std::span(status).first(8), ElementsAre(6, 7, 8, 9, 10, 11, 12, 0));
}

TEST_F(StoredValues, OfAllChannelsAreReadSetBySet) {
    takeSets(1, 3);
    EXPECT_THAT(readAllChannels(), ElementsAre(1, 101, 2, 102, 3, 103));
    EXPECT_THAT(std::span(status).first(7), ElementsAre(1, 1, 2, 2, 3, 3, 0));
}

TEST_F(StoredValues, OfAllChannelsAreReadAcrossTheEndOfTheRing) {
    takeSets(1, 6);
    readAllChannels();
    takeSets(7, 10);
    EXPECT_THAT(readAllChannels(), ElementsAre(7, 107, 8, 108, 9, 109, 10, 110));
    EXPECT_THAT(std::span(status).first(8), ElementsAre(7, 7, 8, 8, 9, 9, 10, 10));
}

TEST_F(StoredValues, AreReadOneByOne) {
    takeSets(1, 2);
    ASSERT_EQ(readValue(record, 2, value), 1);
    EXPECT_DOUBLE_EQ(value, 101 * int16Scale);
    ASSERT_EQ(readValue(record, 2, value), 1);
    EXPECT_DOUBLE_EQ(value, 102 * int16Scale);
    EXPECT_EQ(readValue(record, 2, value), 0);
    EXPECT_EQ(value, 0.0);
}

TEST_F(StoredValues, AreReadOneByOneAcrossTheEndOfTheRing) {
    takeSets(1, 8);
    for (int set = 1; set <= 8; ++set)
        ASSERT_EQ(readValue(record, 1, value), 1);
    takeSets(9, 9);
    ASSERT_EQ(readValue(record, 1, value), 1);
    EXPECT_DOUBLE_EQ(value, 9 * int16Scale);
}

TEST_F(StoredValues, AreCountedByChannelAndAsCompleteSets) {
    takeSets(1, 3);
    ASSERT_EQ(readValue(record, 1, value), 1);
    const auto waiting = [&](std::uint32_t channel) {
        EXPECT_TRUE(countValues(record, channel, count));
        return count;
    };
    EXPECT_EQ(waiting(0), 2);
    EXPECT_EQ(waiting(1), 2);
    EXPECT_EQ(waiting(2), 3);
    EXPECT_EQ(waiting(3), 3) << "of a channel that the device does not have: the most that any has";
}

TEST_F(StoredValues, AreTheNewestOnesWhenTheRingIsFull) {
    const std::uint64_t before = overwritten();
    takeSets(1, 11);
    EXPECT_THAT(readBlock(2), testing::SizeIs(bufferLength));
    EXPECT_EQ(overwritten() - before, 6U);
}

}  // namespace
}  // namespace torvik
