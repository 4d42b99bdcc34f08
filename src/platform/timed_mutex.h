// A mutex that can be waited for with a time limit by the current clock. Locking a free one is a single atomic
// exchange.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "platform/sync.h"

namespace torvik::platform {

class CAPABILITY("mutex") TimedMutex {
  public:
    constexpr TimedMutex() = default;
    TimedMutex(const TimedMutex&) = delete;
    TimedMutex& operator=(const TimedMutex&) = delete;

    // A mutex that has not been created, or is closed, cannot be locked. Result of create: 0 or the system's error.
    std::uint32_t create();
    void close() { exists_.store(false, std::memory_order_release); }
    bool exists() const { return exists_.load(std::memory_order_acquire); }

    bool lockFor(std::chrono::milliseconds limit) TRY_ACQUIRE(true) {
        if (!exists()) return false;
        std::uint32_t expected = free;
        if (state_.compare_exchange_strong(expected, locked, std::memory_order_acquire, std::memory_order_relaxed)) {
            return true;
        }
        return lockSlowly(limit);
    }

    void unlock() RELEASE() {
        if (state_.exchange(free, std::memory_order_release) == contended) wakeOne();
    }

  private:
    static constexpr std::uint32_t free = 0;
    static constexpr std::uint32_t locked = 1;
    static constexpr std::uint32_t contended = 2;  // locked, and somebody may be waiting

    bool lockSlowly(std::chrono::milliseconds limit);
    void wakeOne();

    std::atomic<std::uint32_t> state_ = free;
    std::atomic<bool> exists_ = false;
    Mutex waiting_;
    Condition released_;
};

// Releases a mutex that has been locked.
class SCOPED_CAPABILITY TimedLock {
  public:
    explicit TimedLock(TimedMutex& mutex) REQUIRES(mutex) : mutex_(mutex) {}
    ~TimedLock() RELEASE() { mutex_.unlock(); }
    TimedLock(const TimedLock&) = delete;
    TimedLock& operator=(const TimedLock&) = delete;

  private:
    TimedMutex& mutex_;
};

}  // namespace torvik::platform
