// Children of a process that has the adapter open, or had it.
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <future>
#include <optional>

#include "TORVIK.h"
#include "core/activation.h"
#include "support/adapter_test.h"
#include "support/held_elsewhere.h"
#include "support/scripted_device.h"

namespace torvik {
namespace {

using test::AdapterTest;
using test::HeldElsewhere;
using test::ScriptedDevice;

constexpr std::uint32_t turnedAway = 0x30000113;

// Runs `test` in a forked child, for a few seconds at most.
// Result: what it returns; nothing when it did not end by itself.
template <class Test>
std::optional<int> inForkedChild(Test test) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(5);
        _exit(test());
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? std::optional(WEXITSTATUS(status)) : std::nullopt;
}

std::int32_t activateDevice() {
    std::uint32_t channels = 0;
    return TORVIKactivateExtended(3, 1, 1'000'000, 4, &channels, 0x300, 0x301, 0x10);
}

class ForkedChild : public AdapterTest {
  protected:
    void SetUp() override {
        AdapterTest::SetUp();
        ASSERT_EQ(activateDevice(), 0) << lastErrorOf(deviceNo);
        // The thread is in the adapter library, without the fake one's lock, whenever the process is forked.
        adapter.holdReads();
        ASSERT_TRUE(adapter.untilReadIsHeld());
    }

    void TearDown() override {
        adapter.releaseReads();
        TORVIKrelease(0);
        AdapterTest::TearDown();
    }

    ScriptedDevice device{deviceNo};
};

TEST_F(ForkedChild, ReleaseOfEverything_ReturnsAndTouchesNothing) {
    const auto settings = adapter.settings().size();
    EXPECT_EQ(inForkedChild([&] {
                  if (TORVIKrelease(0) != 0) return 1;
                  if (!adapter.uninitialized().empty() || adapter.settings().size() != settings) return 2;
                  return libraryState.adapterOpen && deviceRecord(deviceNo).active ? 0 : 3;
              }),
              0);
}

TEST_F(ForkedChild, ReleaseOfOneDevice_ReturnsAndTouchesNothing) {
    EXPECT_EQ(inForkedChild([] { return TORVIKrelease(deviceNo) == 0 && deviceRecord(deviceNo).active ? 0 : 1; }), 0);
}

TEST_F(ForkedChild, Release_WithACallOfTheParentInsideAndEveryLockInherited_Returns) {
    std::promise<void> writing;
    std::promise<void> released;
    adapter.onWrite([&](const PcanMessage&) {
        writing.set_value();
        released.get_future().wait();
    });
    auto call = std::async(std::launch::async, [] {
        std::uint32_t ident = 0;
        return TORVIKgetInterfaceIdent(deviceNo, 0, &ident);
    });
    writing.get_future().wait();
    {
        const HeldElsewhere lifecycle(lifecycleMutex);
        const HeldElsewhere answers(answerMutex);
        const HeldElsewhere values(valueMutex);
        EXPECT_EQ(inForkedChild([] { return TORVIKrelease(0); }), 0);
    }
    released.set_value();
    TORVIKrelease(deviceNo);
    EXPECT_EQ(call.get(), -1);
}

TEST_F(ForkedChild, Activation_FailsAtOnce) {
    EXPECT_EQ(inForkedChild([] {
                  if (activateDevice() != -1) return 1;
                  return lastErrorOf(deviceNo) == turnedAway ? 0 : 2;
              }),
              0);
}

TEST_F(ForkedChild, CallOfADevice_FailsAtOnceAndWritesNothing) {
    const auto written = adapter.written().size();
    EXPECT_EQ(inForkedChild([&] {
                  std::uint32_t ident = 0;
                  if (TORVIKgetInterfaceIdent(deviceNo, 0, &ident) != -1) return 1;
                  if (lastErrorOf(deviceNo) != turnedAway) return 2;
                  double value = 0;
                  if (TORVIKread(deviceNo, 1, &value) != -1) return 3;
                  return adapter.written().size() == written ? 0 : 4;
              }),
              0);
}

TEST_F(ForkedChild, Unload_TouchesNothing) {
    EXPECT_EQ(inForkedChild([&] {
                  shutDown();
                  return libraryState.adapterOpen && deviceRecord(deviceNo).active ? 0 : 1;
              }),
              0);
}

TEST_F(ForkedChild, Parent_GoesOnWithItsDevices) {
    EXPECT_EQ(inForkedChild([] { return TORVIKrelease(0); }), 0);
    device.answer(Command::interfaceIdent, {0, 0, 0, 7});
    std::uint32_t ident = 0;
    EXPECT_EQ(TORVIKgetInterfaceIdent(deviceNo, 0, &ident), 0);
    EXPECT_EQ(ident, 7U);
}

TEST_F(ForkedChild, ChildOfAChild_FailsAtOnceToo) {
    EXPECT_EQ(inForkedChild([] {
                  const auto code =
                      inForkedChild([] { return TORVIKrelease(0) == 0 && activateDevice() == -1 ? 0 : 1; });
                  return code.value_or(2);
              }),
              0);
}

TEST_F(ForkedChild, OfAParentThatHasReleasedEverything_OpensTheAdapterItself) {
    adapter.releaseReads();
    TORVIKrelease(0);
    EXPECT_EQ(inForkedChild([] {
                  if (TORVIKrelease(0) != 0) return 1;
                  if (activateDevice() != 0) return 2;
                  TORVIKrelease(0);
                  return libraryState.adapterOpen ? 3 : 0;
              }),
              0);
}

}  // namespace
}  // namespace torvik
