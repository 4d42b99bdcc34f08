// The benchmarks: their names, and what registers them. Each measures its own time, without preparing and checking.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <vector>

namespace torvik::bench {

namespace name {
inline constexpr const char* receivePath = "receive path";
inline constexpr const char* receiveBareLoop = "receive path, bare loop";
inline constexpr const char* receivePythonCan = "receive path, python-can";
inline constexpr const char* queue = "queue after a pause";
inline constexpr const char* roundTrip = "round trip";
inline constexpr const char* roundTripPolled = "round trip, polled";
inline constexpr const char* handOff = "hand-off";
inline constexpr const char* blockRead = "block read";
inline constexpr const char* blockCopy = "block copy";
inline constexpr const char* singleRead = "single read";
inline constexpr const char* lockAndUnlock = "lock and unlock";
inline constexpr const char* fullBus = "full bus";
inline constexpr const char* fullBusBareLoop = "full bus, bare loop";
inline constexpr const char* arrival = "arrival to readable";
inline constexpr const char* arrivalBareLoop = "arrival to readable, bare loop";
inline constexpr const char* receiveCalls = "receive path, calls";
inline constexpr const char* allocations = "receive path, allocations";
inline constexpr const char* systemCalls = "receive path, system calls";
}  // namespace name

inline constexpr std::chrono::microseconds answerDelay(230);

void registerReceivePath();
void registerPythonCan();
void registerRoundTrip();
void registerBlockRead();
void registerFullBus();
void registerReceiveCalls();

// Registers a function that measures itself: it runs `iterations` times a round.
template <class Function>
void registerManual(const char* name, Function function, int iterations) {
    benchmark::RegisterBenchmark(name, function)->Iterations(iterations)->UseManualTime();
}

// The times of a benchmark's iterations. Their median is what counts of a round, so that an interruption by another
// program does not.
class IterationTimes {
  public:
    using Clock = std::chrono::steady_clock;
    static constexpr const char* median = "median";

    // `counter` is the one that the median is reported in.
    explicit IterationTimes(benchmark::State& state, const char* counter = median) : state_(state), counter_(counter) {}
    ~IterationTimes();
    IterationTimes(const IterationTimes&) = delete;
    IterationTimes& operator=(const IterationTimes&) = delete;

    void start() { start(Clock::now()); }
    void start(Clock::time_point start) { start_ = start; }
    void stop() { stop(Clock::now()); }
    void stop(Clock::time_point end);

  private:
    benchmark::State& state_;
    const char* counter_;
    std::vector<double> seconds_;
    Clock::time_point start_;
};

}  // namespace torvik::bench
