#include "platform/timed_mutex.h"

#include "platform/faults.h"

namespace torvik::platform {

std::uint32_t TimedMutex::create() {
    if (const std::uint32_t error = injectedFault(FaultPoint::mutexCreate); error != 0) return error;
    {
        const LockGuard guard(waiting_);
        state_.store(generation() + holdBits + 1, std::memory_order_release);
    }
    exists_.store(true, std::memory_order_release);
    released_.notifyAll();
    return 0;
}

// Leaves the mutex contended. True: it was free and is the caller's now.
bool TimedMutex::lockContended() {
    std::uint32_t seen = state_.load(std::memory_order_relaxed);
    while (!state_.compare_exchange_weak(seen, generationOf(seen) | contended, std::memory_order_acquire,
                                         std::memory_order_relaxed)) {
    }
    return holdOf(seen) == free;
}

bool TimedMutex::lockSlowly(TimePoint deadline) {
    LockGuard guard(waiting_);
    // The last look comes after the last wait: a wake-up that arrives together with the deadline is not lost.
    for (bool inTime = true;; inTime = released_.waitUntil(waiting_, deadline)) {
        if (lockContended()) return true;
        if (!inTime) return false;
    }
}

void TimedMutex::unlockContended(std::uint32_t generation) {
    std::uint32_t expected = generation | contended;
    // Otherwise it is a later mutex's, which has owners of its own.
    if (!state_.compare_exchange_strong(expected, generation | free, std::memory_order_release,
                                        std::memory_order_relaxed)) {
        return;
    }
    { LockGuard guard(waiting_); }
    released_.notifyOne();
}

}  // namespace torvik::platform
