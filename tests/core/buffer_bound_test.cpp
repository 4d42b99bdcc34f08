// What a change of the library-wide buffer bound does to values that wait.
#include "core/buffer_bound.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <random>
#include <vector>

#include "core/measured_values.h"
#include "core/set_assembly.h"
#include "support/held_elsewhere.h"
#include "support/record_test.h"
#include "support/seed.h"
#include "support/test_clock.h"

namespace torvik {
namespace {

using namespace std::chrono_literals;
using test::HeldElsewhere;
using test::int16Type;
using test::RecordTest;
using test::runWithTimeouts;
using test::TestClock;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr double valuePerCount = 2.1 / 65535;
constexpr std::uint32_t channelsInUse = 2;

// Two channels: set n carries n in the first and 1000 + n in the second.
class BufferBound : public RecordTest {
  protected:
    void SetUp() override {
        RecordTest::SetUp();
        activate(1, {}, channelsInUse);
    }

    void takeSets(int first, int last) {
        for (int set = first; set <= last; ++set) {
            for (int channel = 0; channel < static_cast<int>(channelsInUse); ++channel)
                takeValue(static_cast<std::uint8_t>(channel), set, channel * 1000 + set);
        }
    }

    void takeValue(std::uint8_t channel, int sequence, int value) {
        const auto high = [](int number) { return static_cast<std::uint8_t>(number >> 8 & 0xFF); };
        const auto low = [](int number) { return static_cast<std::uint8_t>(number & 0xFF); };
        assembleValueFrame(record, {channel, int16Type, high(sequence), low(sequence), high(value), low(value)});
    }

    int readOne(std::uint32_t channel) {
        double value = 0;
        EXPECT_EQ(readValue(record, channel, value), 1);
        return countsOf(value);
    }

    std::vector<int> read(std::uint32_t channel, std::size_t limit = 200) {
        std::vector<double> values(limit);
        std::int32_t count = 0;
        EXPECT_GE(readChannel(record, channel, values, count, nullptr), 0);
        return countsOf(values, count);
    }

    std::vector<int> readAllChannels(std::size_t sets = 100) {
        std::vector<double> values(sets * channelsInUse);
        std::int32_t count = 0;
        EXPECT_GE(readSets(record, values, count, nullptr), 0);
        return countsOf(values, count);
    }

    std::uint64_t cleared() const { return record.valuesCleared.get() - clearedBefore_; }

    DeviceRecord& record = deviceRecord(1);

  private:
    static int countsOf(double value) { return static_cast<int>(value / valuePerCount + 0.5); }
    static std::vector<int> countsOf(const std::vector<double>& values, std::int32_t count) {
        std::vector<int> counts;
        for (std::int32_t i = 0; i < count; ++i)
            counts.push_back(countsOf(values[static_cast<std::size_t>(i)]));
        return counts;
    }

    std::uint64_t clearedBefore_ = deviceRecord(1).valuesCleared.get();
};

TEST_F(BufferBound, LoweredBelowTheWritePosition_KeepsTheOrderOfArrival) {
    allocateBuffers(record, 50);
    takeSets(1, 50);
    ASSERT_THAT(read(1, 45), testing::SizeIs(45));
    EXPECT_TRUE(setValueBufferLength(20));
    takeSets(51, 53);
    EXPECT_THAT(read(1), ElementsAre(46, 47, 48, 49, 50, 51, 52, 53));
}

TEST_F(BufferBound, RaisedOnAWrappedRing_KeepsTheOrderOfArrival) {
    allocateBuffers(record, 50);
    EXPECT_TRUE(setValueBufferLength(8));
    takeSets(1, 6);
    ASSERT_THAT(read(1), testing::SizeIs(6));
    takeSets(7, 12);
    EXPECT_TRUE(setValueBufferLength(50));
    takeSets(13, 14);
    EXPECT_THAT(read(1), ElementsAre(7, 8, 9, 10, 11, 12, 13, 14));
}

TEST_F(BufferBound, Lowered_KeepsTheNewestValuesAndCountsTheOthersAsCleared) {
    allocateBuffers(record, 8);
    takeSets(1, 7);
    EXPECT_TRUE(setValueBufferLength(4));
    EXPECT_EQ(cleared(), 6U);
    EXPECT_THAT(readAllChannels(), ElementsAre(4, 1004, 5, 1005, 6, 1006, 7, 1007));
}

TEST_F(BufferBound, RaisedBeyondTheAllocation_MovesNothing) {
    allocateBuffers(record, 4);
    takeSets(1, 3);
    readOne(1);
    takeSets(4, 5);
    const ValueBuffer& buffer = bufferOf(record, 0);
    const std::array positions = {buffer.readIndex, buffer.writeIndex, buffer.count};
    EXPECT_TRUE(setValueBufferLength(100));
    EXPECT_THAT(positions, ElementsAre(buffer.readIndex, buffer.writeIndex, buffer.count));
    EXPECT_TRUE(setValueBufferLength(4));
    EXPECT_THAT(positions, ElementsAre(buffer.readIndex, buffer.writeIndex, buffer.count));
    EXPECT_EQ(cleared(), 0U);
    EXPECT_THAT(read(1), ElementsAre(2, 3, 4, 5));
}

TEST_F(BufferBound, ChangedWhereTheUnreadValuesFitUnwrapped_MovesNothing) {
    allocateBuffers(record, 10);
    takeSets(1, 5);
    readOne(1);
    EXPECT_TRUE(setValueBufferLength(5));
    EXPECT_EQ(bufferOf(record, 0).readIndex, 1);
    EXPECT_EQ(bufferOf(record, 0).writeIndex, 5);
    EXPECT_EQ(bufferOf(record, 1).readIndex, 0);
    EXPECT_THAT(read(1), ElementsAre(2, 3, 4, 5));
}

TEST_F(BufferBound, ChangedWithChannelsReadSingly_KeepsEverySetInOneSlot) {
    allocateBuffers(record, 10);
    takeSets(1, 9);
    ASSERT_THAT(read(1, 6), testing::SizeIs(6));
    ASSERT_THAT(read(2, 1), testing::SizeIs(1));
    EXPECT_TRUE(setValueBufferLength(4));
    EXPECT_EQ(bufferOf(record, 0).writeIndex, bufferOf(record, 1).writeIndex);
    EXPECT_EQ(bufferOf(record, 0).count, 3);
    EXPECT_EQ(bufferOf(record, 1).count, 4);
    EXPECT_EQ(cleared(), 4U);
    EXPECT_THAT(read(1), ElementsAre(7, 8, 9));
    EXPECT_THAT(read(2), ElementsAre(1006, 1007, 1008, 1009));
}

TEST_F(BufferBound, ChangedAfterAnOverflow_TurnsTheOverflowOrderIntoTheOrderOfArrival) {
    allocateBuffers(record, 8);
    EXPECT_TRUE(setValueBufferLength(4));
    takeSets(1, 6);
    EXPECT_TRUE(setValueBufferLength(8));
    EXPECT_THAT(read(1), ElementsAre(3, 4, 5, 6));
    EXPECT_THAT(read(2), ElementsAre(1003, 1004, 1005, 1006));
    takeSets(7, 7);
    EXPECT_THAT(read(1), ElementsAre(7)) << "read and write position are together again";
    EXPECT_EQ(cleared(), 0U);
}

TEST_F(BufferBound, ToTheSameLengthAfterAnOverflow_KeepsTheOverflowOrder) {
    allocateBuffers(record, 4);
    takeSets(1, 6);
    EXPECT_TRUE(setValueBufferLength(6));
    EXPECT_THAT(read(1), ElementsAre(5, 6, 3, 4));
}

TEST_F(BufferBound, ChangedAfterTheNewestOfAnOverflowWasRead_DeliversItOnce) {
    allocateBuffers(record, 8);
    EXPECT_TRUE(setValueBufferLength(4));
    takeSets(1, 5);
    EXPECT_EQ(readOne(1), 5);
    EXPECT_TRUE(setValueBufferLength(8));
    EXPECT_THAT(read(1), ElementsAre(2, 3, 4));
    EXPECT_THAT(read(2), ElementsAre(1002, 1003, 1004, 1005));
}

TEST_F(BufferBound, ChangedAfterAnOverflowWasReadToItsEnd_DeliversOnlyWhatCameThen) {
    allocateBuffers(record, 8);
    EXPECT_TRUE(setValueBufferLength(4));
    takeSets(1, 5);
    ASSERT_THAT(read(1), ElementsAre(5, 2, 3, 4));
    takeSets(6, 6);
    EXPECT_TRUE(setValueBufferLength(8));
    EXPECT_THAT(read(1), ElementsAre(6));
}

TEST_F(BufferBound, ChangedAfterAnOverflow_CountsAsClearedWhatWasCountedAsWaitingInTheOldOrder) {
    allocateBuffers(record, 8);
    EXPECT_TRUE(setValueBufferLength(4));
    takeSets(1, 5);
    EXPECT_EQ(readOne(1), 5);
    EXPECT_EQ(readOne(2), 1005);
    takeSets(6, 6);
    EXPECT_TRUE(setValueBufferLength(8));
    EXPECT_THAT(readAllChannels(), ElementsAre(3, 1003, 4, 1004, 6, 1006));
    EXPECT_EQ(cleared(), 2U) << "2 and 1002, in whose place 6 and 1006 were stored";
}

TEST_F(BufferBound, ChangedOnAFullWrappedRing_DropsTheOldest) {
    allocateBuffers(record, 6);
    takeSets(1, 4);
    ASSERT_THAT(read(1), testing::SizeIs(4));
    ASSERT_THAT(read(2), testing::SizeIs(4));
    takeSets(5, 10);
    EXPECT_TRUE(setValueBufferLength(1));
    EXPECT_THAT(readAllChannels(), ElementsAre(10, 1010));
    EXPECT_EQ(cleared(), 10U);
}

TEST_F(BufferBound, Changed_LetsTheNextOverflowReplaceTheOldestUnreadValue) {
    allocateBuffers(record, 8);
    takeSets(1, 7);
    EXPECT_TRUE(setValueBufferLength(4));
    takeSets(8, 8);
    EXPECT_THAT(read(1), ElementsAre(8, 5, 6, 7));
}

TEST_F(BufferBound, Changed_KeepsTheStatusWithItsValue) {
    allocateBuffers(record, 8);
    for (std::uint8_t set = 1; set <= 6; ++set) {
        const auto status = static_cast<std::uint8_t>(int16Type | set);
        assembleValueFrame(record, {0, status, 0, set, 0, set});
        assembleValueFrame(record, {1, status, 0, set, 0, set});
    }
    EXPECT_TRUE(setValueBufferLength(3));
    std::array<double, 4> values{};
    std::array<std::uint32_t, 4> status{};
    std::int32_t count = 0;
    ASSERT_EQ(readChannel(record, 1, values, count, status.data()), 1);
    EXPECT_THAT(status, ElementsAre(4, 5, 6, 0));
}

TEST_F(BufferBound, Changed_MovesChannelsThatTheDeviceDoesNotHaveAlong) {
    allocateBuffers(record, 8);
    takeSets(1, 7);
    EXPECT_TRUE(setValueBufferLength(4));
    EXPECT_EQ(bufferOf(record, 7).count, 0);
    EXPECT_EQ(bufferOf(record, 7).writeIndex, bufferOf(record, 0).writeIndex);
    EXPECT_EQ(bufferOf(record, 7).readIndex, bufferOf(record, 0).writeIndex);
    EXPECT_THAT(read(7), IsEmpty());
}

TEST_F(BufferBound, LoweredWhereBuffersAreAbsent_LimitsTheirCounts) {
    libraryState.valueBufferLength = 8;
    takeSets(1, 6);
    EXPECT_TRUE(setValueBufferLength(4));
    EXPECT_EQ(bufferOf(record, 0).count, 4);
    EXPECT_EQ(cleared(), 4U);
    EXPECT_TRUE(setValueBufferLength(8));
    EXPECT_EQ(bufferOf(record, 0).count, 4);
}

TEST_F(BufferBound, ChangedWhileTheValuesAreLocked_StaysAsItIs) {
    allocateBuffers(record, 8);
    takeSets(1, 7);
    TestClock clock;
    {
        const HeldElsewhere held(valueMutex);
        EXPECT_FALSE(runWithTimeouts(clock, [] { return setValueBufferLength(4); }));
    }
    EXPECT_EQ(clock.elapsed(), 10000ms);
    EXPECT_EQ(libraryState.valueBufferLength, 8);
    EXPECT_THAT(read(1), ElementsAre(1, 2, 3, 4, 5, 6, 7));
}

// One channel in plain words: a slot is written and read in turn, each with a position of its own, and knows whether it
// has been read since it was written. A new length starts a new ring with what has not been read, in order of arrival.
class RingModel {
  public:
    explicit RingModel(std::size_t length) : slots_(length) {}

    void store(int value) {
        slots_[writes_++ % slots_.size()] = {value, ++arrivals_, false};
        count_ = std::min(count_ + 1, slots_.size());
    }

    int take() {
        Slot& slot = slots_[reads_++ % slots_.size()];
        slot.read = true;
        --count_;
        return slot.value;
    }

    // Result: how many are not counted as waiting any more.
    std::size_t resize(std::size_t length) {
        if (length == slots_.size()) return 0;
        std::map<int, int> unread;  // by arrival
        for (const Slot& slot : slots_) {
            if (!slot.read) unread[slot.arrival] = slot.value;
        }
        const std::size_t before = count_;
        while (unread.size() > std::min(count_, length))
            unread.erase(unread.begin());
        *this = RingModel(length, arrivals_);
        for (const auto& [arrival, value] : unread)
            store(value);
        return before - count_;
    }

    std::size_t count() const { return count_; }

  private:
    struct Slot {
        int value = 0;
        int arrival = 0;
        bool read = true;
    };

    RingModel(std::size_t length, int arrivals) : slots_(length), arrivals_(arrivals) {}

    std::vector<Slot> slots_;
    std::size_t writes_ = 0;
    std::size_t reads_ = 0;
    std::size_t count_ = 0;
    int arrivals_ = 0;
};

class RandomBounds : public BufferBound, public testing::WithParamInterface<std::size_t> {
  protected:
    void check(std::uint32_t channel, RingModel& model) {
        ASSERT_EQ(static_cast<std::size_t>(bufferOf(record, channel - 1).count), model.count());
        std::size_t limit = random_() % 5;
        while (limit-- > 0 && model.count() > 0) {
            ASSERT_EQ(readOne(channel), model.take()) << "channel " << channel;
            ++read_;
        }
    }

    std::size_t below(std::size_t limit) { return random_() % limit; }

    std::uint64_t waiting() const {
        return static_cast<std::uint64_t>(bufferOf(record, 0).count + bufferOf(record, 1).count);
    }

    std::uint64_t overwritten() const { return record.frames.read(record.staged).valuesOverwritten; }

    std::mt19937 random_;
    std::uint64_t stored_ = 0;
    std::uint64_t read_ = 0;
};

TEST_P(RandomBounds, EveryValueComesAsTheModelSays) {
    random_.seed(static_cast<std::uint32_t>(test::seed()));
    const testing::ScopedTrace trace(__FILE__, __LINE__, test::replay());
    const std::size_t allocated = GetParam();
    allocateBuffers(record, static_cast<std::int32_t>(allocated));
    std::array<RingModel, channelsInUse> models{RingModel(allocated), RingModel(allocated)};
    const std::uint64_t overwrittenBefore = overwritten();
    std::uint64_t dropped = 0;
    int set = 0;
    for (int step = 0; step < 500; ++step) {
        for (std::size_t more = below(allocated * 2); more > 0; --more) {
            set = set % 900 + 1;
            takeSets(set, set);
            for (std::size_t channel = 0; channel < channelsInUse; ++channel)
                models[channel].store(static_cast<int>(channel) * 1000 + set);
            stored_ += channelsInUse;
            if (below(3) == 0) check(1, models[0]);
            if (below(3) == 0) check(2, models[1]);
            if (HasFatalFailure()) return;
        }
        const std::size_t bound = 1 + below(allocated * 3 / 2);
        ASSERT_TRUE(setValueBufferLength(static_cast<std::int32_t>(bound)));
        for (RingModel& model : models)
            dropped += model.resize(std::min(bound, allocated));
        ASSERT_EQ(cleared(), dropped);
        ASSERT_EQ(bufferOf(record, 0).writeIndex, bufferOf(record, 1).writeIndex);
        ASSERT_EQ(stored_, read_ + waiting() + dropped + overwritten() - overwrittenBefore);
    }
}

INSTANTIATE_TEST_SUITE_P(Allocations, RandomBounds, testing::Values(1, 2, 3, 7, 16));

}  // namespace
}  // namespace torvik
