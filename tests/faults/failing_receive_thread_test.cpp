// The library's own receive thread meets failed adapter calls, failed waits and locked mutexes. Each time: nothing is
// lost without being counted, calls end in time with the documented code, and afterwards everything works.
#include <array>
#include <atomic>
#include <string>
#include <vector>

#include "TORVIK.h"
#include "TORVIKstatistics.h"
#include "faults/fault_bench.h"
#include "platform/faults.h"
#include "support/held_elsewhere.h"

namespace torvik::test {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t statusThatStays = 0x10000;  // the library does not reset the adapter because of it
constexpr std::uint32_t setsSent = 2;
constexpr double fractionPerCount = 2.1 / 65535;  // of full scale, for 16-bit values

// Time-outs pass eight times as fast as the receive thread's own 200 ms; and at once in the receive thread, when that
// is asked for.
class FastClock final : public platform::Clock {
  public:
    platform::TimePoint now() override { return begun_ + faster * (platform::systemNow() - begun_); }

    bool waitUntil(platform::Condition& condition, platform::Mutex& mutex, platform::TimePoint deadline) override
        REQUIRES(mutex) {
        const platform::TimePoint before = now();
        if (before >= deadline || (atOnceElsewhere && std::this_thread::get_id() != testThread_)) return false;
        condition.waitFor(mutex, (deadline - before) / faster);
        return now() < deadline;
    }

    std::atomic<bool> atOnceElsewhere = false;

  private:
    static constexpr int faster = 8;
    platform::TimePoint begun_ = platform::systemNow();
    std::thread::id testThread_ = std::this_thread::get_id();
};

// Of the receive thread, which alone waits for the event.
std::atomic<std::uint32_t> waits = 0;
std::atomic<std::uint32_t> failingWait = 0;
std::atomic<bool> allWaitsFail = false;

std::uint32_t failWait(platform::FaultPoint point) {
    if (point != platform::FaultPoint::eventWait) return 0;
    return ++waits == failingWait || allWaitsFail ? 1 : 0;
}

class FailingReceiveThread : public testing::Test {
  protected:
    void SetUp() override {
        bus.restore(unused_);
        bus.setFirmware(DeviceMake().firmware);
        bus.readOnReceiveThread();
        platform::setClock(nullptr);
        before_ = statistics();
    }
    void TearDown() override {
        platform::setFaultHook(nullptr);
        bus.failNoCall();
        TORVIKrelease(0);
        bus.restore(unused_);
        platform::setClock(nullptr);
    }

    static TORVIKstatistics statistics() {
        TORVIKstatistics counts{};
        counts.size = sizeof counts;
        EXPECT_EQ(TORVIKgetStatistics(faultyDevice, &counts), 0);
        return counts;
    }
    // Since the beginning of the test.
    template <class Field>
    std::uint64_t counted(Field field) const {
        return statistics().*field - before_.*field;
    }

    static std::int32_t activate() {
        std::uint32_t count = 0;
        const std::int32_t result =
            TORVIKactivateExtended(faultyDevice, TORVIK_ADAPTER_USB, 1000000, 16, &count, commandIdOf(faultyDevice),
                                   answerIdOf(faultyDevice), TORVIK_FLAG_PROTOCOL_KIND_16);
        EXPECT_EQ(count, result == 0 ? 6U : 0U);
        return result;
    }
    static std::int32_t askIdent() {
        std::uint32_t ident = 0;
        const std::int32_t result = TORVIKgetInterfaceIdent(faultyDevice, 1, &ident);
        EXPECT_EQ(ident, result == 0 ? identOf(faultyDevice) : 0);
        return result;
    }

    // False: not within a second.
    template <class Condition>
    static bool comes(Condition condition) {
        const platform::TimePoint deadline = platform::systemNow() + 1s;
        while (!condition()) {
            if (platform::systemNow() > deadline) return false;
            std::this_thread::yield();
        }
        return true;
    }

    void sendSets() {
        for (std::uint16_t set = 0; set < setsSent; ++set)
            bus.sendSet(faultyDevice, ++sequence_, static_cast<std::int16_t>(100 * set));
    }
    void expectValuesOfSets() {
        for (std::uint32_t set = 0; set < setsSent; ++set) {
            for (std::uint32_t channel = 1; channel <= 6; ++channel) {
                double value = -1;
                EXPECT_EQ(TORVIKread(faultyDevice, channel, &value), 1);
                EXPECT_DOUBLE_EQ(value, (100.0 * set + channel - 1) * fractionPerCount);
            }
        }
    }

    // Everything that a receive thread does in its life, and nothing of it fails.
    void expectEverythingRight() {
        ASSERT_EQ(activate(), 0) << std::hex << takeCode(faultyDevice);
        EXPECT_EQ(askIdent(), 0) << std::hex << takeCode(faultyDevice);
        const std::uint64_t stored = counted(&TORVIKstatistics::setsStored) + setsSent;
        sendSets();
        EXPECT_TRUE(comes([&] { return counted(&TORVIKstatistics::setsStored) == stored; }));
        expectValuesOfSets();
        expectReleaseInTime();
        EXPECT_EQ(counted(&TORVIKstatistics::framesReceived), bus.framesRead());
        EXPECT_EQ(counted(&TORVIKstatistics::framesNotRouted), 0U);
    }
    static void expectReleaseInTime() {
        const platform::TimePoint begun = platform::systemNow();
        EXPECT_EQ(TORVIKrelease(0), 0);
        EXPECT_LT(platform::systemNow() - begun, 1s);
    }

    SimulatedBus& bus = SimulatedBus::instance();
    FastClock fastClock;

  private:
    SimulatedClock unused_;
    TORVIKstatistics before_{};
    std::uint16_t sequence_ = 0;
};

TEST_F(FailingReceiveThread, AdapterCallThatFailsOnce_LosesNothing) {
    std::uint32_t nth = 1;
    for (bool struck = true; struck; nth += nth < 6 ? 1 : TORVIK_RECEIVE_STRIDE) {
        SCOPED_TRACE("call " + std::to_string(nth));
        const std::uint64_t faults = counted(&TORVIKstatistics::faultsOther);
        bus.failCall(nth, false, statusThatStays);
        expectEverythingRight();
        const auto failed = bus.failedCall();
        struck = failed.has_value();
        const bool read = struck && failed->entry == SimulatedBus::Entry::read;
        EXPECT_EQ(counted(&TORVIKstatistics::faultsOther), faults + (read ? 1 : 0));
        if (HasFailure()) return;
    }
    EXPECT_GT(nth, 20U);
}

// The codes of an activation, of a command, and of a device that is not active.
TEST_F(FailingReceiveThread, AdapterThatFailsFromACallOn_EndsEveryCallInTime) {
    constexpr std::uint32_t codesOfActivation[] = {expected_code::noValueIdentifier, expected_code::answerTimeout};
    for (std::uint32_t nth = 1;; nth += nth < 6 ? 1 : TORVIK_RECEIVE_STRIDE) {
        SCOPED_TRACE("from call " + std::to_string(nth));
        platform::setClock(&fastClock);
        bus.failCall(nth, true, statusThatStays);
        const platform::TimePoint begun = fastClock.now();
        const bool active = activate() == 0;
        const std::uint32_t code = takeCode(faultyDevice);
        if (!active) {
            EXPECT_THAT(codesOfActivation, testing::Contains(code));
        }
        // One time-out ends an activation, but for the last of its answers; the rest is for a loaded machine.
        EXPECT_LT(fastClock.now() - begun, 40s);
        const bool answered = askIdent() == 0;
        const std::uint32_t codeOfCommand = takeCode(faultyDevice);
        if (!answered) {
            EXPECT_EQ(codeOfCommand, active ? expected_code::answerTimeout : expected_code::notActive);
        }
        expectReleaseInTime();
        const bool struck = bus.failedCall().has_value();
        bus.failNoCall();
        platform::setClock(nullptr);
        expectEverythingRight();
        if (!struck || HasFailure()) break;
    }
}

TEST_F(FailingReceiveThread, WaitThatFailsOnce_LosesNothing) {
    platform::setFaultHook(failWait);
    for (const std::uint32_t nth : {1U, 2U, 3U}) {
        SCOPED_TRACE("wait " + std::to_string(nth));
        waits = 0;
        failingWait = nth;
        expectEverythingRight();
        // How many there are is a matter of time; a thread that has just come from one finds more than one frame.
        EXPECT_GE(waits, 1U);
    }
    failingWait = 0;
}

// The thread then lives on its time limit of 200 ms.
TEST_F(FailingReceiveThread, WaitsThatAlwaysFail_AreNoBusyLoopAndLoseNothing) {
    platform::setFaultHook(failWait);
    waits = 0;
    allWaitsFail = true;
    const platform::TimePoint begun = platform::systemNow();
    expectEverythingRight();
    const auto periods = static_cast<std::uint32_t>((platform::systemNow() - begun) / 200ms);
    EXPECT_GE(waits, 1U);
    EXPECT_LE(waits, periods + 2);
    allWaitsFail = false;
}

class LockedReceiveThread : public FailingReceiveThread {
  protected:
    void SetUp() override {
        FailingReceiveThread::SetUp();
        ASSERT_EQ(activate(), 0);
        platform::setClock(&fastClock);
        fastClock.atOnceElsewhere = true;
    }

    void expectNextSetsRight() {
        fastClock.atOnceElsewhere = false;
        const std::uint64_t stored = counted(&TORVIKstatistics::setsStored) + setsSent;
        sendSets();
        EXPECT_TRUE(comes([&] { return counted(&TORVIKstatistics::setsStored) == stored; }));
        expectValuesOfSets();
        EXPECT_EQ(askIdent(), 0);
        EXPECT_EQ(counted(&TORVIKstatistics::framesReceived), bus.framesRead());
    }
};

TEST_F(LockedReceiveThread, ValuesLockedForTheLimit_CountsTheSetsAndGoesOn) {
    {
        const HeldElsewhere held(valueMutex);
        sendSets();
        EXPECT_TRUE(comes([this] { return counted(&TORVIKstatistics::setsLocked) == setsSent; }));
    }
    EXPECT_EQ(counted(&TORVIKstatistics::framesOfLockedSets), 6U * setsSent);
    expectNextSetsRight();
    EXPECT_EQ(counted(&TORVIKstatistics::setsStored), setsSent);
}

TEST_F(LockedReceiveThread, AnswersLockedForTheLimit_CountsTheFramesAndGoesOn) {
    {
        const HeldElsewhere held(answerMutex);
        sendSets();
        EXPECT_TRUE(comes([this] { return counted(&TORVIKstatistics::framesNotRouted) == 6U * setsSent; }));
        // The answer is dropped like them.
        EXPECT_EQ(askIdent(), -1);
        EXPECT_EQ(takeCode(faultyDevice), expected_code::answerTimeout);
    }
    EXPECT_EQ(counted(&TORVIKstatistics::framesNotRouted), 6U * setsSent + 1);
    expectNextSetsRight();
}

}  // namespace
}  // namespace torvik::test
