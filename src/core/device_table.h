// The fixed table of devices, their last errors, and which device a received frame belongs to.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "core/device_record.h"
#include "core/library_state.h"

namespace torvik {

inline constexpr std::uint8_t deviceLimit = 40;

// Device numbers at the exports are taken by their low 8 bits.
constexpr std::uint8_t deviceNumber(std::int32_t deviceNo) {
    return static_cast<std::uint8_t>(deviceNo & 0xFF);
}

// Never destroyed: other threads may be anywhere when the process ends, and may own any lock.
union StaticTable {
    constexpr StaticTable() : records{} {}
    ~StaticTable() {}  // NOLINT(modernize-use-equals-default): that would be deleted
    std::array<DeviceRecord, deviceLimit> records;
};
extern constinit StaticTable staticTable;

inline std::array<DeviceRecord, deviceLimit>& deviceTable() {
    return staticTable.records;
}

// The record of a device number 0..39.
inline DeviceRecord& deviceRecord(std::uint8_t deviceNo) {
    return deviceTable()[deviceNo];
}

// The last error of any device number 0..255; 40..255 share one place.
std::atomic<std::uint32_t>& lastErrorOf(std::uint8_t deviceNo);
void setError(std::uint8_t deviceNo, std::uint32_t code);
void setError(DeviceRecord& record, std::uint32_t code);

// The first active record whose answer or value identifier this is; null: none.
DeviceRecord* findReceiver(std::uint32_t identifier) REQUIRES(answerMutex);

// To be called after a change of a record's identifiers, and after active was set. Clearing active needs no call:
// findReceiver passes over the route of a record that is not active any more, and looks at all records.
void updateRoutes() REQUIRES(answerMutex);

// Fills a record with zeros and lets the receive thread start afresh with it. No call may be inside the record. False:
// a mutex could not be obtained by the deadline, and the record is not completely zeroed.
bool zeroRecord(DeviceRecord& record, platform::TimePoint deadline = platform::deadlineAfter(mutexLimit));

// Destroys the record's filter object, if any, and forgets it.
void destroyFilterObject(DeviceRecord& record);

}  // namespace torvik
