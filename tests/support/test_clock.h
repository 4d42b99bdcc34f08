// Time that passes only when a test says so.
#pragma once

#include <chrono>
#include <future>
#include <mutex>
#include <optional>
#include <set>

#include "platform/sync.h"

namespace torvik::test {

// The current clock while it lives. Waits look up every millisecond of real time, so that they notice advance().
class TestClock final : public platform::Clock {
  public:
    TestClock();
    ~TestClock();
    TestClock(const TestClock&) = delete;
    TestClock& operator=(const TestClock&) = delete;

    platform::TimePoint now() override;
    bool waitUntil(platform::Condition& condition, platform::Mutex& mutex, platform::TimePoint deadline) override
        REQUIRES(mutex);

    void advance(platform::Duration duration);

    // Lets the earliest deadline that somebody waits for come; nothing when nobody waits.
    void advanceToEarliestDeadline();

    // How far away the earliest deadline is that somebody waits for; nothing when nobody waits.
    std::optional<platform::Duration> untilEarliestDeadline();

    // Returns once at least `waiting` calls wait. False: they have not within ten seconds of real time.
    bool untilWaiting(std::size_t waiting = 1);

    // What has passed since the clock was made.
    std::chrono::milliseconds elapsed();

  private:
    std::mutex mutex_;
    platform::TimePoint start_;
    platform::TimePoint now_;
    std::multiset<platform::TimePoint> deadlines_;
};

// Runs `call` in a thread of its own and lets every deadline it waits for come. Result: what `call` returns.
template <class Call>
auto runWithTimeouts(TestClock& clock, Call call) {
    auto result = std::async(std::launch::async, call);
    while (result.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready)
        clock.advanceToEarliestDeadline();
    return result.get();
}

}  // namespace torvik::test
