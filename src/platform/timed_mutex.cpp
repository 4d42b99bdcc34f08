#include "platform/timed_mutex.h"

#include "platform/faults.h"

namespace torvik::platform {

std::uint32_t TimedMutex::create() {
    if (const std::uint32_t error = injectedFault(FaultPoint::mutexCreate); error != 0) return error;
    exists_.store(true, std::memory_order_release);
    return 0;
}

bool TimedMutex::lockSlowly(std::chrono::milliseconds limit) {
    const TimePoint deadline = clock().now() + limit;
    LockGuard guard(waiting_);
    // The last look comes after the last wait: a wake-up that arrives together with the deadline is not lost.
    for (bool inTime = true;; inTime = released_.waitUntil(waiting_, deadline)) {
        if (state_.exchange(contended, std::memory_order_acquire) == free) return true;
        if (!inTime) return false;
    }
}

void TimedMutex::wakeOne() {
    { LockGuard guard(waiting_); }
    released_.notifyOne();
}

}  // namespace torvik::platform
