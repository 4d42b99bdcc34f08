// Keeps calls out of device records while these are opened, closed or wiped.
#pragma once

#include "core/device_record.h"

namespace torvik {

// Turns new calls of one record away and wakes those that wait inside.
void beginExclusion(DeviceRecord& record);
void endExclusion(DeviceRecord& record);

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
