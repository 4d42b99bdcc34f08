// What TORVIKgetStatistics tells.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <thread>

#include "TORVIKstatistics.h"
#include "support/bench_fixture.h"

namespace {

using namespace torvik::test;

TORVIKstatistics statisticsOf(std::int32_t deviceNo) {
    TORVIKstatistics statistics{};
    statistics.size = sizeof statistics;
    EXPECT_EQ(TORVIKgetStatistics(deviceNo, &statistics), 0);
    EXPECT_EQ(statistics.size, sizeof statistics);
    return statistics;
}

std::uint64_t endsOf(const TORVIKstatistics& s) {
    return s.framesInAssembly + s.framesStored + s.answersStored + s.answersNotStored + s.commandFrames +
           s.framesWrongChannel + s.framesNoChannelCount + s.framesOutsideSet + s.framesOfIncompleteSets +
           s.framesOfBrokenSets + s.framesOfLockedSets + s.framesOfReleasedSets + s.framesReplaced +
           s.framesBeyondChannels;
}

class Statistics : public Bench {
  protected:
    void SetUp() override {
        Bench::SetUp();
        // The counts of the adapter begin here.
        handedOutBefore_ = handedOut();
        before_ = statisticsOf(device);
        receivedBefore_ = before_.framesReceived;
    }

    static std::uint64_t handedOut() {
        VirtualCounters counters{};
        virtualGetCounters(&counters);
        return counters.framesRead;
    }

    static void expectInvariant() {
        const TORVIKstatistics one = statisticsOf(device);
        EXPECT_EQ(one.framesRouted, endsOf(one));
        const TORVIKstatistics all = statisticsOf(0);
        EXPECT_EQ(all.framesReceived, all.framesRouted + all.framesWithoutDevice + all.framesNotRouted);
    }

    // The library has counted as many frames as the adapter.
    void expectAllCounted() const {
        EXPECT_EQ(statisticsOf(0).framesReceived - receivedBefore_, handedOut() - handedOutBefore_);
    }

    std::uint64_t since(std::uint64_t TORVIKstatistics::*count) const {
        return statisticsOf(device).*count - before_.*count;
    }

    // Whether it does so within two seconds: the receive thread reads when it is woken.
    bool countRises(std::uint64_t TORVIKstatistics::*count) const {
        for (int i = 0; i < 2000 && since(count) == 0; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return since(count) != 0;
    }

    // Counts from here on.
    void begin() { before_ = statisticsOf(device); }

  private:
    TORVIKstatistics before_{};
    std::uint64_t receivedBefore_ = 0;
    std::uint64_t handedOutBefore_ = 0;
};

TEST_F(Statistics, TellsEveryFrameOfAStream) {
    activate(1000, 6);
    begin();
    virtualSendSets(amplifier, 50);
    settle();
    EXPECT_EQ(since(&TORVIKstatistics::setsStored), 50u);
    EXPECT_EQ(since(&TORVIKstatistics::framesStored), 300u);
    EXPECT_EQ(since(&TORVIKstatistics::framesRouted), 301u);
    EXPECT_EQ(since(&TORVIKstatistics::answersStored), 1u);
    EXPECT_EQ(since(&TORVIKstatistics::answersTaken), 1u);
    expectInvariant();
    expectAllCounted();
}

TEST_F(Statistics, TellsALostFrameAndADoubledOne) {
    activate(1000, 6);
    virtualSendSets(amplifier, 1);
    settle();
    begin();
    virtualSkipFrame(amplifier, 3, 1);
    virtualSendSets(amplifier, 2);
    settle();
    EXPECT_EQ(since(&TORVIKstatistics::setsIncomplete), 1u);
    EXPECT_EQ(since(&TORVIKstatistics::framesOfIncompleteSets), 5u);
    EXPECT_EQ(since(&TORVIKstatistics::setsStored), 1u);
    EXPECT_EQ(since(&TORVIKstatistics::setsMissing), 1u);
    virtualRepeatFrame(amplifier, 2, 1);
    virtualSendSets(amplifier, 1);
    settle();
    EXPECT_EQ(since(&TORVIKstatistics::framesReplaced), 1u);
    EXPECT_EQ(since(&TORVIKstatistics::valuesStale), 1u);
    EXPECT_EQ(since(&TORVIKstatistics::framesOutsideSet), 1u);
    expectInvariant();
    expectAllCounted();
}

TEST_F(Statistics, TellsFramesDroppedForEveryReasonThatFramesThemselvesGive) {
    activate(1000, 2);
    begin();
    push({valueFrame(valueId, 0, 1, int16Type, 1), valueFrame(valueId, 1, 2, int16Type, 1),  // broken
          valueFrame(valueId, 1, 2, int16Type, 1),                                           // outside
          valueFrame(valueId, 8, 2, int16Type, 1),                                           // wrong channel
          valueFrame(valueId, 0, 3, int16Type, 1), valueFrame(valueId, 7, 3, int16Type, 1),  // beyond the channels
          valueFrame(0x555, 0, 3, int16Type, 1),                                             // nobody's
          VirtualFrame{answerId, 0, 2, {0x80, 0x26}}});                                      // command
    settle();
    EXPECT_EQ(since(&TORVIKstatistics::framesOfBrokenSets), 2u);
    EXPECT_EQ(since(&TORVIKstatistics::setsBroken), 1u);
    EXPECT_EQ(since(&TORVIKstatistics::framesOutsideSet), 1u);
    EXPECT_EQ(since(&TORVIKstatistics::framesWrongChannel), 1u);
    EXPECT_EQ(since(&TORVIKstatistics::framesBeyondChannels), 1u);
    EXPECT_EQ(since(&TORVIKstatistics::framesStored), 1u);
    EXPECT_EQ(since(&TORVIKstatistics::framesWithoutDevice), 1u);
    EXPECT_EQ(since(&TORVIKstatistics::commandFrames), 1u);
    expectInvariant();
    expectAllCounted();
}

TEST_F(Statistics, TellsValuesOverwrittenAndThrownAway) {
    activate(4, 2);
    begin();
    for (unsigned sequence = 0; sequence < 7; ++sequence)
        pushSet(sequence, int16Type, {1, 2});
    settle();
    EXPECT_EQ(since(&TORVIKstatistics::valuesOverwritten), 6u);
    EXPECT_EQ(TORVIKclearDLLbuffer(device), 0);
    EXPECT_EQ(since(&TORVIKstatistics::valuesCleared), 8u);
    expectInvariant();
}

TEST_F(Statistics, TellsAnswersThatNobodyTook) {
    activate();
    begin();
    push({VirtualFrame{answerId, 0, 8, {0x40, 0}}, VirtualFrame{answerId, 0, 8, {0x40, 0}}});
    settle();
    EXPECT_EQ(since(&TORVIKstatistics::answersTaken), 1u);
    EXPECT_EQ(since(&TORVIKstatistics::answersDiscarded), 0u);
    TORVIKrelease(0);
    EXPECT_EQ(since(&TORVIKstatistics::answersStored), 3u);
    EXPECT_EQ(since(&TORVIKstatistics::answersDiscarded), 2u);
}

TEST_F(Statistics, GoOnCountingThroughReleaseAndActivation) {
    activate(100, 2);
    begin();
    pushSet(0, int16Type, {1, 2});
    settle();
    TORVIKrelease(0);
    EXPECT_EQ(since(&TORVIKstatistics::setsStored), 1u);
    activate(100, 2);
    pushSet(1, int16Type, {1, 2});
    settle();
    EXPECT_EQ(since(&TORVIKstatistics::setsStored), 2u);
    expectInvariant();
    expectAllCounted();
}

TEST_F(Statistics, TellAdapterFaultsByStatus) {
    activate();
    begin();
    constexpr std::uint32_t noSuchStatus = 0x80000;
    const auto meet = [this](std::uint32_t status, std::uint64_t TORVIKstatistics::*count) {
        virtualFailCalls(VIRTUAL_READ, status, 0, 1);
        pushSet(0, int16Type, {1});
        EXPECT_TRUE(countRises(count)) << status;
    };
    meet(0x10, &TORVIKstatistics::faultsBusOff);
    meet(0x40, &TORVIKstatistics::faultsQueueOverrun);
    meet(noSuchStatus, &TORVIKstatistics::faultsOther);
    settle();
    EXPECT_EQ(since(&TORVIKstatistics::faultsBusOff), 1u);
    EXPECT_EQ(since(&TORVIKstatistics::faultsQueueOverrun), 1u);
    EXPECT_EQ(since(&TORVIKstatistics::faultsBusHeavy), 0u);
    EXPECT_EQ(since(&TORVIKstatistics::faultsOther), 1u);
    EXPECT_EQ(statisticsOf(device).lastOtherFault, noSuchStatus);
    expectInvariant();
    expectAllCounted();
}

TEST_F(Statistics, NumberZeroGivesTheSumOfAllDevices) {
    activate(100, 1);
    const TORVIKstatistics before = statisticsOf(0);
    begin();
    pushSet(0, int16Type, {1});
    settle();
    EXPECT_EQ(statisticsOf(0).framesRouted - before.framesRouted, since(&TORVIKstatistics::framesRouted));
    EXPECT_GE(statisticsOf(0).framesRouted, statisticsOf(device).framesRouted);
}

TEST_F(Statistics, NeedNoActiveDevice) {
    TORVIKstatistics statistics{};
    statistics.size = sizeof statistics;
    EXPECT_EQ(TORVIKgetStatistics(39, &statistics), 0);
    expectNoError(39);
    expectNothingSent();
}

TEST_F(Statistics, WriteOnlyAsMuchAsThereIsRoomFor) {
    std::array<std::uint64_t, sizeof(TORVIKstatistics) / 8 + 1> room{};
    for (const std::uint32_t size : {8u, 24u, 31u, static_cast<std::uint32_t>(sizeof(TORVIKstatistics) + 8)}) {
        room.fill(0xA5A5A5A5A5A5A5A5);
        std::memcpy(room.data(), &size, sizeof size);
        auto* const statistics = reinterpret_cast<TORVIKstatistics*>(room.data());
        ASSERT_EQ(TORVIKgetStatistics(device, statistics), 0);
        const std::size_t fields = std::min(size, static_cast<std::uint32_t>(sizeof(TORVIKstatistics))) / 8;
        EXPECT_EQ(statistics->size, fields * 8);
        EXPECT_NE(room[fields - 1], 0xA5A5A5A5A5A5A5A5) << size;
        EXPECT_EQ(room[fields], 0xA5A5A5A5A5A5A5A5) << size;
    }
}

TEST_F(Statistics, RefuseWhatTheyCannotFill) {
    TORVIKstatistics statistics{};
    EXPECT_EQ(TORVIKgetStatistics(device, nullptr), -1);
    expectLastError(device, 0x30000100, parameterExceedance);
    statistics.size = 7;
    EXPECT_EQ(TORVIKgetStatistics(device, &statistics), -1);
    expectLastError(device, 0x30000100, parameterExceedance);
    statistics.size = sizeof statistics;
    EXPECT_EQ(TORVIKgetStatistics(40, &statistics), -1);
    expectLastError(40, 0x30000100, parameterExceedance);
    EXPECT_EQ(statistics.framesReceived, 0u);
}

}  // namespace
