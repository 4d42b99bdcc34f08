#include "core/call_control.h"

#include <algorithm>

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

void endRelease(DeviceRecord& record) {
    if (record.gate.leaveToLastCall()) return;
    destroyFilterObject(record);
    endExclusion(record);
}

bool callsLeft(DeviceRecord& record, std::uint32_t own, platform::TimePoint deadline) {
    return record.gate.leftToLastCall() || record.gate.waitUntilLeft(own, deadline);
}

void finishRelease(DeviceRecord& record) {
    if (!record.gate.claimAsLastCall()) return;
    destroyFilterObject(record);
    record.gate.finished();
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

CallsExcluded::CallsExcluded(DeviceRecord& record, platform::TimePoint deadline) : record_(record) {
    beginExclusion(record_);
    alone_ = callsLeft(record_, 1, deadline);
}

CallsExcluded::~CallsExcluded() {
    endExclusion(record_);
}

AllCallsExcluded::AllCallsExcluded(const DeviceRecord& own, platform::TimePoint deadline) {
    for (DeviceRecord& record : deviceTable())
        beginExclusion(record);
    alone_ = std::ranges::all_of(
        deviceTable(), [&](DeviceRecord& record) { return callsLeft(record, &record == &own ? 1 : 0, deadline); });
}

AllCallsExcluded::~AllCallsExcluded() {
    for (DeviceRecord& record : deviceTable())
        endExclusion(record);
}

}  // namespace torvik
