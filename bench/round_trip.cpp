// A command and its answer, which comes 230 microseconds after the write; and what handing over to a thread costs.
#include <array>
#include <thread>

#include "answering_thread.h"
#include "api/TORVIK.h"
#include "benchmarks.h"
#include "core/device_table.h"
#include "core/transaction.h"
#include "core/wire.h"
#include "platform/sync.h"
#include "platform/thread.h"

namespace torvik::bench {

namespace {

constexpr int trips = 50;
constexpr int handOffs = 50;
constexpr std::uint8_t deviceNo = 0;

void roundTrip(benchmark::State& state) {
    const AnsweringThread amplifier(deviceNo, answerDelay);
    std::uint32_t expected = 0;
    IterationTimes times(state);
    for ([[maybe_unused]] auto _ : state) {
        std::uint32_t ident = 0;
        times.start();
        const std::int32_t result = TORVIKgetInterfaceIdent(deviceNo, 0, &ident);
        times.stop();
        if (result != 0 || ident != ++expected) return state.SkipWithError("wrong answer");
    }
}

// The same as it would be if the caller looked for the answer every millisecond.
bool askPolling(std::uint32_t& ident) {
    const DeviceRecord& record = deviceRecord(deviceNo);
    if (sendCommand(deviceNo, Command::interfaceIdent, Parameters().u8(0).bytes()) != 0) return false;
    const auto deadline = IterationTimes::Clock::now() + answerLimit;
    while (record.answerCount == 0) {
        if (IterationTimes::Clock::now() > deadline) return false;
        platform::sleepFor(std::chrono::milliseconds(1));
    }
    std::array<std::uint8_t, 8> bytes{};
    std::uint8_t length = 0;
    if (receiveAnswer(deviceNo, bytes.data(), &length) != 0) return false;
    ident = AnswerView(bytes).u32();
    return true;
}

void roundTripPolled(benchmark::State& state) {
    const AnsweringThread amplifier(deviceNo, answerDelay);
    std::uint32_t expected = 0;
    IterationTimes times(state);
    for ([[maybe_unused]] auto _ : state) {
        std::uint32_t ident = 0;
        times.start();
        const bool answered = askPolling(ident);
        times.stop();
        if (!answered || ident != ++expected) return state.SkipWithError("wrong answer");
    }
}

// Two threads that hand a ball to each other, with the library's own mutex and condition. Each keeps it for as long as
// the answer takes: the other one waits as long as the threads of the library do.
class PingPong {
  public:
    // Waits until it is the caller's turn. Result: when the other side handed over.
    IterationTimes::Clock::time_point await(bool side) {
        platform::LockGuard lock(mutex_);
        while (turn_ != side)
            turned_.waitFor(mutex_, std::chrono::seconds(1));
        return handedOver_;
    }

    void keepAndHandOver(bool side) {
        const auto until = IterationTimes::Clock::now() + answerDelay;
        while (IterationTimes::Clock::now() < until) {
        }
        const IterationTimes::Clock::time_point now = IterationTimes::Clock::now();
        {
            platform::LockGuard lock(mutex_);
            turn_ = !side;
            handedOver_ = now;
        }
        turned_.notifyOne();
    }

  private:
    platform::Mutex mutex_;
    platform::Condition turned_;
    bool turn_ GUARDED_BY(mutex_) = false;
    IterationTimes::Clock::time_point handedOver_ GUARDED_BY(mutex_);
};

void handOff(benchmark::State& state) {
    PingPong game;
    std::jthread partner([&game, exchanges = state.max_iterations] {
        for (benchmark::IterationCount i = 0; i < exchanges; ++i) {
            game.await(true);
            game.keepAndHandOver(true);
        }
    });
    IterationTimes times(state);
    for ([[maybe_unused]] auto _ : state) {
        game.keepAndHandOver(false);
        times.start(game.await(false));
        times.stop();
    }
}

}  // namespace

void registerRoundTrip() {
    registerManual(name::handOff, handOff, handOffs);
    registerManual(name::roundTrip, roundTrip, trips);
    registerManual(name::roundTripPolled, roundTripPolled, trips);
}

}  // namespace torvik::bench
