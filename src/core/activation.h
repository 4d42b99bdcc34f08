// Opening and closing devices.
#pragma once

#include <cstdint>
#include <optional>

#include "core/device_record.h"

namespace torvik {

struct ActivationSettings {
    std::uint8_t adapterType = 1;
    std::uint32_t baudRate = 1'000'000;
    std::uint32_t bufferSize = largestBufferLength;
    std::uint32_t commandCanId = 0x100;
    std::uint32_t answerCanId = 0x101;
    std::uint32_t flags = 0x10;
};

// One activation. What the devices share is done under the lifecycle lock; the device's own answers are waited for
// without it, so that a silent device holds up nobody else. The caller's call is inside the record in both steps.
class Activation {
  public:
    Activation(std::uint8_t deviceNo, const ActivationSettings& settings) : deviceNo_(deviceNo), settings_(settings) {}
    Activation(const Activation&) = delete;
    Activation& operator=(const Activation&) = delete;

    // By then the lifecycle lock has to be obtained, and by then other calls have to leave for the adapter to be
    // opened.
    platform::TimePoint deadline() const { return deadline_; }

    // Opens the adapter if need be and takes the record.
    // Result: 0; -1 with lastError set.
    std::int32_t begin() REQUIRES(lifecycleMutex);

    // Asks the device all that is needed. Result: 0; -1 with lastError set.
    std::int32_t complete(std::uint32_t& channelCount);

    // To be called last, inside no record: closes the adapter when the device could not be set up, no other one is
    // active and no other activation is under way.
    void finish();

  private:
    std::uint8_t deviceNo_;
    ActivationSettings settings_;
    platform::TimePoint deadline_ = platform::deadlineAfter(mutexLimit);
    std::uint16_t openedWith_ = 0;  // baud code; 0 when the adapter was open
    std::uint32_t setUpCount_ = 0;  // tells the record from what a release and another activation make of it
    bool counted_ = false;          // among the activations in progress
    bool setUpFailed_ = false;
};

// The end of holding the lifecycle lock, which has been obtained. First carries out the releases that did not get it in
// time, and closes the adapter after a failed activation if nobody uses it.
class SCOPED_CAPABILITY LifecycleLock {
  public:
    // `deadline`: the release's own, up to which it may wait for what it does for others; nothing: 10000 ms from the
    // end.
    explicit LifecycleLock(std::optional<platform::TimePoint> deadline = {}) REQUIRES(lifecycleMutex)
        : deadline_(deadline) {}
    ~LifecycleLock() RELEASE();
    LifecycleLock(const LifecycleLock&) = delete;
    LifecycleLock& operator=(const LifecycleLock&) = delete;

  private:
    std::optional<platform::TimePoint> deadline_;
};

// Both releases return within 10000 ms, whatever other calls do. A call that is still inside a record afterwards keeps
// the record closed and its filter object alive until it leaves.

// Closes one device 1..40; 40 and inactive devices only count down initialisedDevices.
void releaseDevice(std::uint8_t deviceNo);

// Closes all devices and the adapter.
void releaseAll();

// A forked child of the process that opened the adapter: it has none of its parent's threads, may have inherited any
// lock locked, and must leave the adapter alone.
bool adapterIsInherited();

// For the unloading of the library: ends everything that runs, without closing the adapter's channel.
void shutDown();

}  // namespace torvik
