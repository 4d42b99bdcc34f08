// Frames handed out by the adapter = frames routed to devices + frames dropped before.
#include <numeric>

#include "can/receive_thread.h"
#include "support/fake_adapter.h"
#include "support/held_elsewhere.h"
#include "support/record_test.h"
#include "support/test_clock.h"

namespace torvik {
namespace {

using test::FakeAdapter;
using test::HeldElsewhere;
using test::RecordTest;
using test::runWithTimeouts;
using test::TestClock;

struct AdapterReading {
    std::uint64_t received = adapterCounters.received.get();
    std::uint64_t withoutDevice = adapterCounters.withoutDevice.get();
    std::uint64_t notRouted = adapterCounters.notRouted.get();
    std::uint64_t routed = [] {
        std::uint64_t sum = 0;
        for (const DeviceRecord& record : deviceTable())
            sum += record.frames.read(record.staged).routed;
        return sum;
    }();
};

class FrameLaw : public RecordTest {
  protected:
    void SetUp() override {
        RecordTest::SetUp();
        activate(5, {.command = 0x200, .answer = 0x201, .value = 0x202}, 1);
        allocateBuffers(deviceRecord(5), 4);
        before_ = {};
    }

    // What has been counted since the beginning of the test obeys the law and is this.
    void expectCounts(std::uint64_t received, std::uint64_t withoutDevice, std::uint64_t notRouted) const {
        const AdapterReading now;
        EXPECT_EQ(now.received - before_.received, received);
        EXPECT_EQ(now.withoutDevice - before_.withoutDevice, withoutDevice);
        EXPECT_EQ(now.notRouted - before_.notRouted, notRouted);
        EXPECT_EQ(now.routed - before_.routed, received - withoutDevice - notRouted);
    }

    static FrameCounts device() { return deviceRecord(5).frames.read(deviceRecord(5).staged); }

    FakeAdapter& adapter = FakeAdapter::instance();

  private:
    AdapterReading before_;
};

TEST_F(FrameLaw, HoldsForFramesOfEveryKind) {
    adapter.queueFrame(0x201, {0x40});
    adapter.queueFrame(0x202, {0x00, 0x10, 0, 1, 0, 7});
    adapter.queueFrame(0x202, {0x01, 0x10, 0, 1, 0, 7});
    adapter.queueFrame(0x201, {0x80});
    adapter.queueFrame(0x333, {0x40});
    adapter.queueFrame(0x12345678, {0x00});
    EXPECT_EQ(drainReceiveQueue(), 0);
    expectCounts(6, 2, 0);
}

TEST_F(FrameLaw, HoldsWhenTheAnswersAreLockedForTenSeconds) {
    TestClock clock;
    adapter.queueFrame(0x201, {0x40});
    adapter.queueFrame(0x202, {0x00, 0x10, 0, 1, 0, 7});
    const HeldElsewhere held(answerMutex);
    EXPECT_EQ(runWithTimeouts(clock, drainReceiveQueue), 0);
    expectCounts(2, 0, 2);
}

TEST_F(FrameLaw, CommandFramesOfADeviceAreDroppedForThatReason) {
    const std::uint64_t before = device().of(FrameEnd::command);
    adapter.queueFrame(0x201, {0x80});
    adapter.queueFrame(0x201, {0xFF});
    EXPECT_EQ(drainReceiveQueue(), 0);
    EXPECT_EQ(device().of(FrameEnd::command) - before, 2U);
}

TEST_F(FrameLaw, FaultsAreCountedByStatusAndAreNoFrames) {
    constexpr std::uint32_t statuses[] = {0x4, 0x8, 0x10, 0x40, 0x1400, 0x80};
    const auto faults = [](std::size_t i) { return adapterCounters.faults[i].get(); };
    for (std::size_t i = 0; i < adapterFaultCount; ++i) {
        const std::uint64_t before = faults(i);
        adapter.queueStatus(statuses[i]);
        drainReceiveQueue();
        EXPECT_EQ(faults(i) - before, 1U) << statuses[i];
    }
    EXPECT_EQ(adapterCounters.lastOtherFault.get(), 0x80U);
    expectCounts(0, 0, 0);
}

}  // namespace
}  // namespace torvik
