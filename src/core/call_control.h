// Keeps calls out of device records while these are opened, closed or wiped.
#pragma once

#include "core/device_record.h"

namespace torvik {

// Turns new calls of one record away and wakes those that wait inside.
void beginExclusion(DeviceRecord& record);
void endExclusion(DeviceRecord& record);

// Ends the exclusion of a record that has been taken out of use. A call that is still inside uses the filter object:
// the last one to leave destroys it and lets new calls in.
void endRelease(DeviceRecord& record);

// False: a call other than the `own` ones of the caller is inside the record, and has not left by the deadline. A call
// that an earlier release has given up is not waited for again.
bool callsLeft(DeviceRecord& record, std::uint32_t own, platform::TimePoint deadline);

// Whether the record is being released or the library unloaded. A call that computes or reads files for long asks
// often, and ends as soon as this is true; its failure is reported as 0x30000113.
inline bool callMustEnd(const DeviceRecord& record) {
    return record.gate.closing();
}

// For a call that has left the record, or was turned away: finishes a release that did not wait for it.
void finishRelease(DeviceRecord& record);

class FinishReleaseAtEnd {
  public:
    // `record` may be null.
    explicit FinishReleaseAtEnd(DeviceRecord* record) : record_(record) {}
    ~FinishReleaseAtEnd() {
        if (record_ != nullptr && record_->gate.closing()) [[unlikely]]
            finishRelease(*record_);
    }
    FinishReleaseAtEnd(const FinishReleaseAtEnd&) = delete;
    FinishReleaseAtEnd& operator=(const FinishReleaseAtEnd&) = delete;

  private:
    DeviceRecord* record_;
};

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

// While it lives, new calls of the record are turned away; alone(): nobody but the caller's own call is inside.
class CallsExcluded {
  public:
    CallsExcluded(DeviceRecord& record, platform::TimePoint deadline);
    ~CallsExcluded();
    CallsExcluded(const CallsExcluded&) = delete;
    CallsExcluded& operator=(const CallsExcluded&) = delete;

    bool alone() const { return alone_; }

  private:
    DeviceRecord& record_;
    bool alone_;
};

// The same for all records; `own` is the record that the caller's own call is inside of. Calls that an earlier release
// has given up do not count.
class AllCallsExcluded {
  public:
    AllCallsExcluded(const DeviceRecord& own, platform::TimePoint deadline);
    ~AllCallsExcluded();
    AllCallsExcluded(const AllCallsExcluded&) = delete;
    AllCallsExcluded& operator=(const AllCallsExcluded&) = delete;

    bool alone() const { return alone_; }

  private:
    bool alone_;
};

}  // namespace torvik
