// An adapter library inside the benchmark program whose receive queue lies in memory: linking it takes the place of
// loading one. Its entry points are called through the library's own binding, as any adapter's.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "can/pcan_api.h"
#include "support/adapter_entry_points.h"

namespace torvik::bench {

class MemoryAdapter : public test::AdapterDefaults {
  public:
    using Clock = std::chrono::steady_clock;

    static MemoryAdapter& instance() { return instance_; }

    // Puts frames into the receive queue without telling anybody. One thread at a time.
    void queue(std::span<const PcanMessage> frames);
    // Makes the descriptor readable, as when frames arrive.
    void signal();

    // When the queue was last found empty, and how often that has been so.
    Clock::time_point emptiedAt() const { return emptiedAt_; }
    std::uint32_t timesEmptied() const { return timesEmptied_.load(std::memory_order_acquire); }

    // How many commands have been written, and when the last one was.
    std::uint32_t commands() const { return commands_.load(std::memory_order_acquire); }
    Clock::time_point commandAt() const { return commandAt_; }

    // Readable after a signal, until the queue has been found empty.
    int descriptor() const { return descriptor_; }

    // Behind the entry points.
    std::uint32_t read(PcanMessage& message, PcanTimestamp& timestamp);
    std::uint32_t write(const PcanMessage& command);
    std::uint32_t reset();
    std::uint32_t getValue(std::uint8_t parameter, void* value, std::uint32_t size);

  private:
    MemoryAdapter();

    static MemoryAdapter instance_;
    static constexpr std::size_t slots = 32768;

    std::vector<PcanMessage> queue_ = std::vector<PcanMessage>(slots);
    std::size_t next_ = 0;
    std::atomic<std::size_t> available_ = 0;
    std::atomic<bool> signalled_ = false;
    std::atomic<std::uint32_t> timesEmptied_ = 0;
    std::atomic<std::uint32_t> commands_ = 0;
    Clock::time_point emptiedAt_;
    Clock::time_point commandAt_;
    int descriptor_;
};

}  // namespace torvik::bench
