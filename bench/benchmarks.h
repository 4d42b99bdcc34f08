// The benchmarks: their names, and what registers them. Each measures its own time, without preparing and checking.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>

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
}  // namespace name

inline constexpr std::chrono::microseconds answerDelay(230);

void registerReceivePath();
void registerPythonCan();
void registerRoundTrip();
void registerBlockRead();

// Registers a function that measures itself: it runs `iterations` times a round.
template <class Function>
void registerManual(const char* name, Function function, int iterations) {
    benchmark::RegisterBenchmark(name, function)->Iterations(iterations)->UseManualTime();
}

class Stopwatch {
  public:
    using Clock = std::chrono::steady_clock;

    // Gives the time since the construction to Google Benchmark as the time of one iteration.
    void stop(benchmark::State& state) const { stop(state, Clock::now()); }
    void stop(benchmark::State& state, Clock::time_point end) const {
        state.SetIterationTime(std::chrono::duration<double>(end - start_).count());
    }

  private:
    Clock::time_point start_ = Clock::now();
};

}  // namespace torvik::bench
