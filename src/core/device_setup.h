// Making a record an active device, and taking it out of use.
#pragma once

#include <cstdint>

#include "core/device_record.h"

namespace torvik {

// Checks number and identifiers and makes the record the device's: zeroed, with its buffers and identifiers, active.
// The caller's own call is inside the record.
// Result: the record; null with lastError set, 0x30000112 when other calls or the owner of a mutex kept it to the
// deadline.
DeviceRecord* reserveRecord(std::uint8_t deviceNo, std::uint32_t commandCanId, std::uint32_t answerCanId)
    REQUIRES(lifecycleMutex);

// Asks the device for value identifier, firmware version and channel count. False: lastError is set and the record is
// taken down again.
bool setUpDevice(DeviceRecord& record, std::uint8_t deviceNo);

// Takes a record out of use and frees its value buffers. Does not count it out of initialisedDevices.
void tearDownDevice(DeviceRecord& record, platform::TimePoint deadline = platform::deadlineAfter(mutexLimit));

// Reads the device's mode word; a refusal is reported as 0x30000105. Result: 0 or -1 with lastError set.
std::int32_t readMode(std::uint8_t deviceNo, std::uint32_t& mode);

}  // namespace torvik
