// Every frame of a device ends in exactly one counter.
#include <map>
#include <vector>

#include "core/buffer_bound.h"
#include "core/measured_values.h"
#include "core/set_assembly.h"
#include "core/transaction.h"
#include "support/held_elsewhere.h"
#include "support/record_test.h"
#include "support/test_clock.h"

namespace torvik {
namespace {

using test::HeldElsewhere;
using test::int16Type;
using test::RecordTest;
using test::runWithTimeouts;
using test::TestClock;
using test::given::deviceNo;

class FrameCountersTest : public RecordTest {
  protected:
    void SetUp() override {
        RecordTest::SetUp();
        amplifier(3);
        // Ends what an earlier test has left in assembly.
        assembleValueFrame(record, {8});
        before_ = read();
    }

    static void amplifier(std::uint32_t channels, std::int32_t bufferLength = 8) {
        activate(deviceNo, {}, channels);
        allocateBuffers(deviceRecord(deviceNo), bufferLength);
    }

    void take(std::uint8_t channelIndex, std::uint8_t sequence) {
        ++taken_;
        assembleValueFrame(record, {channelIndex, int16Type, 0, sequence, 0, 1});
    }

    void takeSet(std::uint8_t sequence, std::uint8_t channels = 3) {
        for (std::uint8_t channel = 0; channel < channels; ++channel)
            take(channel, sequence);
    }

    void takeAnswers(int count) {
        for (int i = 0; i < count; ++i, ++taken_)
            ASSERT_TRUE(storeAnswer(record, record.setUpCount, {}));
    }

    static FrameCounts read() { return deviceRecord(deviceNo).frames.read(deviceRecord(deviceNo).staged); }

    // What has been counted since the beginning of the test.
    FrameCounts counted() const {
        FrameCounts now = read();
        now.routed -= before_.routed;
        for (std::size_t i = 0; i < frameEndCount; ++i)
            now.ends[i] -= before_.ends[i];
        return now;
    }

    // All frames taken have ended so, and no other.
    void expectEnds(const std::map<FrameEnd, std::uint64_t>& expected, std::uint64_t inAssembly = 0) const {
        const FrameCounts counts = counted();
        for (std::size_t i = 0; i < frameEndCount; ++i) {
            const auto found = expected.find(static_cast<FrameEnd>(i));
            EXPECT_EQ(counts.ends[i], found == expected.end() ? 0 : found->second) << "end " << i;
        }
        EXPECT_EQ(counts.inAssembly, inAssembly);
        EXPECT_EQ(counts.routed, taken_);
        EXPECT_EQ(counts.routed, counts.inAssembly + counts.sumOfEnds());
    }

    std::uint64_t since(std::uint64_t FrameCounts::*count) const { return read().*count - before_.*count; }

    DeviceRecord& record = deviceRecord(deviceNo);

  private:
    FrameCounts before_;
    std::uint64_t taken_ = 0;
};

TEST_F(FrameCountersTest, CountsTheFramesOfAStoredSet) {
    takeSet(1);
    expectEnds({{FrameEnd::stored, 3}});
    EXPECT_EQ(since(&FrameCounts::setsStored), 1U);
}

TEST_F(FrameCountersTest, KeepsFramesInAssemblyUntilTheirSetEnds) {
    take(0, 1);
    take(1, 1);
    expectEnds({}, 2);
    take(2, 1);
    expectEnds({{FrameEnd::stored, 3}});
}

TEST_F(FrameCountersTest, CountsASetWithAMissingFrameWhenTheNextBegins) {
    take(0, 1);
    take(2, 1);
    take(0, 2);
    expectEnds({{FrameEnd::incompleteSet, 2}}, 1);
    EXPECT_EQ(since(&FrameCounts::setsIncomplete), 1U);
}

TEST_F(FrameCountersTest, CountsASetBrokenByAnotherSequenceNumberWithTheFrameThatBrokeIt) {
    take(0, 1);
    take(1, 1);
    take(2, 2);
    take(1, 2);
    expectEnds({{FrameEnd::brokenSet, 3}, {FrameEnd::outsideSet, 1}});
    EXPECT_EQ(since(&FrameCounts::setsBroken), 1U);
}

TEST_F(FrameCountersTest, CountsFramesWhoseFirstFrameIsMissing) {
    take(1, 1);
    take(2, 1);
    expectEnds({{FrameEnd::outsideSet, 2}});
}

TEST_F(FrameCountersTest, CountsChannelIndicesFromEightOn) {
    take(0, 1);
    take(8, 1);
    take(15, 1);
    expectEnds({{FrameEnd::wrongChannel, 2}}, 1);
}

TEST_F(FrameCountersTest, CountsFramesBeforeTheNumberOfChannelsIsKnown) {
    record.activeChannels = 0;
    takeSet(1);
    expectEnds({{FrameEnd::noChannelCount, 3}});
}

TEST_F(FrameCountersTest, ASetWhoseFirstFrameCameTooEarlyIsNotCountedAsBegun) {
    record.activeChannels = 0;
    take(0, 1);
    record.activeChannels = 3;
    take(1, 1);
    take(2, 1);
    take(0, 2);
    expectEnds({{FrameEnd::noChannelCount, 1}, {FrameEnd::outsideSet, 2}}, 1);
    EXPECT_EQ(since(&FrameCounts::setsIncomplete), 0U);
}

TEST_F(FrameCountersTest, CountsARepeatedFrameAndTheValueThatItLeavesOut) {
    take(0, 1);
    take(1, 1);
    take(1, 1);
    take(2, 1);
    expectEnds({{FrameEnd::stored, 2}, {FrameEnd::replaced, 1}, {FrameEnd::outsideSet, 1}});
    EXPECT_EQ(since(&FrameCounts::valuesStale), 1U);
    EXPECT_EQ(since(&FrameCounts::setsStored), 1U);
}

TEST_F(FrameCountersTest, CountsAFrameBehindTheLastChannel) {
    take(0, 1);
    take(5, 1);
    take(1, 1);
    expectEnds({{FrameEnd::stored, 2}, {FrameEnd::beyondChannels, 1}});
    EXPECT_EQ(since(&FrameCounts::valuesStale), 1U);
}

TEST_F(FrameCountersTest, CountsASetThatMetLockedValues) {
    TestClock clock;
    {
        const HeldElsewhere held(valueMutex);
        runWithTimeouts(clock, [this] {
            takeSet(1);
            return 0;
        });
    }
    takeSet(2);
    expectEnds({{FrameEnd::lockedSet, 3}, {FrameEnd::stored, 3}});
    EXPECT_EQ(since(&FrameCounts::setsLocked), 1U);
    EXPECT_EQ(since(&FrameCounts::setsIncomplete), 0U);
}

TEST_F(FrameCountersTest, CountsASetWhoseDeviceWasReleased) {
    take(0, 1);
    take(1, 1);
    deactivate(deviceNo);
    take(2, 1);
    expectEnds({{FrameEnd::releasedSet, 3}});
    EXPECT_EQ(since(&FrameCounts::setsReleased), 1U);
}

TEST_F(FrameCountersTest, CountsABegunSetOfADeviceThatIsSetUpAgain) {
    take(0, 1);
    ASSERT_TRUE(zeroRecord(record));
    expectEnds({}, 1);
    amplifier(3);
    takeSet(2);
    expectEnds({{FrameEnd::releasedSet, 1}, {FrameEnd::stored, 3}});
    EXPECT_EQ(since(&FrameCounts::sequenceJumps), 0U);
}

TEST_F(FrameCountersTest, CountsAnswers) {
    takeAnswers(3);
    expectEnds({{FrameEnd::answerStored, 3}});
    EXPECT_EQ(since(&FrameCounts::answersOverwritten), 0U);
}

TEST_F(FrameCountersTest, AnswerOfAnEarlierSetUp_IsNeitherStoredNorCountedAsStored) {
    const std::uint32_t earlier = record.setUpCount;
    ASSERT_TRUE(zeroRecord(record));
    amplifier(3);
    EXPECT_FALSE(storeAnswer(record, earlier, {}));
    EXPECT_EQ(record.answerCount, 0U);
    expectEnds({});
}

TEST_F(FrameCountersTest, CountsAnswersThatReplaceUntakenOnes) {
    takeAnswers(66);
    expectEnds({{FrameEnd::answerStored, 66}});
    EXPECT_EQ(since(&FrameCounts::answersOverwritten), 2U);
}

TEST_F(FrameCountersTest, CountsAnswersTakenAndThrownAway) {
    const std::uint64_t takenBefore = record.answersTaken.get();
    const std::uint64_t discardedBefore = record.answersDiscarded.get();
    takeAnswers(3);
    std::array<std::uint8_t, 8> answer{};
    std::uint8_t length = 0;
    ASSERT_EQ(receiveAnswer(deviceNo, answer.data(), &length), 0);
    EXPECT_EQ(record.answersTaken.get() - takenBefore, 1U);
    ASSERT_TRUE(zeroRecord(record));
    EXPECT_EQ(record.answersDiscarded.get() - discardedBefore, 2U);
}

TEST_F(FrameCountersTest, CountsEveryValueOverwrittenUnread) {
    amplifier(3, 4);
    for (std::uint8_t sequence = 1; sequence <= 6; ++sequence)
        takeSet(sequence);
    EXPECT_EQ(since(&FrameCounts::valuesOverwritten), 6U);
    double value = 0;
    ASSERT_EQ(readValue(record, 1, value), 1);
    takeSet(7);
    EXPECT_EQ(since(&FrameCounts::valuesOverwritten), 8U);
}

TEST_F(FrameCountersTest, CountsValuesThrownAwayUnread) {
    const std::uint64_t before = record.valuesCleared.get();
    takeSet(1);
    takeSet(2);
    ASSERT_TRUE(clearValueBuffers(record));
    EXPECT_EQ(record.valuesCleared.get() - before, 6U);
    takeSet(3);
    takeSet(4);
    setValueBufferLength(1);
    EXPECT_EQ(record.valuesCleared.get() - before, 9U);
    ASSERT_TRUE(zeroRecord(record));
    EXPECT_EQ(record.valuesCleared.get() - before, 12U);
}

TEST_F(FrameCountersTest, CountsTheSetsThatAreMissingByTheirNumbers) {
    takeSet(1);
    takeSet(2);
    EXPECT_EQ(since(&FrameCounts::sequenceJumps), 0U);
    takeSet(6);
    EXPECT_EQ(since(&FrameCounts::sequenceJumps), 1U);
    EXPECT_EQ(since(&FrameCounts::setsMissing), 3U);
}

TEST_F(FrameCountersTest, NothingIsMissingWhereTheNumbersRunOver) {
    const auto takeSetOf = [this](std::uint16_t sequence) {
        for (std::uint8_t channel = 0; channel < 3; ++channel) {
            assembleValueFrame(record, {channel, int16Type, static_cast<std::uint8_t>(sequence >> 8),
                                        static_cast<std::uint8_t>(sequence & 0xFF)});
        }
    };
    takeSetOf(0xFFFF);
    takeSetOf(0);
    EXPECT_EQ(since(&FrameCounts::sequenceJumps), 0U);
    takeSetOf(0xFFFF);
    EXPECT_EQ(since(&FrameCounts::sequenceJumps), 1U);
    EXPECT_EQ(since(&FrameCounts::setsMissing), 0U);
}

}  // namespace
}  // namespace torvik
