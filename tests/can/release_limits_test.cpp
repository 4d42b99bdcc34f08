// Releases and activations while other calls do not come back from the adapter library.
#include <chrono>
#include <future>
#include <memory>
#include <optional>

#include "TORVIK.h"
#include "core/call_control.h"
#include "support/adapter_test.h"
#include "support/counted_filter.h"
#include "support/held_elsewhere.h"
#include "support/scripted_device.h"
#include "support/test_clock.h"

namespace torvik {
namespace {

using namespace std::chrono_literals;
using test::AdapterTest;
using test::CountedFilter;
using test::HeldElsewhere;
using test::LifecycleHeld;
using test::runWithTimeouts;
using test::ScriptedDevice;
using test::TestClock;

constexpr std::uint32_t notActive = 0x30000113;
constexpr std::uint32_t mutexTimeout = 0x30000112;

std::int32_t activateExtended(std::int32_t deviceNo, std::uint32_t commandCanId, std::uint32_t answerCanId) {
    std::uint32_t channels = 0;
    return TORVIKactivateExtended(deviceNo, 1, 1'000'000, 4, &channels, commandCanId, answerCanId, 0x10);
}

// A call of a device that hangs in the adapter library until it is let go.
class ReleaseDuringHungCall : public AdapterTest {
  protected:
    void SetUp() override {
        AdapterTest::SetUp();
        ASSERT_EQ(open(), 0);
        activate(deviceNo);
        deviceRecord(deviceNo).filterObject = std::make_unique<CountedFilter>(filtersDestroyed);
        adapter.onWrite([this](const PcanMessage&) {
            writing_.set_value();
            released_.get_future().wait();
        });
        call_ = std::async(std::launch::async, [] {
            std::uint32_t ident = 0;
            return TORVIKgetInterfaceIdent(deviceNo, 0, &ident);
        });
        writing_.get_future().wait();
        adapter.onWrite(nullptr);
    }

    void TearDown() override {
        if (call_.valid()) letTheCallGo();
        adapter.onWrite(nullptr);
        TORVIKrelease(0);
        AdapterTest::TearDown();
    }

    void letTheCallGo() {
        released_.set_value();
        EXPECT_EQ(call_.get(), -1);
        EXPECT_EQ(lastErrorOf(deviceNo), notActive);
    }

    void release(std::int32_t number) {
        EXPECT_EQ(runWithTimeouts(clock, [number] { return TORVIKrelease(number); }), 0);
    }

    // The call has its record to itself: all others are turned away at once.
    void expectRecordIsClosed() {
        const auto before = clock.elapsed();
        std::uint32_t ident = 0;
        EXPECT_EQ(TORVIKgetInterfaceIdent(deviceNo, 0, &ident), -1);
        EXPECT_EQ(lastErrorOf(deviceNo), notActive);
        EXPECT_EQ(activateExtended(deviceNo, 0x300, 0x301), -1);
        EXPECT_EQ(lastErrorOf(deviceNo), notActive);
        EXPECT_EQ(clock.elapsed(), before);
        EXPECT_EQ(filtersDestroyed, 0);
    }

    void expectRecordIsUsable() {
        EXPECT_EQ(filtersDestroyed, 1);
        ScriptedDevice device(deviceNo);
        EXPECT_EQ(activateExtended(deviceNo, 0x500, 0x501), 0) << lastErrorOf(deviceNo);
    }

    int filtersDestroyed = 0;
    TestClock clock;

  private:
    std::promise<void> writing_;
    std::promise<void> released_;
    std::future<std::int32_t> call_;
};

TEST_F(ReleaseDuringHungCall, ReleaseOfTheDevice_ReturnsAfterTenSecondsAndLeavesTheRestToTheCall) {
    release(deviceNo);
    EXPECT_EQ(clock.elapsed(), 10s);
    EXPECT_FALSE(deviceRecord(deviceNo).active);
    EXPECT_EQ(receiverOf(0x101), nullptr);
    expectRecordIsClosed();
    letTheCallGo();
    expectRecordIsUsable();
}

TEST_F(ReleaseDuringHungCall, ReleaseOfEverything_ReturnsAfterTenSecondsAndLeavesTheRestToTheCall) {
    release(0);
    EXPECT_EQ(clock.elapsed(), 10s);
    EXPECT_FALSE(libraryState.adapterOpen);
    EXPECT_FALSE(threadExists());
    expectRecordIsClosed();
    letTheCallGo();
    expectRecordIsUsable();
}

TEST_F(ReleaseDuringHungCall, SecondRelease_OfARecordLeftToTheCall_DoesNotWaitAgain) {
    release(deviceNo);
    EXPECT_EQ(TORVIKrelease(deviceNo), 0);
    EXPECT_EQ(TORVIKrelease(0), 0);
    EXPECT_EQ(clock.elapsed(), 10s);
    expectRecordIsClosed();
    letTheCallGo();
    expectRecordIsUsable();
}

TEST_F(ReleaseDuringHungCall, ActivationOfAnotherDevice_AfterTheRelease_OpensTheAdapterAtOnce) {
    release(0);
    {
        ScriptedDevice other(7);
        EXPECT_EQ(activateExtended(7, 0x300, 0x301), 0) << lastErrorOf(7);
    }
    EXPECT_EQ(clock.elapsed(), 10s);
    expectRecordIsClosed();
    letTheCallGo();
    EXPECT_TRUE(deviceRecord(7).active);
    expectRecordIsUsable();
}

TEST_F(ReleaseDuringHungCall, ReleaseOfEverything_WhileEverythingElseHangsToo_ReturnsAfterTenSeconds) {
    adapter.holdReads();
    ASSERT_TRUE(adapter.untilReadIsHeld());
    {
        const HeldElsewhere answers(answerMutex);
        const HeldElsewhere values(valueMutex);
        release(0);
        EXPECT_EQ(clock.elapsed(), 10s);
    }
    adapter.releaseReads();
    EXPECT_FALSE(libraryState.adapterOpen);
    expectRecordIsClosed();
    letTheCallGo();
    expectRecordIsUsable();
}

// An activation whose adapter library does not come back from the opening, with the lifecycle lock.
class ReleaseDuringHungOpening : public AdapterTest {
  protected:
    void SetUp() override {
        AdapterTest::SetUp();
        adapter.onInitialize([this] {
            opening_.set_value();
            released_.get_future().wait();
        });
        activation_ = std::async(std::launch::async, [] { return activateExtended(deviceNo, 0x300, 0x301); });
        opening_.get_future().wait();
    }

    void TearDown() override {
        if (activation_.valid()) finishOpening();
        TORVIKrelease(0);
        AdapterTest::TearDown();
    }

    std::int32_t finishOpening() {
        adapter.onInitialize(nullptr);
        released_.set_value();
        return activation_.get();
    }

    template <class Call>
    auto inTenSeconds(Call call) {
        const auto before = clock.elapsed();
        const auto result = runWithTimeouts(clock, call);
        EXPECT_EQ(clock.elapsed() - before, 10s);
        return result;
    }

    TestClock clock;
    ScriptedDevice device{deviceNo};

  private:
    std::promise<void> opening_;
    std::promise<void> released_;
    std::future<std::int32_t> activation_;
};

TEST_F(ReleaseDuringHungOpening, ReleaseOfEverything_ReturnsAfterTenSecondsAndEndsTheActivation) {
    EXPECT_EQ(inTenSeconds([] { return TORVIKrelease(0); }), 0);
    EXPECT_EQ(finishOpening(), -1);
    EXPECT_EQ(lastErrorOf(deviceNo), notActive);
    EXPECT_FALSE(libraryState.adapterOpen);
}

TEST_F(ReleaseDuringHungOpening, ReleaseOfTheDevice_ReturnsAfterTenSecondsAndEndsTheActivation) {
    EXPECT_EQ(inTenSeconds([] { return TORVIKrelease(deviceNo); }), 0);
    EXPECT_EQ(finishOpening(), -1);
    EXPECT_EQ(lastErrorOf(deviceNo), notActive);
    EXPECT_FALSE(libraryState.adapterOpen) << "no other device needs it";
}

TEST_F(ReleaseDuringHungOpening, ReleaseOfAnotherDevice_ReturnsAfterTenSecondsAndLeavesTheActivation) {
    EXPECT_EQ(inTenSeconds([] { return TORVIKrelease(7); }), 0);
    EXPECT_EQ(finishOpening(), 0) << lastErrorOf(deviceNo);
}

TEST_F(ReleaseDuringHungOpening, ActivationOfAnotherDevice_FailsAfterTenSeconds) {
    EXPECT_EQ(inTenSeconds([] { return activateExtended(7, 0x400, 0x401); }), -1);
    EXPECT_EQ(lastErrorOf(7), mutexTimeout);
    EXPECT_EQ(finishOpening(), 0) << lastErrorOf(deviceNo);
}

// The record of a closed adapter that a call is inside of without having been released.
class OpeningDuringACall : public AdapterTest {
  protected:
    void TearDown() override {
        TORVIKrelease(0);
        AdapterTest::TearDown();
    }

    TestClock clock;
};

TEST_F(OpeningDuringACall, Activation_WhileTheCallDoesNotLeave_FailsAfterTenSeconds) {
    ScriptedDevice device(deviceNo);
    const Visit other(deviceRecord(9).gate);
    EXPECT_EQ(runWithTimeouts(clock, [] { return activateExtended(deviceNo, 0x300, 0x301); }), -1);
    EXPECT_EQ(clock.elapsed(), 10s);
    EXPECT_EQ(lastErrorOf(deviceNo), mutexTimeout);
    EXPECT_FALSE(libraryState.adapterOpen);
}

TEST_F(OpeningDuringACall, Activation_OfARecordThatAnotherCallDoesNotLeave_FailsAfterTenSeconds) {
    ASSERT_EQ(open(), 0);
    const FinishReleaseAtEnd last(&deviceRecord(deviceNo));
    const Visit other(deviceRecord(deviceNo).gate);
    EXPECT_EQ(runWithTimeouts(clock, [] { return activateExtended(deviceNo, 0x300, 0x301); }), -1);
    EXPECT_EQ(lastErrorOf(deviceNo), mutexTimeout);
}

}  // namespace
}  // namespace torvik
