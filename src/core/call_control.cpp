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
