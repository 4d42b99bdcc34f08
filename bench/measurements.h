// What the benchmarks have measured, round after round.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace torvik::bench {

// Seconds of one iteration of each benchmark.
using Round = std::map<std::string, double, std::less<>>;

// Runs every registered benchmark once a round, in the order of registration, so that what is compared alternates.
class Measurements : public benchmark::BenchmarkReporter {
  public:
    void runRounds(unsigned rounds);

    const std::vector<Round>& rounds() const { return rounds_; }

    // What went wrong, by benchmark: something that could not be measured, or a wrong result.
    const std::map<std::string, std::string>& errors() const { return errors_; }

    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override;

  private:
    std::vector<Round> rounds_;
    std::map<std::string, std::string> errors_;
};

}  // namespace torvik::bench
