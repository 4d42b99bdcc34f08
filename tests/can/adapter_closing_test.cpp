#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <thread>

#include "can/adapter_event.h"
#include "can/receive_thread.h"
#include "core/activation.h"
#include "core/transaction.h"
#include "support/adapter_test.h"
#include "support/test_clock.h"

namespace torvik {
namespace {

using test::AdapterTest;
using test::FakeAdapter;
using test::runWithTimeouts;
using test::TestClock;
using test::usb;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char eventOffFailure[] = "Fehler beim Ruecksetzen des Events\n";

class AdapterClosing : public AdapterTest {
  protected:
    std::size_t eventsTakenBack() const {
        const std::vector<FakeAdapter::Setting> settings = adapter.settings();
        return static_cast<std::size_t>(
            std::ranges::count(settings, FakeAdapter::Setting{usb, pcan::receiveEvent, 0, 4}));
    }

    // Whether a frame of the channel still reaches a device.
    bool frameArrives() { return timeOfAFrame(activate(deviceNo)) < patience; }

    // Whether frames wake the receive thread, which would find them after 200 ms by itself: one of several is enough
    // on a busy machine.
    bool framesWakeTheThread() {
        DeviceRecord& record = activate(deviceNo);
        auto shortest = timeOfAFrame(record);
        for (int i = 0; i < 3; ++i)
            shortest = std::min(shortest, timeOfAFrame(record));
        return shortest < std::chrono::milliseconds(100);
    }

  private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds patience{5};

    Clock::duration timeOfAFrame(DeviceRecord& record) {
        // Not while the thread is still busy with an earlier frame: it would find this one in the same pass.
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        const std::uint32_t before = record.answerCount;
        const auto begun = Clock::now();
        adapter.queueFrame(0x101, {0x40});
        if (adapter.signalsTheEvent()) libraryState.receiveEvent.wake();
        while (record.answerCount == before && Clock::now() < begun + patience)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return Clock::now() - begun;
    }
};

TEST_F(AdapterClosing, WithUninitialisationGivesTheLowBitsOfItsStatus) {
    ASSERT_EQ(open(), 0);
    adapter.failUninitialize(0x1485);
    EXPECT_EQ(release(true), 0x85);
    EXPECT_THAT(adapter.uninitialized(), ElementsAre(usb));
    EXPECT_FALSE(libraryState.adapterOpen);
}

TEST_F(AdapterClosing, WithUninitialisationOfAClosedChannelCallsNothing) {
    EXPECT_EQ(release(true), 0);
    EXPECT_THAT(adapter.uninitialized(), IsEmpty());
}

TEST_F(AdapterClosing, WithoutUninitialisationGivesTheLowBitsOfTheEventsStatus) {
    ASSERT_EQ(open(), 0);
    adapter.failSetValue(pcan::receiveEvent, 0x1485);
    EXPECT_EQ(release(false), 0x85);
    EXPECT_THAT(adapter.uninitialized(), IsEmpty());
    EXPECT_FALSE(libraryState.adapterOpen);
}

TEST_F(AdapterClosing, WithoutUninitialisationAndWithoutAnEventGivesZero) {
    EXPECT_EQ(release(false), 0);
}

TEST_F(AdapterClosing, TakesTheEventBackTwiceAfterTheThreadHasDoneSo) {
    ASSERT_EQ(open(), 0);
    EXPECT_EQ(release(false), 0);
    EXPECT_EQ(eventsTakenBack(), 3U);
    EXPECT_FALSE(libraryState.receiveEventSet);
}

TEST_F(AdapterClosing, TakesDownRecordsMutexesEventAndThread) {
    ASSERT_EQ(open(), 0);
    activate(deviceNo);
    libraryState.initialisedDevices = 1;
    release(true);
    EXPECT_FALSE(deviceRecord(deviceNo).active);
    EXPECT_EQ(libraryState.initialisedDevices, 0);
    EXPECT_FALSE(answerMutex.exists());
    EXPECT_FALSE(valueMutex.exists());
    EXPECT_FALSE(libraryState.receiveEvent.exists());
    EXPECT_FALSE(threadExists());
}

TEST_F(AdapterClosing, ForgetsUninitialisationUntilTheNextOpening) {
    for (std::size_t opening = 1; opening <= 2; ++opening) {
        ASSERT_EQ(open(), 0);
        release(true);
        close();
        EXPECT_EQ(adapter.uninitialized().size(), opening);
    }
}

TEST_F(AdapterClosing, ReportsAnEventThatTheAdapterDoesNotGiveBack) {
    ASSERT_EQ(open(), 0);
    adapter.failSetValue(pcan::receiveEvent, 0x4000);
    adapter.setErrorText("no event");
    const std::string once = std::string(eventOffFailure) + "no event\n";
    // Once from the thread as it ends, once from the release.
    EXPECT_EQ(debugLines([] { release(false); }), once + once);
}

TEST_F(AdapterClosing, OfEverythingReportsTheEventBecauseTheChannelIsClosedByThen) {
    ASSERT_EQ(open(), 0);
    EXPECT_EQ(debugLines([] { close(); }), std::string(eventOffFailure) +
                                               "An error ocurred. Error-code's text (10000h) couldn't be "
                                               "retrieved\n");
}

TEST_F(AdapterClosing, PrintsNothingWhileDebugOutputIsOff) {
    ASSERT_EQ(open(), 0);
    adapter.failSetValue(pcan::receiveEvent, 0x4000);
    testing::internal::CaptureStdout();
    close();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(AdapterClosing, WithAnEventThatIsNotGivenBackLeavesTheNextOpeningUsable) {
    for (const bool everything : {true, false}) {
        ASSERT_EQ(open(), 0);
        adapter.failSetValue(pcan::receiveEvent, 0x4000);
        if (everything) {
            close();
        } else {
            release(true);
        }
        adapter.failSetValue(pcan::receiveEvent, pcan::ok);
        ASSERT_EQ(open(), 0);
        EXPECT_TRUE(framesWakeTheThread()) << (everything ? "everything" : "the adapter") << " was released";
        close();
    }
}

TEST_F(AdapterClosing, RegistersTheEventAgainAtTheNextOpening) {
    for (int opening = 0; opening < 2; ++opening) {
        ASSERT_EQ(open(), 0);
        EXPECT_TRUE(libraryState.receiveEventSet);
        close();
        EXPECT_FALSE(libraryState.receiveEventSet);
    }
}

TEST_F(AdapterClosing, RegisteringTheEventWhileTheChannelIsClosedSetsNothing) {
    EXPECT_EQ(debugLines([] { pcanEventOn(); }),
              "Fehler beim Setzen des Events\nAn error ocurred. Error-code's "
              "text (10000h) couldn't be retrieved\n");
    EXPECT_FALSE(libraryState.receiveEventSet);
}

// The adapter's driver does not let the thread go.
class StuckReceiveThread : public AdapterClosing {
  protected:
    void SetUp() override {
        AdapterClosing::SetUp();
        adapter.holdReads();
        ASSERT_EQ(open(), 0);
        ASSERT_TRUE(adapter.untilReadIsHeld());
    }

    void TearDown() override {
        adapter.releaseReads();
        AdapterClosing::TearDown();
    }

    // As the closing gives it up, but without the long wait before.
    void giveUp() {
        runWithTimeouts(clock, [] {
            const test::LifecycleHeld lock;
            stopReceiveThread(std::chrono::milliseconds(1));
            return true;
        });
        close();
    }

    // Long enough for the thread to do what it must not do.
    void letItGo() {
        adapter.releaseReads();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }

    TestClock clock;
};

TEST_F(StuckReceiveThread, IsGivenUpAfterTenSecondsAndTheChannelClosed) {
    runWithTimeouts(clock, [] {
        close();
        return true;
    });
    EXPECT_LE(clock.elapsed(), std::chrono::seconds(10));
    EXPECT_FALSE(threadExists());
    EXPECT_FALSE(libraryState.adapterOpen);
    EXPECT_THAT(adapter.uninitialized(), ElementsAre(usb));
}

TEST_F(StuckReceiveThread, LeavesTheChannelToTheThreadOfTheNextOpening) {
    giveUp();
    ASSERT_EQ(open(), 0);
    adapter.releaseReads();
    EXPECT_TRUE(frameArrives());
}

TEST_F(StuckReceiveThread, DoesNotRouteAFrameThatItReadsAfterwards) {
    giveUp();
    ASSERT_EQ(answerMutex.create(), 0U);
    const DeviceRecord& record = activate(deviceNo);
    adapter.queueFrame(0x101, {0x40});
    letItGo();
    EXPECT_EQ(record.answerCount, 0U);
}

TEST_F(StuckReceiveThread, DoesNotReportAFaultThatItReadsAfterwards) {
    giveUp();
    adapter.queueStatus(0x80);
    letItGo();
    EXPECT_EQ(lastErrorOf(0), 0U);
}

// A call whose frame the adapter's driver does not take.
class UnloadDuringHungCall : public AdapterClosing {
  protected:
    void SetUp() override {
        AdapterClosing::SetUp();
        ASSERT_EQ(open(), 0);
        DeviceRecord& record = activate(deviceNo);
        adapter.onWrite([this](const PcanMessage&) {
            writing_.set_value();
            released_.get_future().wait();
        });
        call_ = std::async(std::launch::async, [&record] {
            const Visit visit(record.gate);
            return sendCommand(deviceNo, Command::mode, {});
        });
        writing_.get_future().wait();
    }

    void TearDown() override {
        if (call_.valid()) letTheCallGo();
        adapter.onWrite(nullptr);
        AdapterClosing::TearDown();
    }

    void letTheCallGo() {
        released_.set_value();
        EXPECT_EQ(call_.get(), 0);
    }

    // Only the time for the calls passes.
    void unload() {
        auto unloading = std::async(std::launch::async, shutDown);
        EXPECT_TRUE(clock.untilWaiting());
        clock.advanceToEarliestDeadline();
        unloading.get();
    }

    void unloadWhileReadingHangsToo() {
        adapter.holdReads();
        EXPECT_TRUE(adapter.untilReadIsHeld());
        runWithTimeouts(clock, [] {
            shutDown();
            return true;
        });
    }

    TestClock clock;

  private:
    std::promise<void> writing_;
    std::promise<void> released_;
    std::future<std::uint8_t> call_;
};

TEST_F(UnloadDuringHungCall, EndsTheReceiveThreadOnceTheCallIsGivenUp) {
    ASSERT_EQ(eventsTakenBack(), 0U);
    unload();
    // The last thing that the thread does.
    EXPECT_EQ(eventsTakenBack(), 1U);
    EXPECT_EQ(clock.elapsed(), std::chrono::seconds(10));
}

TEST_F(UnloadDuringHungCall, GivesAReceiveThreadUpThatHangsAsWell) {
    unloadWhileReadingHangsToo();
    EXPECT_EQ(clock.elapsed(), std::chrono::seconds(20));
    adapter.queueFrame(0x101, {0x40});
    adapter.releaseReads();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(deviceRecord(deviceNo).answerCount, 0U);
    EXPECT_EQ(eventsTakenBack(), 0U);
}

TEST_F(UnloadDuringHungCall, DoesNotWaitForTheCallASecondTime) {
    unload();
    shutDown();
    EXPECT_EQ(clock.elapsed(), std::chrono::seconds(10));
}

TEST_F(UnloadDuringHungCall, LeavesTheNextOpeningUsable) {
    unload();
    letTheCallGo();
    close();
    ASSERT_EQ(open(), 0);
    EXPECT_TRUE(frameArrives());
}

}  // namespace
}  // namespace torvik
