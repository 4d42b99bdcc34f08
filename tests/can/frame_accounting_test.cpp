// The frame-accounting invariant: every frame that the adapter hands out is counted once, for the device it belongs to
// and for what became of it. The expected counts come from the frames sent.
#include <gmock/gmock.h>

#include <map>
#include <random>

#include "can/receive_thread.h"
#include "support/expected_counts.h"
#include "support/fake_adapter.h"
#include "support/held_elsewhere.h"
#include "support/record_test.h"
#include "support/seed.h"
#include "support/test_clock.h"

namespace torvik {
namespace {

using test::countsBetween;
using test::differences;
using test::endsOf;
using test::ExpectedDevice;
using test::FakeAdapter;
using test::HeldElsewhere;
using test::RecordTest;
using test::runWithTimeouts;
using test::statisticsOf;
using test::TestClock;
using testing::IsEmpty;

constexpr std::uint32_t answerIdOf(std::uint8_t deviceNo) {
    return 0x200U + 16U * deviceNo;
}
constexpr std::uint32_t valueIdOf(std::uint8_t deviceNo) {
    return answerIdOf(deviceNo) + 1;
}

// Three devices with 1, 3 and 8 channels.
class FrameAccounting : public RecordTest {
  protected:
    void SetUp() override {
        RecordTest::SetUp();
        for (const auto& [deviceNo, channels] : std::map<std::uint8_t, std::uint32_t>{{5, 1}, {6, 3}, {38, 8}}) {
            activate(deviceNo,
                     {.command = 0x700U + deviceNo, .answer = answerIdOf(deviceNo), .value = valueIdOf(deviceNo)},
                     channels);
            allocateBuffers(deviceRecord(deviceNo), 4);
            startAfresh(deviceNo);
            expected.emplace(deviceNo, channels);
            before_[deviceNo] = statisticsOf(deviceNo);
        }
        before_[0] = statisticsOf(0);
    }

    // Sends a frame to the library, and to the device it is for.
    void send(std::uint32_t identifier, const std::array<std::uint8_t, 8>& data) {
        adapter.queueFrame(identifier, data);
        ++sent_;
        for (auto& [deviceNo, device] : expected) {
            if (identifier != answerIdOf(deviceNo) && identifier != valueIdOf(deviceNo)) continue;
            device.take(data);
            return;
        }
        ++withoutDevice_;
    }

    TORVIKstatistics counted(std::uint8_t deviceNo) const {
        return countsBetween(before_.at(deviceNo), statisticsOf(deviceNo));
    }

    void expectEveryCount() const {
        for (const auto& [deviceNo, device] : expected) {
            EXPECT_THAT(differences(device.counts(), counted(deviceNo)), IsEmpty()) << "device " << int{deviceNo};
            EXPECT_EQ(counted(deviceNo).framesRouted, endsOf(counted(deviceNo))) << "device " << int{deviceNo};
        }
        expectAdapterCounts(sent_, withoutDevice_, 0);
    }

    void expectAdapterCounts(std::uint64_t received, std::uint64_t withoutDevice, std::uint64_t notRouted) const {
        const TORVIKstatistics all = counted(0);
        EXPECT_EQ(all.framesReceived, received);
        EXPECT_EQ(all.framesWithoutDevice, withoutDevice);
        EXPECT_EQ(all.framesNotRouted, notRouted);
        EXPECT_EQ(all.framesRouted, received - withoutDevice - notRouted);
    }

    FakeAdapter& adapter = FakeAdapter::instance();
    std::map<std::uint8_t, ExpectedDevice> expected;

  private:
    // A new set-up leaves nothing of earlier tests in assembly once a frame has come.
    void startAfresh(std::uint8_t deviceNo) {
        adapter.queueFrame(valueIdOf(deviceNo), {0x08});
        ASSERT_EQ(drainReceiveQueue(), 0);
    }

    std::map<std::uint8_t, TORVIKstatistics> before_;
    std::uint64_t sent_ = 0;
    std::uint64_t withoutDevice_ = 0;
};

TEST_F(FrameAccounting, FramesOfEveryKind_AreCountedForWhatBecameOfThem) {
    send(answerIdOf(5), {0x40});
    send(valueIdOf(5), {0x00, 0x10, 0, 1, 0, 7});
    send(valueIdOf(5), {0x01, 0x10, 0, 1, 0, 7});
    send(answerIdOf(5), {0x80});
    send(valueIdOf(6), {0x3F});
    send(0x333, {0x40});
    send(0x12345678, {0x00});
    EXPECT_EQ(drainReceiveQueue(), 0);
    expectEveryCount();
    EXPECT_EQ(counted(5).answersStored, 1U);
    EXPECT_EQ(counted(5).framesStored, 1U);
    EXPECT_EQ(counted(5).framesOutsideSet, 1U);
    EXPECT_EQ(counted(5).commandFrames, 1U);
    EXPECT_EQ(counted(6).framesWrongChannel, 1U);
    EXPECT_EQ(counted(38).framesRouted, 0U);
    expectAdapterCounts(7, 2, 0);
}

TEST_F(FrameAccounting, RandomFrames_AreCountedForWhatBecameOfThem) {
    const testing::ScopedTrace trace(__FILE__, __LINE__, test::replay());
    std::mt19937 random(static_cast<std::uint32_t>(test::seed()));
    const auto below = [&random](unsigned limit) { return static_cast<unsigned>(random() % limit); };
    constexpr std::uint8_t devices[] = {5, 6, 38};
    std::map<std::uint8_t, unsigned> next;  // frame of each device's stream: three of a set, then the next set
    for (int round = 0; round < 300; ++round) {
        for (int i = 0; i < 100; ++i) {
            const std::uint8_t deviceNo = devices[below(3)];
            const unsigned channels = deviceNo == 5 ? 1 : deviceNo == 6 ? 3 : 8;
            unsigned& frame = next[deviceNo];
            const unsigned fault = below(24);
            const auto first = static_cast<std::uint8_t>(fault == 0 ? below(256) : frame % channels);
            const auto sequence = static_cast<std::uint8_t>(fault == 1 ? below(256) : frame / channels);
            send(fault == 2   ? below(0x800)
                 : fault == 3 ? answerIdOf(deviceNo)
                              : valueIdOf(deviceNo),
                 {first, 0x10, 0, sequence, 1, 2});
            frame += fault == 4 ? 0 : fault == 5 ? 2 : 1;
        }
        EXPECT_EQ(drainReceiveQueue(), 0);
        expectEveryCount();
        if (HasFailure()) return;
    }
    for (const std::uint8_t deviceNo : devices) {
        EXPECT_GT(counted(deviceNo).setsStored, 100U) << int{deviceNo};
        EXPECT_GT(counted(deviceNo).framesOutsideSet, 0U) << int{deviceNo};
    }
    EXPECT_GT(counted(38).framesReplaced, 0U);
    EXPECT_GT(counted(6).framesBeyondChannels, 0U);
    EXPECT_GT(counted(6).framesOfBrokenSets, 0U);
    EXPECT_GT(counted(6).framesOfIncompleteSets, 0U);
}

TEST_F(FrameAccounting, FramesWhileTheAnswersAreLocked_AreCountedAsNotRouted) {
    TestClock clock;
    adapter.queueFrame(answerIdOf(5), {0x40});
    adapter.queueFrame(valueIdOf(5), {0x00, 0x10, 0, 1, 0, 7});
    {
        const HeldElsewhere held(answerMutex);
        EXPECT_EQ(runWithTimeouts(clock, drainReceiveQueue), 0);
    }
    expectAdapterCounts(2, 0, 2);
    EXPECT_EQ(counted(5).framesRouted, 0U);
}

TEST_F(FrameAccounting, Faults_AreCountedByStatusAndAreNoFrames) {
    struct Row {
        std::uint32_t status;
        std::uint64_t TORVIKstatistics::*count;
    };
    constexpr Row rows[] = {{0x4, &TORVIKstatistics::faultsBusLight},
                            {0x8, &TORVIKstatistics::faultsBusHeavy},
                            {0x10, &TORVIKstatistics::faultsBusOff},
                            {0x40, &TORVIKstatistics::faultsQueueOverrun},
                            {0x1400, &TORVIKstatistics::faultsIllegalHardware},
                            {0x80, &TORVIKstatistics::faultsOther}};
    for (const Row& sent : rows) {
        adapter.queueStatus(sent.status);
        drainReceiveQueue();
        for (const Row& row : rows)
            EXPECT_EQ(counted(0).*row.count, &row <= &sent ? 1U : 0U) << row.status << " after " << sent.status;
    }
    EXPECT_EQ(statisticsOf(0).lastOtherFault, 0x80U);
    expectAdapterCounts(0, 0, 0);
}

}  // namespace
}  // namespace torvik
