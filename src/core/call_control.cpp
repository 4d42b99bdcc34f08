#include "core/call_control.h"

#include "core/device_table.h"
#include "core/transaction.h"

namespace torvik {

void beginExclusion(DeviceRecord& record) {
    record.gate.close();
    wakeCalls(record);
}

void endExclusion(DeviceRecord& record) {
    record.gate.open();
}

namespace {

bool obtainFilter(DeviceRecord& record) {
    const platform::LockGuard lock(record.busyLock);
    while (!callMustEnd(record)) {
        if (!record.filterInUse) return record.filterInUse = true;
        record.filterFreed.waitFor(record.busyLock, std::chrono::seconds(1));
    }
    return false;
}

}  // namespace

FilterUse::FilterUse(DeviceRecord& record) : record_(record), granted_(obtainFilter(record)) {}

FilterUse::~FilterUse() {
    if (!granted_) return;
    {
        const platform::LockGuard lock(record_.busyLock);
        record_.filterInUse = false;
    }
    record_.filterFreed.notifyOne();
}

CallsExcluded::CallsExcluded(DeviceRecord& record, bool ownCall) : record_(record) {
    beginExclusion(record_);
    record_.gate.waitUntilLeft(ownCall ? 1 : 0);
}

CallsExcluded::~CallsExcluded() {
    endExclusion(record_);
}

AllCallsExcluded::AllCallsExcluded(const DeviceRecord* own) {
    for (DeviceRecord& record : deviceTable())
        beginExclusion(record);
    for (DeviceRecord& record : deviceTable()) {
        // The static analyser takes it that a record could be where null points.
        const bool ownCall = own != nullptr && &record == own;
        record.gate.waitUntilLeft(ownCall ? 1 : 0);
    }
}

AllCallsExcluded::~AllCallsExcluded() {
    for (DeviceRecord& record : deviceTable())
        endExclusion(record);
}

}  // namespace torvik
