#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "bench.hpp"
#include "filter_settings.hpp"

namespace virtual_adapter {

// A number of each channel.
using ChannelNumbers = std::array<double, kMostChannels>;

// The filters that are switched on, one behind the other: IIR before FIR, each bank in the order of its numbers. A
// filter has its own past on every channel; it starts without one when it is switched on or loaded anew.
class FilterChain {
  public:
    // Filters that stay as they were keep their past.
    void use(const FilterSettings& settings);
    void clear() { running_.clear(); }

    [[nodiscard]] bool empty() const { return running_.empty(); }
    // The next number of every channel: in, and filtered out.
    void run(ChannelNumbers& numbers);

  private:
    // The numbers of the past, the latest first.
    using Past = std::array<double, FilterDefinition::kHighestOrder>;

    struct Running {
        std::size_t place;
        FilterDefinition filter;
        std::array<Past, kMostChannels> inputs{};
        std::array<Past, kMostChannels> outputs{};

        [[nodiscard]] double next(std::size_t channel, double input);
    };

    std::vector<Running> running_;
};

}  // namespace virtual_adapter
