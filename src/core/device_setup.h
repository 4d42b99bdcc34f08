// Making a record an active device, and taking it out of use.
#pragma once

#include <cstdint>

#include "core/device_record.h"

namespace torvik {

// Sets a record up and asks its device for value identifier, firmware version and channel count. The caller's own call
// is inside the record. Result: the record; null with lastError set.
DeviceRecord* setUpDevice(std::uint8_t deviceNo, std::uint32_t commandCanId, std::uint32_t answerCanId)
    REQUIRES(lifecycleMutex);

// Takes a record out of use and frees its value buffers. Does not count it out of initialisedDevices.
void tearDownDevice(DeviceRecord& record);

// Reads the device's mode word; a refusal is reported as 0x30000105. Result: 0 or -1 with lastError set.
std::int32_t readMode(std::uint8_t deviceNo, std::uint32_t& mode);

}  // namespace torvik
