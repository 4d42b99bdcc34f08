#include <atomic>

#include "platform/sync.h"

namespace torvik::platform {

namespace {

class SystemClock final : public Clock {
  public:
    TimePoint now() override { return systemNow(); }
    bool waitUntil(Condition& condition, Mutex& mutex, TimePoint deadline) override REQUIRES(mutex) {
        const TimePoint before = systemNow();
        if (before >= deadline) return false;
        condition.waitFor(mutex, deadline - before);
        return systemNow() < deadline;
    }
};

constinit SystemClock systemClock;
constinit std::atomic<Clock*> currentClock = &systemClock;

}  // namespace

Clock& clock() {
    return *currentClock.load(std::memory_order_acquire);
}

void setClock(Clock* replacement) {
    currentClock.store(replacement != nullptr ? replacement : &systemClock, std::memory_order_release);
}

}  // namespace torvik::platform
