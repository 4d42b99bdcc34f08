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

// Activates a device number 0..39 whose record the caller's call is inside of. Result: 0; -1 with lastError set.
std::int32_t activateDevice(std::uint8_t deviceNo, const ActivationSettings& settings, std::uint32_t& channelCount)
    REQUIRES(lifecycleMutex);

// Closes one device 1..40; 40 and inactive devices only count down initialisedDevices.
void releaseDevice(std::uint8_t deviceNo);

// Closes all devices and the adapter.
void releaseAll();

// For the unloading of the library: ends everything that runs, without closing the adapter's channel.
void shutDown();

}  // namespace torvik
