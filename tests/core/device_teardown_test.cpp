#include "core/device_setup.h"
#include "support/held_elsewhere.h"
#include "support/record_test.h"
#include "support/test_clock.h"

namespace torvik {
namespace {

using namespace std::chrono_literals;
using test::HeldElsewhere;
using test::RecordTest;
using test::runWithTimeouts;
using test::TestClock;
using test::given::deviceNo;

class TearingDown : public RecordTest {
  protected:
    void SetUp() override {
        RecordTest::SetUp();
        activate(deviceNo, {.command = 0x200, .answer = 0x201, .value = 0x202}, 2);
        allocateBuffers(record, 4);
    }

    void tearDown() {
        runWithTimeouts(clock, [this] {
            tearDownDevice(record);
            return true;
        });
    }

    bool identifiersAreZero() const {
        return record.commandCanId == 0 && record.answerCanId == 0 && record.valueCanId == 0;
    }

    bool identifiersAreKept() const {
        return record.commandCanId == 0x200 && record.answerCanId == 0x201 && record.valueCanId == 0x202;
    }

    bool buffersAreFreed() const {
        for (std::size_t channel = 0; channel < channelLimit; ++channel) {
            if (bufferOf(record, channel).entries) return false;
        }
        return true;
    }

    DeviceRecord& record = deviceRecord(deviceNo);
    TestClock clock;
};

TEST_F(TearingDown, ClearsIdentifiersActivityAndBuffers) {
    tearDown();
    EXPECT_TRUE(identifiersAreZero());
    EXPECT_FALSE(record.active);
    EXPECT_TRUE(buffersAreFreed());
}

TEST_F(TearingDown, EndsTheRoutingToTheDevice) {
    tearDown();
    EXPECT_EQ(receiverOf(0x201), nullptr);
    EXPECT_EQ(receiverOf(0x202), nullptr);
}

TEST_F(TearingDown, DoesNotCountTheDeviceOut) {
    libraryState.initialisedDevices = 3;
    tearDown();
    EXPECT_EQ(libraryState.initialisedDevices, 3);
}

TEST_F(TearingDown, LeavesAnInactiveRecordAlone) {
    deactivate(deviceNo);
    tearDown();
    EXPECT_TRUE(identifiersAreKept());
    EXPECT_FALSE(buffersAreFreed());
}

TEST_F(TearingDown, KeepsTheIdentifiersWhereTheAnswerMutexIsNotObtained) {
    const HeldElsewhere held(answerMutex);
    tearDown();
    EXPECT_EQ(clock.elapsed(), 10000ms);
    EXPECT_TRUE(identifiersAreKept());
    EXPECT_FALSE(record.active);
    EXPECT_TRUE(buffersAreFreed());
}

TEST_F(TearingDown, LeavesTheDeviceActiveWhereTheValueMutexIsNotObtained) {
    const HeldElsewhere held(valueMutex);
    tearDown();
    EXPECT_EQ(clock.elapsed(), 10000ms);
    EXPECT_TRUE(identifiersAreZero());
    EXPECT_TRUE(record.active);
    EXPECT_FALSE(buffersAreFreed());
}

TEST_F(TearingDown, LeavesTheDeviceActiveWhereTheOnlyMutexThereIsIsNotObtained) {
    valueMutex.close();
    const HeldElsewhere held(answerMutex);
    tearDown();
    EXPECT_TRUE(identifiersAreKept());
    EXPECT_TRUE(record.active);
    EXPECT_FALSE(buffersAreFreed());
}

TEST_F(TearingDown, NeedsNoMutexWhereThereIsNone) {
    answerMutex.close();
    valueMutex.close();
    tearDown();
    EXPECT_TRUE(identifiersAreZero());
    EXPECT_FALSE(record.active);
    EXPECT_TRUE(buffersAreFreed());
    EXPECT_EQ(clock.elapsed(), 0ms);
}

}  // namespace
}  // namespace torvik
