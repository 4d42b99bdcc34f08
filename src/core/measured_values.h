// Reading the measured values out of a device's buffers. Channel numbers are checked by the callers.
#pragma once

#include <cstdint>
#include <span>

#include "core/device_record.h"

namespace torvik {

// Takes the oldest value of channel 1..8, scaled; 0.0 when nothing is waiting.
// Result: 1 value, 0 nothing waiting, -1 with lastError set.
std::int32_t readValue(DeviceRecord& record, std::uint32_t channel, double& value);

// Takes up to values.size() values of channel 1..7. `status` may be null. Result: as readValue.
std::int32_t readChannel(DeviceRecord& record, std::uint32_t channel, std::span<double> values, std::int32_t& countRead,
                         std::uint32_t* status);

// Takes whole sets, channel after channel. Result: as readValue.
std::int32_t readSets(DeviceRecord& record, std::span<double> values, std::int32_t& countRead, std::uint32_t* status);

// Number of waiting values: channel 0 the smallest, a channel behind the last the largest of all channels' counts.
// False: lastError is set.
bool countValues(DeviceRecord& record, std::uint32_t channel, std::int32_t& count);

// False: the record is not active or valueMutex was not obtained.
bool clearValueBuffers(DeviceRecord& record);

}  // namespace torvik
