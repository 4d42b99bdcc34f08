#include "filter_chain.hpp"

#include <algorithm>
#include <utility>

namespace virtual_adapter {
namespace {

template <class Past>
void remember(Past& past, double number) {
    std::shift_right(past.begin(), past.end(), 1);
    past[0] = number;
}

}  // namespace

double FilterChain::Running::next(std::size_t channel, double input) {
    const std::size_t order = filter.order();
    const bool fir = (filter.type & FilterSettings::kFirBit) != 0;
    double output = filter.x[order] * input;
    for (std::size_t k = 0; k < order; ++k) {
        const std::size_t back = order - k - 1;
        output += filter.x[k] * inputs[channel][back];
        if (!fir) output += filter.y[k] * outputs[channel][back];
    }
    remember(inputs[channel], input);
    remember(outputs[channel], output);
    return output;
}

void FilterChain::use(const FilterSettings& settings) {
    std::vector<Running> before = std::exchange(running_, {});
    for (std::size_t place = 0; place < 2 * FilterSettings::kFilters; ++place) {
        if ((settings.on >> place & 1U) == 0) continue;
        const auto& bank = settings.banks[place / FilterSettings::kFilters];
        const FilterDefinition& filter = bank[place % FilterSettings::kFilters];
        const auto same = std::ranges::find_if(
            before, [&](const Running& running) { return running.place == place && running.filter == filter; });
        running_.push_back(same == before.end() ? Running{place, filter} : *same);
    }
}

void FilterChain::run(ChannelNumbers& numbers) {
    for (Running& running : running_) {
        for (std::size_t channel = 0; channel < numbers.size(); ++channel)
            numbers[channel] = running.next(channel, numbers[channel]);
    }
}

}  // namespace virtual_adapter
