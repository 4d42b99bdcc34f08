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
    constexpr explicit TimedMutex(bool exists) : exists_(exists) {}
    TimedMutex(const TimedMutex&) = delete;
    TimedMutex& operator=(const TimedMutex&) = delete;

    // A mutex that has not been created, or is closed, cannot be locked. A created one is free: an owner of the former
    // one, which may have died, has nothing to do with it. Result of create: 0 or the system's error.
    std::uint32_t create();
    void close() { exists_.store(false, std::memory_order_release); }
    bool exists() const { return exists_.load(std::memory_order_acquire); }

    // Closed while it was locked, and its owner has not come back.
    bool abandoned() const { return !exists() && holdOf(state_.load(std::memory_order_acquire)) != free; }

    bool lockFor(std::chrono::milliseconds limit) TRY_ACQUIRE(true) {
        return exists() && (lockFree() || lockSlowly(clock().now() + limit));
    }

    bool lockUntil(TimePoint deadline) TRY_ACQUIRE(true) { return exists() && (lockFree() || lockSlowly(deadline)); }

    // Counts the creations. An owner unlocks the mutex of the generation that it has locked, and no later one.
    std::uint32_t generation() const { return generationOf(state_.load(std::memory_order_relaxed)); }

    void unlock(std::uint32_t generation) RELEASE() {
        std::uint32_t expected = generation | locked;
        if (state_.compare_exchange_strong(expected, generation | free, std::memory_order_release,
                                           std::memory_order_relaxed)) {
            return;
        }
        unlockContended(generation);
    }

  private:
    // The state is one of these three; the bits above them are the generation.
    static constexpr std::uint32_t free = 0;
    static constexpr std::uint32_t locked = 1;
    static constexpr std::uint32_t contended = 2;  // locked, and somebody may be waiting
    static constexpr std::uint32_t holdBits = 3;

    static constexpr std::uint32_t holdOf(std::uint32_t state) { return state & holdBits; }
    static constexpr std::uint32_t generationOf(std::uint32_t state) { return state & ~holdBits; }

    bool lockFree() {
        std::uint32_t expected = generation() | free;
        return state_.compare_exchange_strong(expected, expected | locked, std::memory_order_acquire,
                                              std::memory_order_relaxed);
    }

    bool lockContended();
    bool lockSlowly(TimePoint deadline);
    void unlockContended(std::uint32_t generation);

    std::atomic<std::uint32_t> state_ = free;
    std::atomic<bool> exists_ = false;
    Mutex waiting_;
    Condition released_;
};

// Releases a mutex that has just been locked.
class SCOPED_CAPABILITY TimedLock {
  public:
    explicit TimedLock(TimedMutex& mutex) REQUIRES(mutex) : mutex_(mutex), generation_(mutex.generation()) {}
    ~TimedLock() RELEASE() { mutex_.unlock(generation_); }
    TimedLock(const TimedLock&) = delete;
    TimedLock& operator=(const TimedLock&) = delete;

  private:
    TimedMutex& mutex_;
    std::uint32_t generation_;
};

}  // namespace torvik::platform
