#include "core/device_table.h"

#include <algorithm>

namespace torvik {

namespace {

constexpr std::size_t standardIdentifiers = 2048;
constexpr std::uint8_t noRoute = 0xFF;

constinit std::atomic<std::uint32_t> lastErrorOutsideTable = 0;

// First active record for each 11-bit identifier, so that routing does not walk the table for every frame.
constinit std::array<std::uint8_t, standardIdentifiers> routes = [] {
    std::array<std::uint8_t, standardIdentifiers> none{};
    none.fill(noRoute);
    return none;
}();

bool receives(const DeviceRecord& record, std::uint32_t identifier) {
    return record.active && (record.answerCanId == identifier || record.valueCanId == identifier);
}

void zeroRouting(DeviceRecord& record) NO_THREAD_SAFETY_ANALYSIS {
    record.commandCanId = 0;
    record.answerCanId = 0;
    record.valueCanId = 0;
    record.active = false;
    record.answerRing = {};
    record.answerWriteIndex = 0;
    record.answerReadIndex = 0;
    record.answersDiscarded.add(record.answerCount.exchange(0));
    ++record.setUpCount;
    updateRoutes();
}

void zeroValues(DeviceRecord& record) NO_THREAD_SAFETY_ANALYSIS {
    for (ValueBuffer& buffer : record.valueBuffer) {
        record.valuesCleared.add(static_cast<std::uint64_t>(buffer.count));
        // An owner of the mutex that comes back after all still uses them: they are left behind.
        if (valueMutex.abandoned()) static_cast<void>(buffer.entries.release());
        buffer = {};
    }
    record.lastValueType = ValueType::unknown;
}

}  // namespace

constinit StaticTable staticTable;

std::atomic<std::uint32_t>& lastErrorOf(std::uint8_t deviceNo) {
    return deviceNo < deviceLimit ? deviceTable()[deviceNo].lastError : lastErrorOutsideTable;
}

void setError(std::uint8_t deviceNo, std::uint32_t code) {
    lastErrorOf(deviceNo).exchange(code);
}

void setError(DeviceRecord& record, std::uint32_t code) {
    record.lastError.exchange(code);
}

DeviceRecord* findReceiver(std::uint32_t identifier) {
    if (identifier < standardIdentifiers) {
        const std::uint8_t deviceNo = routes[identifier];
        if (deviceNo == noRoute) return nullptr;
        if (receives(deviceTable()[deviceNo], identifier)) [[likely]]
            return &deviceTable()[deviceNo];
    }
    const auto found = std::ranges::find_if(
        deviceTable(), [identifier](const DeviceRecord& record) { return receives(record, identifier); });
    return found == deviceTable().end() ? nullptr : &*found;
}

void updateRoutes() {
    routes.fill(noRoute);
    // Backwards, so that the lowest device number wins.
    for (std::uint8_t deviceNo = deviceLimit; deviceNo-- > 0;) {
        const DeviceRecord& record = deviceTable()[deviceNo];
        if (!record.active) continue;
        if (record.answerCanId < standardIdentifiers) routes[record.answerCanId] = deviceNo;
        if (record.valueCanId < standardIdentifiers) routes[record.valueCanId] = deviceNo;
    }
}

bool zeroRecord(DeviceRecord& record, platform::TimePoint deadline) {
    destroyFilterObject(record);
    record.channelHandle = 0;
    record.ownDeviceNo = 0;
    record.baudCode = 0;
    record.activeChannels = 0;
    record.firmwareVersion = 0;
    record.transmitting = false;
    record.newValues = false;
    record.lastError = 0;
    record.busy = false;
    record.keepLock = false;
    return exclusively(answerMutex, deadline, [&record] { zeroRouting(record); }) &&
           exclusively(valueMutex, deadline, [&record] { zeroValues(record); });
}

void destroyFilterObject(DeviceRecord& record) {
    std::unique_ptr<FilterObject> object;
    // The last call of a release and an opening of the adapter may come here together.
    const platform::LockGuard lock(record.busyLock);
    object.swap(record.filterObject);
}

}  // namespace torvik
