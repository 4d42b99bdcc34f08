#include "core/device_setup.h"

#include <gmock/gmock.h>

#include <thread>

#include "platform/faults.h"
#include "support/fake_adapter.h"
#include "support/held_elsewhere.h"
#include "support/record_test.h"
#include "support/scripted_device.h"
#include "support/test_clock.h"

namespace torvik {
namespace {

using namespace std::chrono_literals;
using test::answerTimeout;
using test::FakeAdapter;
using test::HeldElsewhere;
using test::mutexTimeout;
using test::RecordTest;
using test::runWithTimeouts;
using test::ScriptedDevice;
using test::TestClock;
using test::given::deviceNo;
using testing::ElementsAre;

constexpr std::uint32_t commandCanId = 0x300;
constexpr std::uint32_t answerCanId = 0x301;
constexpr std::uint32_t outOfMemory = 0x300000F3;
constexpr std::uint32_t invalidDevice = 0x30000101;
constexpr std::uint32_t identifierInUse = 0x30000114;

DeviceRecord* reserve(std::uint8_t number = deviceNo, std::uint32_t command = commandCanId,
                      std::uint32_t answer = answerCanId) {
    const test::LifecycleHeld lock;
    return reserveRecord(number, command, answer);
}

class SetUpTest : public RecordTest {
  protected:
    void SetUp() override {
        RecordTest::SetUp();
        libraryState.valueBufferLength = 4;
        libraryState.channelHandle = 0x51;
        libraryState.baudCode = 0x001C;
    }

    void TearDown() override {
        platform::setFaultHook(nullptr);
        RecordTest::TearDown();
    }

    static bool anyBuffer() {
        for (std::size_t channel = 0; channel < channelLimit; ++channel) {
            if (bufferOf(deviceRecord(deviceNo), channel).entries) return true;
        }
        return false;
    }

    DeviceRecord& record = deviceRecord(deviceNo);
};

class Reservation : public SetUpTest {
  protected:
    void TearDown() override {
        holder_.reset();
        SetUpTest::TearDown();
    }

    // The mutex is taken by another call at the moment the first buffer is allocated.
    static void takeWhileAllocating(platform::TimedMutex& mutex) {
        mutexToTake_ = &mutex;
        platform::setFaultHook([](platform::FaultPoint point) -> std::uint32_t {
            if (point == platform::FaultPoint::allocation && !holder_)
                holder_ = std::make_unique<HeldElsewhere>(*mutexToTake_);
            return 0;
        });
    }

    static void releaseTaken() { holder_.reset(); }

  private:
    static inline platform::TimedMutex* mutexToTake_ = nullptr;
    static inline std::unique_ptr<HeldElsewhere> holder_;
};

TEST_F(Reservation, MakesTheRecordTheDevices) {
    record.answerCount = 3;
    EXPECT_EQ(reserve(), &record);
    EXPECT_TRUE(record.active);
    EXPECT_EQ(record.commandCanId, commandCanId);
    EXPECT_EQ(record.answerCanId, answerCanId);
    EXPECT_EQ(record.valueCanId, 0U);
    EXPECT_EQ(record.ownDeviceNo, deviceNo);
    EXPECT_EQ(record.channelHandle, 0x51);
    EXPECT_EQ(record.baudCode, 0x001C);
    EXPECT_EQ(record.answerCount, 0U);
    EXPECT_EQ(receiverOf(answerCanId), &record);
}

TEST_F(Reservation, AllocatesEightZeroedBuffersWhateverTheDeviceHas) {
    ASSERT_EQ(reserve(), &record);
    for (std::size_t channel = 0; channel < channelLimit; ++channel) {
        const ValueBuffer& buffer = bufferOf(record, channel);
        ASSERT_NE(buffer.entries, nullptr);
        EXPECT_EQ(buffer.allocated, 4);
        EXPECT_EQ(buffer.count, 0);
        for (std::size_t entry = 0; entry < 4; ++entry) {
            EXPECT_EQ(buffer.entries[entry].status, 0);
            EXPECT_EQ(buffer.entries[entry].value, 0.0);
        }
    }
}

TEST_F(Reservation, IsRefusedToDeviceZero) {
    EXPECT_EQ(reserve(0), nullptr);
    EXPECT_EQ(lastErrorOf(0), invalidDevice);
    EXPECT_FALSE(deviceRecord(0).active);
}

TEST_F(Reservation, IsRefusedWhileFortyDevicesAreSetUp) {
    libraryState.initialisedDevices = 40;
    EXPECT_EQ(reserve(), nullptr);
    EXPECT_EQ(record.lastError, invalidDevice);
    EXPECT_FALSE(record.active);
}

TEST_F(Reservation, IsPossibleWhileThirtyNineAreSetUp) {
    libraryState.initialisedDevices = 39;
    EXPECT_EQ(reserve(), &record);
}

struct IdentifierPair {
    std::uint32_t command;
    std::uint32_t answer;
};

class RefusedIdentifiers : public Reservation, public testing::WithParamInterface<IdentifierPair> {};

// The other device has 0x100, 0x101 and 0x102; identifier 0 is every inactive record's.
TEST_P(RefusedIdentifiers, AreThoseOfAnotherRecord) {
    activate(39);
    EXPECT_EQ(reserve(deviceNo, GetParam().command, GetParam().answer), nullptr);
    EXPECT_EQ(record.lastError, identifierInUse);
    EXPECT_FALSE(record.active);
}

INSTANTIATE_TEST_SUITE_P(EachOfTheThree, RefusedIdentifiers,
                         testing::Values(IdentifierPair{0x100, 0x301}, IdentifierPair{0x101, 0x301},
                                         IdentifierPair{0x102, 0x301}, IdentifierPair{0x300, 0x100},
                                         IdentifierPair{0x300, 0x101}, IdentifierPair{0x300, 0x102},
                                         IdentifierPair{0, 0x301}, IdentifierPair{0x300, 0}));

TEST_F(Reservation, DoesNotLookAtTheIdentifiersOfRecordZero) {
    activate(0, {.command = commandCanId, .answer = answerCanId, .value = 0x302});
    EXPECT_EQ(reserve(), &record);
}

TEST_F(Reservation, ComparesWithTheIdentifiersOfInactiveRecordsToo) {
    activate(39);
    deactivate(39);
    EXPECT_EQ(reserve(deviceNo, 0x100, answerCanId), nullptr);
    EXPECT_EQ(record.lastError, identifierInUse);
}

class ReservationWithoutMemory : public Reservation, public testing::WithParamInterface<int> {
  protected:
    static inline int buffersUntilFailure = 0;
};

TEST_P(ReservationWithoutMemory, FailsWithNothingLeftBehind) {
    buffersUntilFailure = GetParam();
    platform::setFaultHook([](platform::FaultPoint point) -> std::uint32_t {
        return point == platform::FaultPoint::allocation && buffersUntilFailure-- == 0 ? 1 : 0;
    });
    EXPECT_EQ(reserve(), nullptr);
    EXPECT_EQ(record.lastError, outOfMemory);
    EXPECT_FALSE(record.active);
    EXPECT_EQ(record.commandCanId, 0U);
    EXPECT_FALSE(anyBuffer());
    platform::setFaultHook(nullptr);
    EXPECT_EQ(reserve(), &record);
}

INSTANTIATE_TEST_SUITE_P(ForTheFirstAndTheLastBuffer, ReservationWithoutMemory, testing::Values(0, 7));

class ReservationWhileHeld : public Reservation, public testing::WithParamInterface<platform::TimedMutex*> {};

TEST_P(ReservationWhileHeld, EndsAfterTenSeconds) {
    TestClock clock;
    const HeldElsewhere held(*GetParam());
    EXPECT_EQ(runWithTimeouts(clock, [] { return reserve(); }), nullptr);
    EXPECT_EQ(record.lastError, mutexTimeout);
    EXPECT_EQ(clock.elapsed(), 10000ms);
    EXPECT_FALSE(record.active);
}

TEST_P(ReservationWhileHeld, FreesItsBuffersWhenTheMutexIsTakenInBetween) {
    TestClock clock;
    takeWhileAllocating(*GetParam());
    EXPECT_EQ(runWithTimeouts(clock, [] { return reserve(); }), nullptr);
    releaseTaken();
    EXPECT_EQ(record.lastError, mutexTimeout);
    EXPECT_EQ(clock.elapsed(), 10000ms);
    EXPECT_FALSE(record.active);
    EXPECT_FALSE(anyBuffer());
}

INSTANTIATE_TEST_SUITE_P(ByAnotherCall, ReservationWhileHeld, testing::Values(&answerMutex, &valueMutex),
                         [](const auto& mutex) { return mutex.param == &answerMutex ? "AnswerMutex" : "ValueMutex"; });

class DeviceSetUp : public SetUpTest {
  protected:
    void SetUp() override {
        SetUpTest::SetUp();
        ASSERT_EQ(reserve(), &record);
    }

    static bool setUp() { return setUpDevice(deviceRecord(deviceNo), deviceNo); }

    void expectTakenDown(std::uint32_t code) const {
        EXPECT_EQ(record.lastError, code);
        EXPECT_FALSE(record.active);
        EXPECT_EQ(record.commandCanId, 0U);
        EXPECT_FALSE(anyBuffer());
        EXPECT_EQ(libraryState.initialisedDevices, 0);
    }

    TestClock clock;
    ScriptedDevice device{deviceNo};
};

TEST_F(DeviceSetUp, StoresWhatTheDeviceAnswers) {
    EXPECT_TRUE(setUp());
    EXPECT_EQ(record.valueCanId, ScriptedDevice::valueCanId);
    EXPECT_EQ(record.firmwareVersion, 0x0003000BU);
    EXPECT_EQ(record.activeChannels, 3U);
    EXPECT_EQ(receiverOf(ScriptedDevice::valueCanId), &record);
}

TEST_F(DeviceSetUp, CountsTheDevice) {
    libraryState.initialisedDevices = 7;
    EXPECT_TRUE(setUp());
    EXPECT_EQ(libraryState.initialisedDevices, 8);
}

TEST_F(DeviceSetUp, AsksForTheValueIdentifierBySettingTwo) {
    EXPECT_TRUE(setUp());
    const PcanMessage first = FakeAdapter::instance().written().front();
    EXPECT_EQ(first.id, commandCanId);
    EXPECT_EQ(first.length, 3);
    EXPECT_THAT(first.data, ElementsAre(0x81, 0x8C, 2, 0, 0, 0, 0, 0));
}

TEST_F(DeviceSetUp, AsksFirmwareFrom3000BForItsChannelCount) {
    EXPECT_TRUE(setUp());
    EXPECT_THAT(device.asked(), ElementsAre(Command::canSetting, Command::firmwareVersion, Command::channelCount));
    EXPECT_EQ(FakeAdapter::instance().written().back().length, 3);
    EXPECT_EQ(record.activeChannels, 3U);
}

TEST_F(DeviceSetUp, TakesTheChannelCountOfEarlierFirmwareFromTheLowThreeBitsOfItsMode) {
    device.answer(Command::firmwareVersion, {0, 3, 0, 0x0A});
    device.answer(Command::mode, {0xFF, 0xFF, 0xFF, 0xFD});
    EXPECT_TRUE(setUp());
    EXPECT_THAT(device.asked(), ElementsAre(Command::canSetting, Command::firmwareVersion, Command::mode));
    EXPECT_EQ(record.activeChannels, 5U);
}

TEST_F(DeviceSetUp, TakesEightChannels) {
    device.answer(Command::channelCount, {0, 8});
    EXPECT_TRUE(setUp());
    EXPECT_EQ(record.activeChannels, 8U);
}

TEST_F(DeviceSetUp, TakesNineChannelsAsAnUnknownNumber) {
    device.answer(Command::channelCount, {0, 9});
    EXPECT_TRUE(setUp());
    EXPECT_EQ(record.activeChannels, 0U);
    EXPECT_TRUE(record.active);
}

TEST_F(DeviceSetUp, PrintsWhatItHasFound) {
    libraryState.debugOutput = true;
    testing::internal::CaptureStdout();
    EXPECT_TRUE(setUp());
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Value ID      302 \nAktive Kanaele 3 \nCANDEV-Handle 5 initialisiert\n");
}

TEST_F(DeviceSetUp, FailsWhereTheFirstQuestionCannotBeWritten) {
    FakeAdapter::instance().failWrites(0x80);
    EXPECT_FALSE(setUp());
    expectTakenDown(249);
}

TEST_F(DeviceSetUp, FailsWithoutAnAnswerToTheFirstQuestion) {
    device.silence(Command::canSetting);
    EXPECT_FALSE(runWithTimeouts(clock, setUp));
    expectTakenDown(249);
    EXPECT_EQ(clock.elapsed(), 2000ms);
}

TEST_F(DeviceSetUp, FailsWhereTheValueIdentifierIsRefused) {
    device.refuse(Command::canSetting, 0x52);
    EXPECT_FALSE(setUp());
    expectTakenDown(249);
}

TEST_F(DeviceSetUp, FailsWithoutAnAnswerToTheFirmwareQuestion) {
    device.silence(Command::firmwareVersion);
    EXPECT_FALSE(runWithTimeouts(clock, setUp));
    expectTakenDown(answerTimeout);
}

TEST_F(DeviceSetUp, FailsWithoutAnAnswerToTheChannelQuestion) {
    device.silence(Command::channelCount);
    EXPECT_FALSE(runWithTimeouts(clock, setUp));
    expectTakenDown(answerTimeout);
}

TEST_F(DeviceSetUp, FailsWithoutAnAnswerToTheModeQuestion) {
    device.answer(Command::firmwareVersion, {0, 3, 0, 0x0A});
    device.silence(Command::mode);
    EXPECT_FALSE(runWithTimeouts(clock, setUp));
    expectTakenDown(answerTimeout);
}

TEST_F(DeviceSetUp, FailsWithTheStatusOfARefusedFirmwareOrChannelQuestion) {
    device.refuse(Command::channelCount, 0x40);
    EXPECT_FALSE(setUp());
    expectTakenDown(0x40);
    ASSERT_EQ(reserve(), &record);
    device.refuse(Command::firmwareVersion, 0x52);
    EXPECT_FALSE(setUp());
    expectTakenDown(0x52);
}

TEST_F(DeviceSetUp, ReplacesTheStatusOfARefusedModeQuestion) {
    device.answer(Command::firmwareVersion, {0, 3, 0, 0x0A});
    device.refuse(Command::mode, 0x52);
    EXPECT_FALSE(setUp());
    expectTakenDown(0x30000105);
}

// Another call takes the answer mutex after the answer has been taken and before the value identifier is stored: the
// busy lock holds the set-up up between the two.
TEST_F(DeviceSetUp, FailsWhereTheValueIdentifierCannotBeStored) {
    std::thread other;
    std::promise<void> release;
    device.afterAnswering(Command::canSetting, [&] {
        std::promise<void> ready;
        other = std::thread([&] {
            record.busyLock.lock();
            ready.set_value();
            while (record.answerCount != 0 || !answerMutex.lockFor(0ms))
                std::this_thread::yield();
            const platform::TimedLock held(answerMutex);
            record.busyLock.unlock();
            release.get_future().wait();
        });
        ready.get_future().wait();
    });
    EXPECT_FALSE(runWithTimeouts(clock, setUp));
    release.set_value();
    other.join();
    EXPECT_EQ(record.lastError, mutexTimeout);
    EXPECT_FALSE(record.active);
    EXPECT_FALSE(anyBuffer());
    EXPECT_EQ(record.valueCanId, 0U);
    // Ten seconds for storing it and as many for taking the record down.
    EXPECT_EQ(clock.elapsed(), 20000ms);
}

}  // namespace
}  // namespace torvik
