#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "frame.hpp"

namespace virtual_adapter {

// Which frames the adapter takes from the bus. Open at first; the first range closes it for all others.
class Filter {
  public:
    enum class State : std::uint8_t { closed, open, ranges };

    [[nodiscard]] State state() const { return state_; }

    [[nodiscard]] bool accepts(const Frame& frame) const {
        if (state_ != State::ranges) return state_ == State::open;
        const bool extended = (frame.type & kExtendedFrame) != 0;
        return std::ranges::any_of(ranges_, [&](const Range& range) {
            return range.extended == extended && frame.id >= range.from && frame.id <= range.to;
        });
    }

    void set(State state) {
        state_ = state;
        ranges_.clear();
    }

    // False: there are as many ranges as can be.
    [[nodiscard]] bool add(std::uint32_t from, std::uint32_t to, bool extended) {
        if (ranges_.size() == kMostRangesAdded) return false;
        ranges_.push_back({from, to, extended});
        state_ = State::ranges;
        return true;
    }

  private:
    static constexpr std::size_t kMostRangesAdded = 1024;

    struct Range {
        std::uint32_t from;
        std::uint32_t to;
        bool extended;
    };

    State state_ = State::open;
    std::vector<Range> ranges_;
};

}  // namespace virtual_adapter
