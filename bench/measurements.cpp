#include "measurements.h"

namespace torvik::bench {

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
            rounds_.back()[name] = run.real_accumulated_time / static_cast<double>(run.iterations);
        }
    }
}

}  // namespace torvik::bench
