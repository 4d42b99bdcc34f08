// A run: rounds of loading the library, random calls from many threads, and unloading it under calls that wait inside.
// The first fifth of a round's calls is made in a normal phase: every device is active, nothing is released, and all
// arguments are usual. The others are made in a storm of releases, with arguments of all sorts.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "random_call.h"
#include "support/loaded_library.h"
#include "watchdog.h"

namespace torvik::proof {

struct Figures {
    std::atomic<std::uint64_t> calls = 0;
    std::atomic<std::uint64_t> failures = 0;  // results below 0
    std::atomic<std::uint64_t> stormCalls = 0;
    std::atomic<std::uint64_t> normalCalls = 0;
    std::atomic<std::uint64_t> normalFailures = 0;  // -1, or one of the exports' own results of a failure
    std::atomic<std::uint64_t> activations = 0;
    std::atomic<std::uint64_t> activationsSucceeded = 0;
    std::atomic<std::uint64_t> releases = 0;
    std::atomic<std::uint64_t> meetings = 0;
    std::uint64_t waitsCutShort = 0;
    std::uint64_t unloads = 0;
    std::chrono::milliseconds longestUnload{0};
};

class Run {
  public:
    static constexpr std::size_t threads = 16;

    // What a run is made to find, to show that it can.
    enum class Spoil { nothing, lateAnswer, refusals };

    Run(std::uint64_t seed, Spoil spoil);
    ~Run();
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    // Loads the library, makes so many calls, and unloads it.
    void round(std::uint64_t calls);

    const Figures& figures() const { return figures_; }
    std::uint64_t beyondBound() const { return watchdog_.beyondBound(); }
    std::uint64_t aboveOneSecond() const { return watchdog_.aboveOneSecond(); }
    std::string longest() const { return watchdog_.longest(); }
    std::vector<std::string> tooLong() const { return watchdog_.tooLong(); }
    std::chrono::microseconds meanAnswer() const { return watchdog_.meanAnswer(); }
    // The exports that failed most often in normal phases.
    std::string normalFailures() const;
    std::size_t neverCalled() const;
    const std::vector<std::string>& complaints() const { return complaints_; }

  private:
    void loadLibrary();
    void callFromAllThreads(Arguments::Kind kind, std::uint64_t calls);
    void callAtRandom(std::size_t thread, std::uint64_t calls);
    void callNormally(std::size_t thread, std::uint64_t calls);
    std::int32_t callOne(std::size_t thread, std::size_t index, Arguments& any);
    void normalPhase(std::uint64_t calls);
    void spoilNormalPhase() const;
    std::int32_t activateOne(std::size_t thread, std::int32_t deviceNo, std::uint32_t kindFlag);
    std::uint32_t kindOfRound() const;
    void releaseOne(std::size_t thread, std::int32_t deviceNo);
    void checkThatNothingWasLost();
    void checkThatDevicesAnswer();
    std::uint32_t takeError(std::int32_t deviceNo);
    void unloadUnderCalls();
    std::int32_t callThatWaits(std::size_t thread);
    std::string fileOf(std::size_t thread) const;

    template <class Function>
    Function* function(const char* name) const {
        return library_->function<Function>(name);
    }
    void complainUnless(bool condition, const std::string& what);

    std::uint64_t seed_;
    Spoil spoil_;
    std::uint64_t roundNo_ = 0;
    std::filesystem::path folder_;
    std::vector<RandomCall> calls_;
    std::vector<double> weights_;
    std::vector<double> normalWeights_;
    std::vector<std::atomic<std::uint64_t>> called_;
    std::vector<std::atomic<std::uint64_t>> failedNormally_;
    std::unique_ptr<test::LoadedLibrary> library_;
    std::vector<Address> addresses_;  // of calls_, in the library as it is loaded now
    std::vector<std::string> complaints_;
    Figures figures_;
    mutable Watchdog watchdog_;
};

}  // namespace torvik::proof
