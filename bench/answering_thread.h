// An amplifier that answers every command after a fixed time.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

#include "frames.h"
#include "memory_adapter.h"
#include "platform/sync.h"

namespace torvik::bench {

// The time runs from the write to the arrival in the adapter's queue. The thread watches the clock without sleeping, so
// that the answer is not late. The answers carry 1, 2, 3...
class AnsweringThread {
  public:
    using Clock = MemoryAdapter::Clock;

    AnsweringThread(std::uint8_t deviceNo, std::chrono::microseconds delay)
        : delay_(delay),
          seen_(MemoryAdapter::instance().commands()),
          thread_([=, this](const std::stop_token& stop) { run(stop, deviceNo); }) {}

    // Lets the thread hand over to the caller after the same time, by the library's own mutex and condition and nothing
    // else. Result: when it did.
    Clock::time_point awaitHandOff() {
        handedOver_ = false;
        wanted_.store(true, std::memory_order_release);
        platform::LockGuard lock(mutex_);
        while (!handedOver_)
            changed_.waitFor(mutex_, std::chrono::seconds(1));
        return handedOverAt_;
    }

  private:
    void run(const std::stop_token& stop, std::uint8_t deviceNo) {
        MemoryAdapter& adapter = MemoryAdapter::instance();
        PcanMessage answer;
        answer.id = answerIdOf(deviceNo);
        answer.length = 8;
        answer.data = {0x46};
        while (!stop.stop_requested()) {
            if (adapter.commands() != seen_) {
                ++seen_;
                ++answer.data[5];
                waitUntil(adapter.commandAt() + delay_);
                adapter.queue({&answer, 1});
                adapter.signal();
            } else if (wanted_.exchange(false, std::memory_order_acquire)) {
                waitUntil(Clock::now() + delay_);
                handOver();
            }
        }
    }

    static void waitUntil(Clock::time_point time) {
        while (Clock::now() < time) {
        }
    }

    void handOver() {
        const Clock::time_point now = Clock::now();
        {
            platform::LockGuard lock(mutex_);
            handedOverAt_ = now;
            handedOver_ = true;
        }
        changed_.notifyOne();
    }

    std::chrono::microseconds delay_;
    std::uint32_t seen_;
    std::atomic<bool> wanted_ = false;
    platform::Mutex mutex_;
    platform::Condition changed_;
    std::atomic<bool> handedOver_ = false;
    Clock::time_point handedOverAt_ GUARDED_BY(mutex_);
    std::jthread thread_;
};

}  // namespace torvik::bench
