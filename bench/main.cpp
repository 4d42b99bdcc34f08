// Runs the benchmarks and prints one table of ratios.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

#include "benchmarks.h"
#include "devices.h"
#include "measurements.h"
#include "table.h"

namespace {

using namespace torvik::bench;

constexpr int notMeasured = 1;
constexpr int goalMissed = 3;

int run(unsigned rounds, bool strict, bool times) {
    const OpenLibrary library;
    registerReceivePath();
    registerPythonCan();
    registerRoundTrip();
    registerBlockRead();
    registerFullBus();
    registerReceiveCalls();
    Measurements measurements;
    measurements.runRounds(rounds);
    if (times) printTimes(measurements);
    const Verdict verdict = printTable(measurements);
    if (!verdict.allMeasured) return notMeasured;
    return strict && !verdict.allMet ? goalMissed : 0;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Ratios of the library's speed to simple references.");
    unsigned rounds = 15;
    bool strict = false;
    bool times = false;
    app.add_option("--rounds", rounds, "Rounds; each runs everything once")->check(CLI::Range(1, 1000));
    app.add_flag("--strict", strict, "Exit code 3 when a goal is missed");
    app.add_flag("--times", times, "Print the median time of an iteration of each benchmark, too");
    CLI11_PARSE(app, argc, argv);
    try {
        return run(rounds, strict, times);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "nothing measured: %s\n", exception.what());
        return notMeasured;
    }
}
