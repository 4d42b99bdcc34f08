// An amplifier that answers every command after a fixed time.
#pragma once

#include <chrono>
#include <cstdint>
#include <thread>

#include "frames.h"
#include "memory_adapter.h"

namespace torvik::bench {

// The time runs from the write to the arrival in the adapter's queue. The thread watches the clock without sleeping, so
// that the answer is not late. The answers carry 1, 2, 3...
class AnsweringThread {
  public:
    AnsweringThread(std::uint8_t deviceNo, std::chrono::microseconds delay)
        : thread_([=, seen = MemoryAdapter::instance().commands()](const std::stop_token& stop) {
              run(stop, deviceNo, delay, seen);
          }) {}

  private:
    static void run(const std::stop_token& stop, std::uint8_t deviceNo, std::chrono::microseconds delay,
                    std::uint32_t seen) {
        MemoryAdapter& adapter = MemoryAdapter::instance();
        PcanMessage answer;
        answer.id = answerIdOf(deviceNo);
        answer.length = 8;
        answer.data = {0x46};
        while (!stop.stop_requested()) {
            if (adapter.commands() == seen) continue;
            ++seen;
            while (MemoryAdapter::Clock::now() < adapter.commandAt() + delay) {
            }
            ++answer.data[5];
            adapter.queue({&answer, 1});
            adapter.signal();
        }
    }

    std::jthread thread_;
};

}  // namespace torvik::bench
