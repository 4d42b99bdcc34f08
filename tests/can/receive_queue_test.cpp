#include "can/receive_thread.h"
#include "core/transaction.h"
#include "support/fake_adapter.h"
#include "support/held_elsewhere.h"
#include "support/record_test.h"
#include "support/test_clock.h"

namespace torvik {
namespace {

using namespace std::chrono_literals;
using test::FakeAdapter;
using test::HeldElsewhere;
using test::RecordTest;
using test::runWithTimeouts;
using test::TestClock;

constexpr std::uint8_t passEnded = 225;

class ReceiveQueue : public RecordTest {
  protected:
    void SetUp() override {
        RecordTest::SetUp();
        activate(5, {.command = 0x200, .answer = 0x201, .value = 0x202}, 1);
        allocateBuffers(record, 4);
    }

    FakeAdapter& adapter = FakeAdapter::instance();
    DeviceRecord& record = deviceRecord(5);
};

TEST_F(ReceiveQueue, IsEmptiedInOnePass) {
    for (std::uint8_t mark = 1; mark <= 10; ++mark)
        adapter.queueFrame(0x201, {0x40, 0, mark});
    EXPECT_EQ(drainReceiveQueue(), 0);
    EXPECT_EQ(record.answerCount, 10U);
    EXPECT_EQ(answerSlotOf(record, 9).data[2], 10);
}

TEST_F(ReceiveQueue, TellsAnswersFromValuesByTheFirstByteAndNotByTheIdentifier) {
    adapter.queueFrame(0x202, {0x40, 0, 1});
    adapter.queueFrame(0x202, {0x7F, 0, 2});
    adapter.queueFrame(0x201, {0x00, 0x10, 0, 1, 0, 7});
    EXPECT_EQ(drainReceiveQueue(), 0);
    EXPECT_EQ(record.answerCount, 2U);
    EXPECT_EQ(bufferOf(record, 0).count, 1);
    EXPECT_EQ(bufferOf(record, 0).entries[0].value, 7.0);
}

TEST_F(ReceiveQueue, DropsCommandFrames) {
    adapter.queueFrame(0x201, {0x80, 0x26});
    adapter.queueFrame(0x201, {0xFF});
    EXPECT_EQ(drainReceiveQueue(), 0);
    EXPECT_EQ(record.answerCount, 0U);
    EXPECT_EQ(bufferOf(record, 0).count, 0);
}

TEST_F(ReceiveQueue, DropsFramesOfNobodyAndGoesOn) {
    adapter.queueFrame(0x333, {0x40});
    adapter.queueFrame(0x201, {0x40});
    EXPECT_EQ(drainReceiveQueue(), 0);
    EXPECT_EQ(record.answerCount, 1U);
}

TEST_F(ReceiveQueue, GivesAFaultToTheLastDeviceThatAFrameBelongedTo) {
    activate(6, {.command = 0x210, .answer = 0x211, .value = 0x212});
    adapter.queueFrame(0x211, {0x40});
    adapter.queueFrame(0x201, {0x40});
    adapter.queueFrame(0x333, {0x40});
    adapter.queueStatus(0x80);
    EXPECT_EQ(drainReceiveQueue(), passEnded);
    EXPECT_EQ(record.lastError, 0x80U);
    EXPECT_EQ(lastErrorOf(6), 0U);
    EXPECT_EQ(lastErrorOf(0), 0U);
}

TEST_F(ReceiveQueue, GivesAFaultToDeviceZeroBeforeTheFirstFrameOfAPass) {
    adapter.queueFrame(0x201, {0x40});
    EXPECT_EQ(drainReceiveQueue(), 0);
    adapter.queueStatus(0x80);
    EXPECT_EQ(drainReceiveQueue(), passEnded);
    EXPECT_EQ(lastErrorOf(0), 0x80U);
    EXPECT_EQ(record.lastError, 0U);
}

TEST_F(ReceiveQueue, EndsThePassWithAFaultAndTakesTheRestInTheNext) {
    adapter.queueStatus(0x4);
    adapter.queueFrame(0x201, {0x40});
    EXPECT_EQ(drainReceiveQueue(), passEnded);
    EXPECT_EQ(record.answerCount, 0U);
    EXPECT_EQ(drainReceiveQueue(), 0);
    EXPECT_EQ(record.answerCount, 1U);
}

TEST_F(ReceiveQueue, IsAFaultWhileTheAdapterIsClosed) {
    libraryState.adapterOpen = false;
    EXPECT_EQ(drainReceiveQueue(), passEnded);
    EXPECT_EQ(lastErrorOf(0), 0x10000U);
}

TEST_F(ReceiveQueue, KeepsTheTimeStampWithTheAnswer) {
    adapter.queueFrame(0x201, {0x40}, {.milliseconds = 0x11223344, .overflows = 0x5566, .microseconds = 0x7788});
    EXPECT_EQ(drainReceiveQueue(), 0);
    EXPECT_EQ(answerSlotOf(record, 0).timestamp, 0x7788556611223344U);
}

TEST_F(ReceiveQueue, DropsEveryFrameWhoseDeviceCannotBeLookedUpInTenSeconds) {
    TestClock clock;
    adapter.queueFrame(0x201, {0x40});
    adapter.queueFrame(0x202, {0x00, 0x10, 0, 1, 0, 7});
    const HeldElsewhere held(answerMutex);
    EXPECT_EQ(runWithTimeouts(clock, drainReceiveQueue), 0);
    EXPECT_EQ(clock.elapsed(), 20000ms);
    EXPECT_EQ(record.answerCount, 0U);
    EXPECT_EQ(bufferOf(record, 0).count, 0);
}

TEST_F(ReceiveQueue, GivesAFaultAfterADroppedFrameToDeviceZero) {
    TestClock clock;
    adapter.queueFrame(0x201, {0x40});
    adapter.queueStatus(0x80);
    const HeldElsewhere held(answerMutex);
    EXPECT_EQ(runWithTimeouts(clock, drainReceiveQueue), passEnded);
    EXPECT_EQ(lastErrorOf(0), 0x80U);
    EXPECT_EQ(record.lastError, 0U);
}

struct Fault {
    std::uint32_t status;
    std::uint32_t resets;
};

class ReceiveQueueFault : public ReceiveQueue, public testing::WithParamInterface<Fault> {};

TEST_P(ReceiveQueueFault, IsStoredAsItIsAndResetsTheAdapterWhereThatHelps) {
    adapter.queueFrame(0x201, {0x40});
    adapter.queueStatus(GetParam().status);
    EXPECT_EQ(drainReceiveQueue(), passEnded);
    EXPECT_EQ(record.lastError, GetParam().status);
    EXPECT_EQ(adapter.resets(), GetParam().resets);
}

INSTANTIATE_TEST_SUITE_P(EveryStatus, ReceiveQueueFault,
                         testing::Values(Fault{0x4, 1}, Fault{0x8, 1}, Fault{0x10, 1}, Fault{0x40, 1}, Fault{0x1400, 0},
                                         Fault{0x1, 0}, Fault{0x80, 0}, Fault{0x10000, 0}, Fault{0x4000000, 0}));

}  // namespace
}  // namespace torvik
