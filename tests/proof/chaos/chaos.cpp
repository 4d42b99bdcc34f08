// Random calls of all exports from 16 threads on 39 devices against activation, release and unloading of the library.
//
//   chaos CALLS [SEED [--spoil late-answer | refusals]]
//
// closes with the line "chaos: held" and exit code 0, or says what did not hold. Spoilt, it must not hold.
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "random_call.h"
#include "run.h"
#include "support/loaded_library.h"
#include "support/seed.h"

namespace {

using namespace torvik::proof;

constexpr std::uint64_t callsInARound = 10'000;

// Calls that succeed, in phases in which nothing but the number of calls stands in their way.
constexpr double leastNormalRate = 0.9;

Run::Spoil spoilFrom(int argumentCount, char** arguments) {
    if (argumentCount < 4) return Run::Spoil::nothing;
    const std::string what = argumentCount == 5 && std::string(arguments[3]) == "--spoil" ? arguments[4] : "";
    if (what == "late-answer") return Run::Spoil::lateAnswer;
    if (what == "refusals") return Run::Spoil::refusals;
    throw std::invalid_argument("unexpected argument");
}

double normalRate(const Run& run) {
    const auto calls = static_cast<double>(run.figures().normalCalls);
    return calls > 0 ? 1 - static_cast<double>(run.figures().normalFailures) / calls : 0;
}

void print(const Run& run, std::uint64_t seed, double seconds) {
    const Figures& figures = run.figures();
    const auto number = [](std::uint64_t value) { return static_cast<unsigned long long>(value); };
    std::printf("chaos: seed %llu, %llu calls from %zu threads in %.0f s (%.0f a second)\n", number(seed),
                number(figures.calls), Run::threads, seconds, static_cast<double>(figures.calls) / seconds);
    std::printf("  activations %llu of %llu succeeded; %llu of all calls failed\n",
                number(figures.activationsSucceeded), number(figures.activations), number(figures.failures));
    std::printf("  in normal phases %.1f %% of %llu calls succeeded\n", 100 * normalRate(run),
                number(figures.normalCalls));
    std::printf("  releases %llu; proven meetings with a call in flight %llu; waits they cut short %llu\n",
                number(figures.releases), number(figures.meetings), number(figures.waitsCutShort));
    std::printf("  unloads %llu, each with %zu calls waiting inside; longest %lld ms\n", number(figures.unloads),
                Run::threads, static_cast<long long>(figures.longestUnload.count()));
    std::printf("  calls above one second %llu, without a documented wait %llu; answers after %lld us; longest %s\n",
                number(run.aboveOneSecond()), number(run.beyondBound()),
                static_cast<long long>(run.meanAnswer().count()), run.longest().c_str());
    std::printf("  exports never called %zu\n", run.neverCalled());
}

// One meeting in a thousand calls of a storm. What did not hold goes to standard output.
bool held(const Run& run) {
    bool good = true;
    const auto check = [&good](bool condition, const char* what) {
        if (!condition) std::printf("chaos: NOT HELD: %s\n", what);
        good = good && condition;
    };
    for (const std::string& call : run.tooLong())
        std::printf("  too long: %s\n", call.c_str());
    check(run.beyondBound() == 0, "a call took more than a second beside its documented waits");
    check(run.neverCalled() == 0, "an export was not called");
    check(run.figures().meetings >= run.figures().stormCalls / 1000, "fewer meetings than one in a thousand calls");
    check(normalRate(run) >= leastNormalRate, "too many calls of normal phases failed");
    std::printf("  failed most often:%s\n", run.normalFailures().c_str());
    for (const std::string& complaint : run.complaints())
        check(false, complaint.c_str());
    return good;
}

}  // namespace

int main(int argumentCount, char** arguments) try {
    std::setvbuf(stdout, nullptr, _IOLBF, 4096);
    if (argumentCount < 2) {
        std::fputs("chaos CALLS [SEED [--spoil late-answer | refusals]]\n", stderr);
        return 2;
    }
    const std::uint64_t calls = std::stoull(arguments[1]);
    const std::uint64_t seed = argumentCount > 2 ? std::stoull(arguments[2]) : torvik::test::seed();
    std::printf("chaos: seed %llu\n", static_cast<unsigned long long>(seed));
    const auto begun = std::chrono::steady_clock::now();
    Run run(seed, spoilFrom(argumentCount, arguments));
    for (std::uint64_t done = 0; done < calls && run.complaints().empty(); done += callsInARound)
        run.round(std::min(callsInARound, calls - done));
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begun;
    print(run, seed, took.count());
    if (!held(run)) return 1;
    std::puts("chaos: held");
    return 0;
} catch (const std::exception& exception) {
    std::printf("chaos: NOT HELD: %s\n", exception.what());
    return 1;
}
