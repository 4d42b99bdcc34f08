// A command and its answer, which comes 230 microseconds after the write; and what handing over to a thread costs.
#include <atomic>
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
constexpr int handOffs = 500;
constexpr std::uint8_t deviceNo = 0;

void roundTrip(benchmark::State& state) {
    const AnsweringThread amplifier(deviceNo, answerDelay);
    std::uint32_t expected = 0;
    for ([[maybe_unused]] auto _ : state) {
        std::uint32_t ident = 0;
        const Stopwatch watch;
        const std::int32_t result = TORVIKgetInterfaceIdent(deviceNo, 0, &ident);
        watch.stop(state);
        if (result != 0 || ident != ++expected) return state.SkipWithError("wrong answer");
    }
}

// The same as it would be if the caller looked for the answer every millisecond.
bool askPolling(std::uint32_t& ident) {
    const DeviceRecord& record = deviceRecord(deviceNo);
    if (sendCommand(deviceNo, Command::interfaceIdent, Parameters().u8(0).bytes()) != 0) return false;
    const auto deadline = Stopwatch::Clock::now() + answerLimit;
    while (record.answerCount == 0) {
        if (Stopwatch::Clock::now() > deadline) return false;
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
    for ([[maybe_unused]] auto _ : state) {
        std::uint32_t ident = 0;
        const Stopwatch watch;
        const bool answered = askPolling(ident);
        watch.stop(state);
        if (!answered || ident != ++expected) return state.SkipWithError("wrong answer");
    }
}

// Two threads that hand a ball to each other, with the library's own mutex and condition.
class PingPong {
  public:
    // Waits until it is the caller's turn and hands over to the other side.
    void play(bool side) {
        platform::LockGuard lock(mutex_);
        while (turn_ != side)
            turned_.waitFor(mutex_, std::chrono::seconds(1));
        turn_ = !side;
        turned_.notifyOne();
    }

  private:
    platform::Mutex mutex_;
    platform::Condition turned_;
    bool turn_ GUARDED_BY(mutex_) = false;
};

void handOff(benchmark::State& state) {
    PingPong game;
    const auto exchanges = static_cast<int>(state.max_iterations);
    std::jthread partner([&game, exchanges] {
        for (int i = 0; i < exchanges; ++i)
            game.play(true);
    });
    for ([[maybe_unused]] auto _ : state)
        game.play(false);
}

}  // namespace

void registerRoundTrip() {
    registerManual(name::roundTrip, roundTrip, trips);
    registerManual(name::roundTripPolled, roundTripPolled, trips);
    // An iteration is two hand-offs: there and back.
    benchmark::RegisterBenchmark(name::handOff, handOff)->Iterations(handOffs)->UseRealTime();
}

}  // namespace torvik::bench
