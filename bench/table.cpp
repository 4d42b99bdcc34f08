#include "table.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>

#include "benchmarks.h"

namespace torvik::bench {

namespace {

double ratio(const Round& round, std::string_view dividend, std::string_view divisor) {
    return round.find(dividend)->second / round.find(divisor)->second;
}

double handOffsBeyondDelay(const Round& round) {
    const double beyond = round.find(name::roundTrip)->second - std::chrono::duration<double>(answerDelay).count();
    return beyond / round.find(name::handOff)->second;
}

// What is a ratio of times varies with the machine; what is a count must be kept in every round.
enum class Judged : std::uint8_t { median, largest };

struct Row {
    const char* text;
    std::vector<const char*> benchmarks;
    double (*value)(const Round& round);
    bool atLeast;
    double goal;
    Judged judged = Judged::median;
};

const Row rows[] = {
    {"receive path, 39 devices x 6 channels: frames/s to bare loop's",
     {name::receivePath, name::receiveBareLoop},
     [](const Round& round) { return ratio(round, name::receiveBareLoop, name::receivePath); },
     true,
     0.5},
    {"receive path, 39 devices x 6 channels: frames/s to python-can's",
     {name::receivePath, name::receivePythonCan},
     [](const Round& round) { return ratio(round, name::receivePythonCan, name::receivePath); },
     true,
     30},
    {"command, answer after 230 us: time beyond 230 us to thread hand-off",
     {name::roundTrip},
     handOffsBeyondDelay,
     false,
     2.5},
    {"command, answer after 230 us: commands/s to those of a 1 ms poll",
     {name::roundTrip, name::roundTripPolled},
     [](const Round& round) { return ratio(round, name::roundTripPolled, name::roundTrip); },
     true,
     3.4},
    {"block read of 1,000 values: time to memcpy of 8,000 bytes",
     {name::blockRead, name::blockCopy},
     [](const Round& round) { return ratio(round, name::blockRead, name::blockCopy); },
     false,
     4},
    {"queue of 32,767 frames after a pause: time to bare loop's",
     {name::queue, name::receiveBareLoop},
     [](const Round& round) { return ratio(round, name::queue, name::receiveBareLoop); },
     false,
     2},
    {"single read: time to locking and unlocking its mutex",
     {name::singleRead, name::lockAndUnlock},
     [](const Round& round) { return ratio(round, name::singleRead, name::lockAndUnlock); },
     false,
     3},
    {"full bus: processor time of the receive thread to bare loop's",
     {name::fullBus, name::fullBusBareLoop},
     [](const Round& round) { return ratio(round, name::fullBus, name::fullBusBareLoop); },
     false,
     1.5},
    {"full bus: from arrival to readable, 99 % of frames, to bare loop's",
     {name::fullBus, name::fullBusBareLoop},
     [](const Round& round) { return ratio(round, name::arrival, name::arrivalBareLoop); },
     false,
     2},
    {"receive path, 32,767 frames: allocations",
     {name::receiveCalls},
     [](const Round& round) { return round.find(name::allocations)->second; },
     false,
     0,
     Judged::largest},
    {"receive path, 32,767 frames: system calls",
     {name::receiveCalls},
     [](const Round& round) { return round.find(name::systemCalls)->second; },
     false,
     0,
     Judged::largest},
};

// The error of the first benchmark of the row that has one, or null.
const std::string* errorOf(const Row& row, const Measurements& measurements) {
    for (const char* benchmark : row.benchmarks) {
        const auto found = measurements.errors().find(benchmark);
        if (found != measurements.errors().end()) return &found->second;
    }
    return nullptr;
}

std::vector<double> sortedValues(const Row& row, std::span<const Round> rounds) {
    std::vector<double> values;
    for (const Round& round : rounds)
        values.push_back(row.value(round));
    std::ranges::sort(values);
    return values;
}

// Result: whether the goal is met.
bool printRow(const Row& row, std::span<const double> values) {
    const double judged = row.judged == Judged::largest ? values.back() : values[values.size() / 2];
    const bool met = row.atLeast ? judged >= row.goal : judged <= row.goal;
    fmt::print("{:<68} {:>8.2f}  {:>7.2f} .. {:<7.2f}  {} {:<5.1f} {}\n", row.text, judged, values[values.size() / 4],
               values[values.size() - 1 - values.size() / 4], row.atLeast ? ">=" : "<=", row.goal,
               met ? "met" : "missed");
    return met;
}

}  // namespace

Verdict printTable(const Measurements& measurements) {
    Verdict verdict;
    fmt::print("{:<68} {:>8}  {:^18}  {:<8} {}\n", "ratio", "judged", "middle half", "goal", "result");
    for (const Row& row : rows) {
        if (const std::string* const error = errorOf(row, measurements); error != nullptr) {
            verdict.allMeasured = false;
            fmt::print("{:<68} not measured: {}\n", row.text, *error);
        } else {
            verdict.allMet = printRow(row, sortedValues(row, measurements.rounds())) && verdict.allMet;
        }
    }
    return verdict;
}

void printTimes(const Measurements& measurements) {
    std::map<std::string_view, std::vector<double>> times;
    for (const Round& round : measurements.rounds()) {
        for (const auto& [benchmark, seconds] : round)
            times[benchmark].push_back(seconds);
    }
    for (auto& [benchmark, seconds] : times) {
        std::ranges::sort(seconds);
        fmt::print("{:<30} {:>12.2f} us\n", benchmark, seconds[seconds.size() / 2] * 1e6);
    }
}

}  // namespace torvik::bench
