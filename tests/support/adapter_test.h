// The adapter channel opened and closed as activation and release do it.
#pragma once

#include "can/adapter_channel.h"
#include "platform/faults.h"
#include "support/fake_adapter.h"
#include "support/record_test.h"

namespace torvik::test {

inline constexpr std::uint8_t usb = 0x51;  // the channel's handle

// Fault hooks: the system refuses an event, a thread.
inline std::uint32_t failEvent(platform::FaultPoint point) {
    return point == platform::FaultPoint::eventCreate ? 8 : 0;
}

inline std::uint32_t failThread(platform::FaultPoint point) {
    return point == platform::FaultPoint::threadStart ? 8 : 0;
}

// Every test finds the channel closed and is left with the channel closed and nothing failing.
class AdapterTest : public RecordTest {
  protected:
    static constexpr std::uint8_t deviceNo = 3;
    static constexpr std::uint8_t refused = 255;

    void SetUp() override {
        RecordTest::SetUp();
        libraryState.adapterOpen = false;
        answerMutex.close();
        valueMutex.close();
    }

    void TearDown() override {
        platform::setFaultHook(nullptr);
        close();
        RecordTest::TearDown();
    }

    static std::uint8_t open(std::uint8_t adapterType = 1, std::uint16_t baudCode = 0x001C) {
        const LifecycleHeld lock;
        return initAdapter(deviceNo, adapterType, baudCode);
    }

    // As the release of all devices does it.
    static void close() {
        const LifecycleHeld lock;
        closeAdapter();
    }

    // As a failed activation and an unload do it.
    static std::uint8_t release(bool uninitialize) {
        const LifecycleHeld lock;
        return releaseAdapter(uninitialize);
    }

    static bool threadExists() {
        const LifecycleHeld lock;
        return libraryState.receiveThread.exists();
    }

    // What `action` prints while debug output is on.
    template <class Action>
    static std::string debugLines(Action action) {
        libraryState.debugOutput = true;
        testing::internal::CaptureStdout();
        action();
        libraryState.debugOutput = false;
        return testing::internal::GetCapturedStdout();
    }

    FakeAdapter& adapter = FakeAdapter::instance();
};

}  // namespace torvik::test
