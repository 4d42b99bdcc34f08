#include "measurements.h"

#include <algorithm>

#include "benchmarks.h"

namespace torvik::bench {

IterationTimes::~IterationTimes() {
    if (seconds_.empty()) return;
    const auto middle = seconds_.begin() + static_cast<std::ptrdiff_t>(seconds_.size() / 2);
    std::ranges::nth_element(seconds_, middle);
    state_.counters[counter_] = *middle;
}

void IterationTimes::stop(Clock::time_point end) {
    seconds_.push_back(std::chrono::duration<double>(end - start_).count());
    state_.SetIterationTime(seconds_.back());
}

void Measurements::runRounds(unsigned rounds) {
    for (unsigned i = 0; i < rounds; ++i) {
        rounds_.emplace_back();
        benchmark::RunSpecifiedBenchmarks(this);
    }
}

void Measurements::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        const std::string& name = run.run_name.function_name;
        if (run.error_occurred) {
            errors_[name] = run.error_message;
        } else {
            for (const auto& [counter, value] : run.counters)
                rounds_.back()[counter == IterationTimes::median ? name : counter] = value;
        }
    }
}

}  // namespace torvik::bench
