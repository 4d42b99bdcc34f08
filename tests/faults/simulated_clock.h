// Time that jumps from one event to the next, so that minutes of time-outs pass at once and in the same way every time.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <map>

#include "platform/sync.h"

namespace torvik::test {

// The current clock while it lives. The thread inside a SimulatedCall is the only one to which anything happens: when
// it waits, the next event comes, or its deadline. All other threads live on real time.
class SimulatedClock final : public platform::Clock {
  public:
    SimulatedClock();
    ~SimulatedClock();
    SimulatedClock(const SimulatedClock&) = delete;
    SimulatedClock& operator=(const SimulatedClock&) = delete;

    platform::TimePoint now() override { return now_; }
    bool waitUntil(platform::Condition& condition, platform::Mutex& mutex, platform::TimePoint deadline) override
        REQUIRES(mutex);

    // Runs `action` inside a wait of the call, or in letPass, when its time has come.
    void schedule(std::chrono::milliseconds delay, std::function<void()> action);

    // What is still scheduled comes, up to this time from now.
    void letPass(std::chrono::milliseconds duration);
    void forgetEvents() { events_.clear(); }

    std::chrono::milliseconds since(platform::TimePoint begin) const;

  private:
    void runFirst();

    std::atomic<platform::TimePoint> now_;
    std::multimap<platform::TimePoint, std::function<void()>> events_;
};

// While it lives, its thread lives on the simulated time.
class SimulatedCall {
  public:
    SimulatedCall();
    ~SimulatedCall();
    SimulatedCall(const SimulatedCall&) = delete;
    SimulatedCall& operator=(const SimulatedCall&) = delete;
};

}  // namespace torvik::test
