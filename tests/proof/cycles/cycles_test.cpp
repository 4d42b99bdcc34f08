// The library comes and goes many times, and programs end at any instant: nothing hangs, nothing stays behind.
// TORVIK_CYCLES, TORVIK_CYCLES_WITHOUT_RELEASE and TORVIK_EXITS ask for more than the usual numbers.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "TORVIK.h"
#include "process_state.h"
#include "support/loaded_library.h"
#include "support/program.h"
#include "support/seed.h"
#include "virtual_control.h"

namespace {

using torvik::proof::ProcessState;
using torvik::test::exitCodeOf;
using torvik::test::LoadedLibrary;
using torvik::test::replay;
using torvik::test::seed;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr const char* library = TORVIK_LIBRARY;
constexpr milliseconds longestStep(1000);

// The first ones fill what the system keeps: thread stacks, memory of the C run-time.
constexpr int warmUpCycles = 20;

int numberFrom(const char* variable, int usual) {
    const char* const asked = std::getenv(variable);
    return asked == nullptr ? usual : std::stoi(asked);
}

// How late the machine lets a thread run that asks for nothing but to be woken: a step is a chain of threads that wake
// one another, and on an overloaded machine each of them comes late.
class Heartbeat {
  public:
    Heartbeat() = default;
    ~Heartbeat() {
        ends_ = true;
        thread_.join();
    }
    Heartbeat(const Heartbeat&) = delete;
    Heartbeat& operator=(const Heartbeat&) = delete;

    // The most since the last call.
    milliseconds takeLateness() { return milliseconds(latest_.exchange(0)); }

  private:
    void beat() {
        while (!ends_) {
            // Whole ticks: the Windows run-time cuts what is below a millisecond, and would not sleep at all.
            const auto due = Clock::now() + milliseconds(5);
            std::this_thread::sleep_for(milliseconds(5));
            const auto late = std::chrono::duration_cast<milliseconds>(Clock::now() - due).count();
            if (late > latest_) latest_ = late;
        }
    }

    std::atomic<std::int64_t> latest_ = 0;
    std::atomic<bool> ends_ = false;
    std::thread thread_{[this] { beat(); }};
};

// The time that steps take, against the longest that one may.
class Steps {
  public:
    template <class Step>
    void run(const char* name, Step step, milliseconds limit = longestStep) {
        // Activating three devices takes 15 commands, and each of them wakes four threads one after the other.
        constexpr int threadsInAChain = 60;
        heartbeat_.takeLateness();
        const auto begun = Clock::now();
        step();
        const auto took = std::chrono::duration_cast<milliseconds>(Clock::now() - begun);
        const milliseconds late = heartbeat_.takeLateness();
        latest_ = std::max(latest_, late);
        EXPECT_LT(took, limit + threadsInAChain * late)
            << name << ", on a machine that is " << late.count() << " ms late";
        if (took < longest_) return;
        longest_ = took;
        longestName_ = name;
    }

    milliseconds longestTime() const { return longest_; }
    std::string longest() const {
        return longestName_ + " " + std::to_string(longest_.count()) + " ms, threads up to " +
               std::to_string(latest_.count()) + " ms late";
    }

  private:
    Heartbeat heartbeat_;
    milliseconds latest_{0};
    milliseconds longest_{0};
    std::string longestName_;
};

constexpr int devices = 3;
constexpr const char* bench = "[[amplifier]]\ncopies = 3\nfrequency = 100\n";

std::uint32_t lastErrorOf(const LoadedLibrary& loaded, std::int32_t deviceNo) {
    std::array<char, 128> text{};
    std::uint32_t code = 0;
    loaded.function<decltype(TORVIKgetLastErrorText)>("TORVIKgetLastErrorText")(deviceNo, text.data(), &code);
    return code;
}

void activateAll(const LoadedLibrary& loaded) {
    const auto begun = Clock::now();
    for (std::int32_t deviceNo = 1; deviceNo <= devices; ++deviceNo) {
        const std::uint32_t commandId = 0x100 + 3 * static_cast<std::uint32_t>(deviceNo - 1);
        std::uint32_t channels = 0;
        ASSERT_EQ(loaded.function<decltype(TORVIKactivateExtended)>("TORVIKactivateExtended")(
                      deviceNo, TORVIK_ADAPTER_USB, 1'000'000, 1000, &channels, commandId, commandId + 1,
                      TORVIK_FLAG_PROTOCOL_KIND_16),
                  0)
            << "device " << deviceNo << ", error " << lastErrorOf(loaded, deviceNo) << ", "
            << std::chrono::duration_cast<milliseconds>(Clock::now() - begun).count() << " ms";
    }
}

// Waits until every device's own stream has brought a set.
void receiveFromAll(const LoadedLibrary& loaded) {
    const auto deadline = Clock::now() + std::chrono::seconds(2);
    for (std::int32_t deviceNo = 1; deviceNo <= devices; ++deviceNo) {
        std::int32_t count = 0;
        while (count == 0 && Clock::now() < deadline) {
            ASSERT_EQ(loaded.function<decltype(TORVIKreceived)>("TORVIKreceived")(deviceNo, 0, &count), 0);
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        ASSERT_GT(count, 0);
    }
}

void runCycle(Steps& steps, bool release) {
    // The channel was left open by an unload without release.
    ASSERT_EQ(virtualReset(), 0);
    ASSERT_EQ(virtualConfigure(bench), 0) << virtualMessage();
    auto loaded = std::make_unique<LoadedLibrary>(library);
    ASSERT_TRUE(loaded->loaded());
    steps.run("activation", [&] { activateAll(*loaded); });
    if (testing::Test::HasFatalFailure()) return;
    receiveFromAll(*loaded);
    if (release) {
        steps.run("release", [&] { loaded->function<decltype(TORVIKrelease)>("TORVIKrelease")(0); });
    }
    steps.run("unload", [&] { loaded.reset(); });
    ASSERT_FALSE(LoadedLibrary::present(library));
}

ProcessState stateAtRest() {
    std::this_thread::sleep_for(ProcessState::restTime());
    return ProcessState::now();
}

// What a process holds before and after so many cycles.
struct Balance {
    int cycles = 0;
    ProcessState before;
    ProcessState after;

    // Half of what the smallest leak that has to be found takes. Negative: heaps cannot be compared.
    bool leaks() const {
        constexpr std::int64_t bytesInACycle = 512;
        return before.heap >= 0 && after.heap - before.heap >= bytesInACycle * cycles;
    }
};

template <class Body>
Balance balanceOf(int cycles, Body body) {
    Balance balance;
    balance.before = stateAtRest();
    for (; balance.cycles < cycles && !testing::Test::HasFailure(); ++balance.cycles)
        body();
    balance.after = stateAtRest();
    return balance;
}

void runCycles(int cycles, bool release) {
    Steps steps;
    for (int cycle = 0; cycle < warmUpCycles; ++cycle)
        runCycle(steps, cycle % 2 == 0);
    const auto begun = Clock::now();
    const Balance balance = balanceOf(cycles, [&] { runCycle(steps, release); });
    const auto& [done, before, after] = balance;
    const std::chrono::duration<double> took = Clock::now() - begun;
    std::printf("%d cycles %s release in %.1f s; longest step: %s; before %s, after %s\n", done,
                release ? "with" : "without", took.count(), steps.longest().c_str(), before.text().c_str(),
                after.text().c_str());
    EXPECT_GT(before.handles, 0U);
    EXPECT_NE(before.heap, 0);
    EXPECT_FALSE(balance.leaks());
    // What the system's thread pool and heap take on their own, far less than one a cycle.
    EXPECT_LE(after.threads, before.threads + TORVIK_THREADS_OF_OTHERS);
    EXPECT_LE(after.handles, before.handles + TORVIK_HANDLES_OF_OTHERS);
    // Negative: they cannot be compared.
    constexpr int mappingsOfOthers = TORVIK_MAPPINGS_OF_OTHERS;
    constexpr std::size_t memoryOfOthers = 4096;
    if (mappingsOfOthers >= 0) {
        EXPECT_LE(after.mappings, before.mappings + static_cast<std::size_t>(mappingsOfOthers));
        EXPECT_LE(after.memory, before.memory + memoryOfOthers);
    }
}

TEST(Cycles, LoadedActivatedReleasedAndUnloadedManyTimes) {
    runCycles(numberFrom("TORVIK_CYCLES", TORVIK_USUAL_CYCLES), true);
}

TEST(Cycles, UnloadedManyTimesWithoutRelease) {
    runCycles(numberFrom("TORVIK_CYCLES_WITHOUT_RELEASE", TORVIK_USUAL_CYCLES), false);
}

// The check of the cycles can fail.
TEST(Cycles, Leak_OfOneKibibyteInACycle_IsFound) {
    if (ProcessState::now().heap < 0) return;  // the leak sanitizer looks instead
    constexpr int cycles = 10;
    Steps steps;
    runCycle(steps, true);
    std::vector<std::unique_ptr<char[]>> leaked;
    leaked.reserve(cycles);
    EXPECT_TRUE(balanceOf(cycles, [&] {
                    runCycle(steps, true);
                    leaked.push_back(std::make_unique<char[]>(1024));
                }).leaks());
}

// How long the system needs to start and end a program that does nothing.
milliseconds startingTime() {
    constexpr int runs = 5;
    constexpr std::chrono::seconds limit(20);
    Steps steps;
    for (int run = 0; run < runs; ++run)
        steps.run(
            "idle program", [] { ASSERT_EQ(exitCodeOf(TORVIK_RANDOM_EXIT_PROGRAM), 0); }, limit);
    return steps.longestTime();
}

TEST(Cycles, ProgramsThatEndAtAnyInstantEndWithTheirOwnExitCode) {
    constexpr milliseconds latestInstant(100);
    const int exits = numberFrom("TORVIK_EXITS", TORVIK_USUAL_EXITS);
    const milliseconds limit = startingTime() + latestInstant + longestStep;
    Steps steps;
    const auto begun = Clock::now();
    int done = 0;
    for (; done < exits && !HasFailure(); ++done) {
        const std::uint64_t programSeed = seed() + static_cast<std::uint64_t>(done);
        const int code = static_cast<int>(programSeed % 200);
        const std::string command = TORVIK_RANDOM_EXIT_PROGRAM " " + std::to_string(programSeed);
        const auto program = [&] {
            ASSERT_EQ(exitCodeOf(command), code) << "program with seed " << programSeed << "; " << replay();
        };
        steps.run("program", program, limit);
    }
    const std::chrono::duration<double> took = Clock::now() - begun;
    std::printf("%d exits at random instants in %.1f s; longest of %lld allowed: %s\n", done, took.count(),
                static_cast<long long>(limit.count()), steps.longest().c_str());
}

}  // namespace
