// Opening and closing devices.
#pragma once

#include <cstdint>

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

    // Opens the adapter if need be and takes the record. Result: 0; -1 with lastError set.
    std::int32_t begin() REQUIRES(lifecycleMutex);

    // Asks the device all that is needed. Result: 0; -1 with lastError set.
    std::int32_t complete(std::uint32_t& channelCount);

    // To be called last, inside no record: closes the adapter when the device could not be set up, no other one is
    // active and no other activation is under way.
    void finish();

  private:
    std::uint8_t deviceNo_;
    ActivationSettings settings_;
    std::uint16_t openedWith_ = 0;  // baud code; 0 when the adapter was open
    std::uint32_t setUpCount_ = 0;  // tells the record from what a release and another activation make of it
    bool counted_ = false;          // among the activations in progress
    bool setUpFailed_ = false;
};

// Closes one device 1..40; 40 and inactive devices only count down initialisedDevices.
void releaseDevice(std::uint8_t deviceNo);

// Closes all devices and the adapter.
void releaseAll();

// For the unloading of the library: ends everything that runs, without closing the adapter's channel.
void shutDown();

}  // namespace torvik
