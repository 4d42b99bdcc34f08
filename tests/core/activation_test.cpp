#include "core/activation.h"

#include "support/counted_filter.h"
#include "support/fake_adapter.h"
#include "support/held_elsewhere.h"
#include "support/record_test.h"
#include "support/scripted_device.h"
#include "support/test_clock.h"

namespace torvik {
namespace {

using test::CountedFilter;
using test::FakeAdapter;
using test::HeldElsewhere;
using test::mutexTimeout;
using test::RecordTest;
using test::runWithTimeouts;
using test::ScriptedDevice;
using test::TestClock;
using test::given::deviceNo;

constexpr ActivationSettings settings{
    .baudRate = 500'000, .bufferSize = 4, .commandCanId = 0x300, .answerCanId = 0x301};

// The adapter is open; closeTheAdapter() lets the activation open it.
class ActivationTest : public RecordTest {
  protected:
    void TearDown() override {
        releaseAll();
        RecordTest::TearDown();
    }

    static void closeTheAdapter() { libraryState.adapterOpen = false; }

    static std::int32_t begin(Activation& activation) {
        const test::LifecycleHeld lock;
        return activation.begin();
    }

    // What an activating call does, with its waits on the test's clock. `between` runs once the record is the device's.
    template <class Between>
    std::int32_t activateWith(const ActivationSettings& chosen, Between between) {
        return runWithTimeouts(clock, [&] {
            Activation activation(deviceNo, chosen);
            const std::int32_t result = insideTheRecord(activation, between);
            activation.finish();
            return result;
        });
    }

    std::int32_t activateDevice(const ActivationSettings& chosen = settings) {
        return activateWith(chosen, [] {});
    }

  private:
    template <class Between>
    std::int32_t insideTheRecord(Activation& activation, Between between) {
        const Visit visit(record.gate);
        if (begin(activation) != 0) return -1;
        between();
        return activation.complete(channelCount);
    }

  protected:
    DeviceRecord& record = deviceRecord(deviceNo);
    std::uint32_t channelCount = 99;
    TestClock clock;
    ScriptedDevice device{deviceNo};
};

TEST_F(ActivationTest, GivesTheNumberOfChannelsAndClearsTheLastError) {
    EXPECT_EQ(activateWith(settings, [this] { record.lastError = 5; }), 0);
    EXPECT_EQ(channelCount, 3U);
    EXPECT_EQ(record.lastError, 0U);
    EXPECT_EQ(libraryState.initialisedDevices, 1);
}

TEST_F(ActivationTest, TakesAClearBitForAStreamThatRuns) {
    device.answer(Command::transmitMode, {0xFF, 0xFE});
    EXPECT_EQ(activateDevice(), 0);
    EXPECT_TRUE(record.transmitting);
}

TEST_F(ActivationTest, TakesASetBitForAStreamThatIsStopped) {
    device.answer(Command::transmitMode, {0, 0x01});
    EXPECT_EQ(activateWith(settings, [this] { record.transmitting = true; }), 0);
    EXPECT_FALSE(record.transmitting);
}

TEST_F(ActivationTest, AsksForTheTransmitModeOfIndexZero) {
    EXPECT_EQ(activateDevice(), 0);
    const PcanMessage last = FakeAdapter::instance().written().back();
    EXPECT_EQ(last.length, 3);
    EXPECT_EQ(last.data, (std::array<std::uint8_t, 8>{0x81, 0x80, 0}));
}

TEST_F(ActivationTest, LeavesTransmittingAsItIsWhereTheTransmitModeIsRefused) {
    device.refuse(Command::transmitMode, 0x52);
    for (const bool before : {true, false}) {
        EXPECT_EQ(activateWith(settings, [this, before] { record.transmitting = before; }), 0);
        EXPECT_EQ(record.transmitting, before);
        EXPECT_EQ(record.lastError, 0U);
        releaseDevice(deviceNo);
    }
}

TEST_F(ActivationTest, LeavesTransmittingAsItIsWhereTheTransmitModeIsNotAnswered) {
    device.silence(Command::transmitMode);
    for (const bool before : {true, false}) {
        EXPECT_EQ(activateWith(settings, [this, before] { record.transmitting = before; }), 0);
        EXPECT_EQ(record.transmitting, before);
        EXPECT_EQ(record.lastError, 0U);
        releaseDevice(deviceNo);
    }
}

TEST_F(ActivationTest, ThatOpensTheAdapterKeepsItsBaudCodeInTheRecord) {
    closeTheAdapter();
    EXPECT_EQ(activateDevice(), 0);
    EXPECT_EQ(record.baudCode, 0x001C);
    EXPECT_EQ(FakeAdapter::instance().initialized().baudCode, 0x001C);
}

TEST_F(ActivationTest, ThatFindsTheAdapterOpenHasNoBaudCodeInTheRecord) {
    libraryState.baudCode = 0x001C;
    EXPECT_EQ(activateDevice(), 0);
    EXPECT_EQ(record.baudCode, 0);
}

TEST_F(ActivationTest, IsTheOneThatAProtocolErrorBelongsTo) {
    libraryState.lastProtocolErrorDevice = noDevice;
    EXPECT_EQ(activateDevice(), 0);
    EXPECT_EQ(libraryState.lastProtocolErrorDevice, deviceNo);
}

TEST_F(ActivationTest, ThatFailsIsTheOneThatAProtocolErrorBelongsToAsWell) {
    libraryState.lastProtocolErrorDevice = noDevice;
    device.silence(Command::canSetting);
    EXPECT_EQ(activateDevice(), -1);
    EXPECT_EQ(libraryState.lastProtocolErrorDevice, deviceNo);
}

struct KindChoice {
    std::uint32_t flags;
    std::uint32_t kind;
};

class ProtocolKind : public ActivationTest, public testing::WithParamInterface<KindChoice> {};

TEST_P(ProtocolKind, FollowsTheFlags) {
    closeTheAdapter();
    ActivationSettings chosen = settings;
    chosen.flags = GetParam().flags;
    EXPECT_EQ(activateDevice(chosen), 0);
    EXPECT_EQ(libraryState.protocolKind, GetParam().kind);
}

INSTANTIATE_TEST_SUITE_P(SixteenWins, ProtocolKind,
                         testing::Values(KindChoice{0x10, 16}, KindChoice{0x20, 32}, KindChoice{0x30, 16}));

TEST_F(ActivationTest, ChoosesTheProtocolKindOnlyWhenItOpensTheAdapter) {
    libraryState.protocolKind = 16;
    ActivationSettings chosen = settings;
    chosen.flags = 0x20;
    EXPECT_EQ(activateDevice(chosen), 0);
    EXPECT_EQ(libraryState.protocolKind, 16U);
}

TEST_F(ActivationTest, GivesZeroChannelsOfADeviceWithNineAndLeavesItSetUp) {
    device.answer(Command::channelCount, {0, 9});
    EXPECT_EQ(activateDevice(), -1);
    EXPECT_EQ(channelCount, 0U);
    EXPECT_EQ(record.lastError, 246U);
    EXPECT_TRUE(record.active);
    EXPECT_EQ(libraryState.initialisedDevices, 1);
}

TEST_F(ActivationTest, DoesNotAskForTheTransmitModeOfADeviceWithoutChannels) {
    device.answer(Command::channelCount, {0, 0});
    EXPECT_EQ(activateDevice(), -1);
    ASSERT_FALSE(device.asked().empty());
    EXPECT_EQ(device.asked().back(), Command::channelCount);
}

TEST_F(ActivationTest, LeavesTheChannelCountAloneWhereTheDeviceIsNotSetUp) {
    device.refuse(Command::firmwareVersion, 0x52);
    EXPECT_EQ(activateDevice(), -1);
    EXPECT_EQ(channelCount, 99U);
}

TEST_F(ActivationTest, ThatFailsClosesTheAdapterWhereNoDeviceIsSetUp) {
    device.refuse(Command::firmwareVersion, 0x52);
    EXPECT_EQ(activateDevice(), -1);
    EXPECT_FALSE(libraryState.adapterOpen);
    EXPECT_EQ(FakeAdapter::instance().uninitialized().size(), 1U);
    EXPECT_EQ(record.lastError, 0x52U);
}

TEST_F(ActivationTest, ThatFailsLeavesTheAdapterToADeviceThatIsSetUp) {
    activate(7);
    device.refuse(Command::firmwareVersion, 0x52);
    EXPECT_EQ(activateDevice(), -1);
    EXPECT_TRUE(libraryState.adapterOpen);
    EXPECT_TRUE(deviceRecord(7).active);
}

TEST_F(ActivationTest, FailedActivation_WithOnlyInactiveDevicesCounted_ClosesTheAdapter) {
    libraryState.initialisedDevices = 1;
    device.refuse(Command::firmwareVersion, 0x52);
    EXPECT_EQ(activateDevice(), -1);
    EXPECT_FALSE(libraryState.adapterOpen);
}

TEST_F(ActivationTest, KeepsTheBufferSizeBetween1And65534) {
    const std::pair<std::uint32_t, std::int32_t> sizes[] = {
        {0, 1}, {1, 1}, {65534, 65534}, {65535, 65534}, {0xFFFFFFFF, 65534}};
    ActivationSettings chosen = settings;
    // Refused: only the bound is looked at.
    chosen.commandCanId = chosen.answerCanId;
    for (const auto& [asked, given] : sizes) {
        chosen.bufferSize = asked;
        EXPECT_EQ(activateDevice(chosen), -1);
        EXPECT_EQ(libraryState.valueBufferLength, given);
    }
}

TEST_F(ActivationTest, ThatFindsTheValuesLocked_FailsAndLeavesTheBufferSize) {
    libraryState.valueBufferLength = 9;
    const HeldElsewhere held(valueMutex);
    EXPECT_EQ(activateDevice(), -1);
    EXPECT_EQ(record.lastError, mutexTimeout);
    EXPECT_EQ(libraryState.valueBufferLength, 9);
    EXPECT_EQ(clock.elapsed(), std::chrono::seconds(10));
}

class ReleaseTest : public ActivationTest {
  protected:
    int destroyed = 0;  // filter objects
};

TEST_F(ReleaseTest, OfTheDeviceAndThenOfEverythingDestroysTheFilterObjectOnce) {
    EXPECT_EQ(activateDevice(), 0);
    record.filterObject = std::make_unique<CountedFilter>(destroyed);
    releaseDevice(deviceNo);
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(record.filterObject, nullptr);
    releaseAll();
    EXPECT_EQ(destroyed, 1);
}

TEST_F(ReleaseTest, OfTheDeviceLeavesTheFilterObjectsOfOthers) {
    deviceRecord(0).filterObject = std::make_unique<CountedFilter>(destroyed);
    activate(7).filterObject = std::make_unique<CountedFilter>(destroyed);
    releaseDevice(deviceNo);
    EXPECT_EQ(destroyed, 0);
}

TEST_F(ReleaseTest, OfEverythingDestroysEveryFilterObject) {
    activate(7).filterObject = std::make_unique<CountedFilter>(destroyed);
    deviceRecord(8).filterObject = std::make_unique<CountedFilter>(destroyed);
    releaseAll();
    EXPECT_EQ(destroyed, 2);
}

TEST_F(ReleaseTest, CountsDownForAnyNumberButNeverBelowZero) {
    libraryState.initialisedDevices = 2;
    for (const std::uint8_t released : std::to_array<std::uint8_t>({40, 9, 9, 40})) {
        releaseDevice(released);
    }
    EXPECT_EQ(libraryState.initialisedDevices, 0);
}

TEST_F(ReleaseTest, OfTheDeviceLeavesTheAdapterOpen) {
    EXPECT_EQ(activateDevice(), 0);
    releaseDevice(deviceNo);
    EXPECT_FALSE(record.active);
    EXPECT_EQ(libraryState.initialisedDevices, 0);
    EXPECT_TRUE(libraryState.adapterOpen);
    EXPECT_TRUE(FakeAdapter::instance().uninitialized().empty());
}

TEST_F(ReleaseTest, OfEverythingZeroesTheTableAndClosesTheAdapter) {
    EXPECT_EQ(activateDevice(), 0);
    setError(9, 5);
    releaseAll();
    EXPECT_FALSE(record.active);
    EXPECT_EQ(record.firmwareVersion, 0U);
    EXPECT_EQ(lastErrorOf(9), 0U);
    EXPECT_EQ(libraryState.initialisedDevices, 0);
    EXPECT_FALSE(libraryState.adapterOpen);
    EXPECT_EQ(FakeAdapter::instance().uninitialized().size(), 1U);
}

TEST_F(ReleaseTest, OfADeviceThatIsBeingActivatedEndsTheActivation) {
    EXPECT_EQ(activateWith(settings,
                           [this] {
                               record.active = false;
                               record.setUpCount++;
                           }),
              -1);
    EXPECT_EQ(record.lastError, 0x30000113U);
}

}  // namespace
}  // namespace torvik
