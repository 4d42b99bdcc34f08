// Mutex and condition of the operating system. Both are constant-initialised and need no destruction, so that static
// ones can be used at any time, also while the process ends.
#pragma once

#include "native_sync.h"
#include "platform/clock.h"
#include "platform/thread_annotations.h"

namespace torvik::platform {

class CAPABILITY("mutex") Mutex {
  public:
    constexpr Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() ACQUIRE();
    void unlock() RELEASE();

  private:
    friend class Condition;
    NativeMutex native_{};
};

class Condition {
  public:
    constexpr Condition() = default;
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;

    void notifyOne();
    void notifyAll();

    // Waits by the current clock; may return early. Result: false when the deadline has come.
    bool waitUntil(Mutex& mutex, TimePoint deadline) REQUIRES(mutex);

    // Waits by the system's clock; may return early.
    void waitFor(Mutex& mutex, Duration duration) REQUIRES(mutex);

  private:
    NativeCondition native_{};
};

// The one place where waiting meets time. The library uses the system's monotonic clock unless a test has set another.
class Clock {
  public:
    virtual TimePoint now() = 0;
    // Waits, with `mutex` released meanwhile, until `condition` is notified or `deadline` has come. May return early.
    // Result: false when the deadline has come.
    virtual bool waitUntil(Condition& condition, Mutex& mutex, TimePoint deadline) REQUIRES(mutex) = 0;

  protected:
    ~Clock() = default;
};

// The current clock.
Clock& clock();

// Takes effect for waits that begin afterwards. Null: the system's clock again.
void setClock(Clock* replacement);

// By the current clock; what is left of the time to a deadline is never negative.
inline TimePoint deadlineAfter(std::chrono::milliseconds limit) {
    return clock().now() + limit;
}
inline std::chrono::milliseconds timeUntil(TimePoint deadline) {
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(deadline - clock().now());
    return rest > rest.zero() ? rest : rest.zero();
}

inline bool Condition::waitUntil(Mutex& mutex, TimePoint deadline) {
    return clock().waitUntil(*this, mutex, deadline);
}

class SCOPED_CAPABILITY LockGuard {
  public:
    explicit LockGuard(Mutex& mutex) ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~LockGuard() RELEASE() { mutex_.unlock(); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

  private:
    Mutex& mutex_;
};

}  // namespace torvik::platform
