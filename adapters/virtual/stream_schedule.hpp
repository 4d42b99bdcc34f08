#pragma once

#include <algorithm>
#include <cstdint>

#include "frame.hpp"

namespace virtual_adapter {

// Instants of a free-running stream: start + n / frequency, without drift.
class StreamSchedule {
  public:
    void start(Nanoseconds now, double frequency) {
        start_ = now;
        period_ = 1e9 / frequency;
        cycle_ = 1;
        due_ = instant(cycle_);
    }
    void stop() { due_ = kNever; }

    [[nodiscard]] Nanoseconds due() const { return due_; }

    // The first instant after `begun`: cycles that passed while the bus was busy are left out.
    void advancePast(Nanoseconds begun) {
        const auto passed = static_cast<std::uint64_t>(static_cast<double>(begun - start_) / period_);
        cycle_ = std::max(cycle_, passed) + 1;
        due_ = instant(cycle_);
    }

  private:
    [[nodiscard]] Nanoseconds instant(std::uint64_t cycle) const {
        return start_ + static_cast<Nanoseconds>(static_cast<double>(cycle) * period_);
    }

    Nanoseconds start_ = 0;
    Nanoseconds due_ = kNever;
    double period_ = 0;
    std::uint64_t cycle_ = 0;
};

}  // namespace virtual_adapter
