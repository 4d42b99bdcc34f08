// What the adapter library can do wrong, seen through the exports.
#include <chrono>
#include <thread>
#include <vector>

#include "support/bench_fixture.h"

namespace {

using namespace torvik::test;
using std::chrono::milliseconds;

constexpr std::uint32_t busHeavy = 0x8;
constexpr std::uint32_t busOff = 0x10;
constexpr std::uint32_t illegalHardware = 0x1400;
constexpr std::uint32_t logFlag = 0x04;

class AdapterFault : public Bench {
  protected:
    static std::int32_t open(std::uint32_t flags = TORVIK_FLAG_PROTOCOL_KIND_16) {
        std::uint32_t channels = 0;
        return TORVIKactivateExtended(device, TORVIK_ADAPTER_USB, 1000000, 100, &channels, 0x100, answerId, flags);
    }

    static std::uint64_t calls(VirtualEntry entry) {
        VirtualCounters counters{};
        virtualGetCounters(&counters);
        return counters.calls[entry];
    }

    // The device is open and its receive thread has nothing left to read.
    static void activateAndWaitUntilIdle() {
        activate();
        std::uint64_t before = 0;
        do {
            before = calls(VIRTUAL_READ);
            std::this_thread::sleep_for(milliseconds(20));
        } while (calls(VIRTUAL_READ) != before);
    }

    // The code that a thread of the library's own stores sooner or later; 0 when it does not.
    static std::uint32_t errorThatComes(std::int32_t deviceNo) {
        for (int i = 0; i < 2000; ++i) {
            if (const LastError error = takeLastError(deviceNo); error.code != 0) return error.code;
            std::this_thread::sleep_for(milliseconds(1));
        }
        return 0;
    }

    static std::vector<VirtualFrame> oneValue() { return {valueFrame(valueId, 0, 1, int16Type, 7)}; }
};

TEST_F(AdapterFault, RefusedAutomaticBusOffResetEndsTheActivation) {
    virtualFailCalls(VIRTUAL_SET_VALUE, illegalHardware, 0, 1);
    EXPECT_EQ(open(), -1);
    expectLastError(device, illegalHardware, "CAN Adapter: hardware handle is invalid [5120]");
    expectNothingSent();
}

TEST_F(AdapterFault, ChannelIsUsableAgainAfterEverythingIsReleased) {
    virtualFailCalls(VIRTUAL_SET_VALUE, illegalHardware, 0, 1);
    ASSERT_EQ(open(), -1);
    TORVIKrelease(0);
    takeLastError(device);
    EXPECT_EQ(open(), 0) << takeLastError(device).text;
    settle();
}

TEST_F(AdapterFault, LogFlagTurnsTheAdaptersLogOnBeforeAnythingElse) {
    for (const std::uint32_t skipped : {0u, 1u, 2u}) {
        virtualFailCalls(VIRTUAL_SET_VALUE, illegalHardware, skipped, 1);
        EXPECT_EQ(open(TORVIK_FLAG_PROTOCOL_KIND_16 | logFlag), -1) << "after " << skipped;
        EXPECT_EQ(takeLastError(device).code, illegalHardware) << "after " << skipped;
        TORVIKrelease(0);
        virtualReset();
    }
    EXPECT_EQ(open(TORVIK_FLAG_PROTOCOL_KIND_16 | logFlag), 0) << takeLastError(device).text;
}

TEST_F(AdapterFault, FaultBeforeAnyFrameBelongsToDeviceZero) {
    activateAndWaitUntilIdle();
    virtualFailCalls(VIRTUAL_READ, busOff, 0, 1);
    push(oneValue());
    EXPECT_EQ(errorThatComes(0), busOff);
    expectNoError(device);
}

TEST_F(AdapterFault, FaultAfterAFrameBelongsToItsDevice) {
    activateAndWaitUntilIdle();
    virtualFailCalls(VIRTUAL_READ, busHeavy, 1, 1);
    push(oneValue());
    EXPECT_EQ(errorThatComes(device), busHeavy);
    expectNoError(0);
}

TEST_F(AdapterFault, FaultResetsTheAdapterAndTheStreamGoesOn) {
    activateAndWaitUntilIdle();
    const std::uint64_t resets = calls(VIRTUAL_RESET);
    virtualFailCalls(VIRTUAL_READ, busOff, 0, 1);
    push(oneValue());
    ASSERT_EQ(errorThatComes(0), busOff);
    settle();
    EXPECT_EQ(calls(VIRTUAL_RESET), resets + 1);
    virtualSendSets(amplifier, 5);
    settle();
    std::int32_t waiting = 0;
    EXPECT_EQ(TORVIKreceived(device, 0, &waiting), 0);
    EXPECT_EQ(waiting, 5);
}

TEST_F(AdapterFault, QueueOverrunIsReported) {
    activateAndWaitUntilIdle();
    virtualPause(1);
    virtualSendSets(amplifier, 6000);
    virtualPause(0);
    EXPECT_EQ(errorThatComes(0), 0x40u);
    settle();
}

TEST_F(AdapterFault, AdapterThatFailsEveryReadNeitherBlocksNorSpins) {
    activateAndWaitUntilIdle();
    virtualFailCalls(VIRTUAL_READ, illegalHardware, 0, VIRTUAL_FOR_EVER);
    push(oneValue());
    EXPECT_EQ(errorThatComes(0), illegalHardware);
    const std::uint64_t before = calls(VIRTUAL_READ);
    std::this_thread::sleep_for(milliseconds(500));
    EXPECT_LE(calls(VIRTUAL_READ) - before, 6u);
    virtualFailCalls(VIRTUAL_READ, 0, 0, 0);
    std::uint32_t ident = 0;
    EXPECT_EQ(TORVIKgetInterfaceIdent(device, 0, &ident), 0) << takeLastError(device).text;
}

TEST_F(AdapterFault, WithoutTheReceiveEventAnswersComeWithTheNextLook) {
    // The event is registered in another way on each system: let both fail for good once the options are set.
    virtualFailCalls(VIRTUAL_GET_VALUE, illegalHardware, 0, VIRTUAL_FOR_EVER);
    virtualFailCalls(VIRTUAL_SET_VALUE, illegalHardware, 1, VIRTUAL_FOR_EVER);
    EXPECT_EQ(open(), 0) << takeLastError(device).text;
    std::uint32_t ident = 0;
    EXPECT_EQ(TORVIKgetInterfaceIdent(device, 0, &ident), 0) << takeLastError(device).text;
}

TEST_F(AdapterFault, FailedUninitialisationLeavesTheLibraryUsable) {
    activate();
    virtualFailCalls(VIRTUAL_UNINITIALIZE, illegalHardware, 0, 1);
    EXPECT_EQ(TORVIKrelease(0), 0);
    std::uint32_t ident = 0;
    EXPECT_EQ(TORVIKgetInterfaceIdent(device, 0, &ident), -1);
    expectLastError(device, 0x30000113, notInitialized);
}

}  // namespace
