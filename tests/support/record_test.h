// The device table prepared by hand, without any device behind it.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>

#include "core/device_table.h"

namespace torvik::test {

namespace given {
inline constexpr std::uint8_t deviceNo = 5;
}

// As byte 1 of a value frame tells them.
inline constexpr std::uint8_t int16Type = 0x10;
inline constexpr std::uint8_t int24Type = 0x20;
inline constexpr std::uint8_t float32Type = 0x30;

// Codes as applications see them.
inline constexpr std::uint32_t answerTimeout = 0x30000058;
inline constexpr std::uint32_t mutexTimeout = 0x30000112;

// Opening and closing as activations and releases do it.
class SCOPED_CAPABILITY LifecycleHeld {
  public:
    LifecycleHeld() ACQUIRE(lifecycleMutex) NO_THREAD_SAFETY_ANALYSIS {
        EXPECT_TRUE(lifecycleMutex.lockFor(mutexLimit));
    }
    ~LifecycleHeld() RELEASE() NO_THREAD_SAFETY_ANALYSIS { lifecycleMutex.unlock(lifecycleMutex.generation()); }
    LifecycleHeld(const LifecycleHeld&) = delete;
    LifecycleHeld& operator=(const LifecycleHeld&) = delete;
};

struct Identifiers {
    std::uint32_t command = 0x100;
    std::uint32_t answer = 0x101;
    std::uint32_t value = 0x102;
};

// Every test finds the mutexes created, an open adapter that takes every frame, and a table of zeros; nothing of what
// it does outlives it.
class RecordTest : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    static DeviceRecord& activate(std::uint8_t deviceNo, const Identifiers& identifiers = {},
                                  std::uint32_t activeChannels = 0);
    static void deactivate(std::uint8_t deviceNo);

    // Gives the record its buffers and sets the library-wide bound to the same length.
    static void allocateBuffers(DeviceRecord& record, std::int32_t length);

    static DeviceRecord* receiverOf(std::uint32_t identifier);
    static const ValueBuffer& bufferOf(const DeviceRecord& record, std::size_t channelIndex);
    static const AnswerSlot& answerSlotOf(const DeviceRecord& record, std::size_t slot);
    static ValueType lastValueTypeOf(const DeviceRecord& record);

  private:
    static void restore();
};

}  // namespace torvik::test
