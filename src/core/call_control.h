// Keeps calls out of device records while these are opened, closed or wiped.
#pragma once

#include "core/device_record.h"

namespace torvik {

// Turns new calls of one record away and wakes those that wait inside.
void beginExclusion(DeviceRecord& record);
void endExclusion(DeviceRecord& record);

// Whether the record is being released or the library unloaded. A call that computes or reads files for long asks
// often, and ends as soon as this is true; its failure is reported as 0x30000113.
inline bool callMustEnd(const DeviceRecord& record) {
    return record.gate.closing();
}

// One design or simulation at a time with the filter object of a device. The caller's call is inside the record.
class FilterUse {
  public:
    // Waits for its turn, and gives it up when the call must end.
    explicit FilterUse(DeviceRecord& record);
    ~FilterUse();
    FilterUse(const FilterUse&) = delete;
    FilterUse& operator=(const FilterUse&) = delete;

    bool granted() const { return granted_; }
    DeviceRecord& record() const { return record_; }

  private:
    DeviceRecord& record_;
    bool granted_;
};

// While it lives, nobody but the caller's own call (`ownCall`) is inside the record.
class CallsExcluded {
  public:
    CallsExcluded(DeviceRecord& record, bool ownCall);
    ~CallsExcluded();
    CallsExcluded(const CallsExcluded&) = delete;
    CallsExcluded& operator=(const CallsExcluded&) = delete;

  private:
    DeviceRecord& record_;
};

// The same for all records; `own` is the record that the caller's own call is inside of, or null.
class AllCallsExcluded {
  public:
    explicit AllCallsExcluded(const DeviceRecord* own);
    ~AllCallsExcluded();
    AllCallsExcluded(const AllCallsExcluded&) = delete;
    AllCallsExcluded& operator=(const AllCallsExcluded&) = delete;
};

}  // namespace torvik
