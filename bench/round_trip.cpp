// A command and its answer, which comes 230 microseconds after the write; and what handing over to a thread costs.
#include <pthread.h>

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
constexpr int handOffs = 500;
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

    // Waits until it is the first side's turn again.
    void awaitReturn() {
        platform::LockGuard lock(mutex_);
        while (turn_)
            turned_.waitFor(mutex_, std::chrono::seconds(1));
    }

  private:
    platform::Mutex mutex_;
    platform::Condition turned_;
    bool turn_ GUARDED_BY(mutex_) = false;
};

// Lets a thread run on one processor only. Result: false when that is not possible.
bool pin(pthread_t thread, const cpu_set_t& processors) {
    return pthread_setaffinity_np(thread, sizeof processors, &processors) == 0;
}

// The first two processors that this program may run on.
std::array<cpu_set_t, 2> twoProcessors(const cpu_set_t& allowed) {
    std::array<cpu_set_t, 2> chosen{};
    std::size_t found = 0;
    for (std::size_t processor = 0; processor < CPU_SETSIZE && found < chosen.size(); ++processor) {
        if (CPU_ISSET(processor, &allowed)) CPU_SET(processor, &chosen[found++]);
    }
    return chosen;
}

// Between two processors, as between an adapter and a program that waits: on one processor handing over is cheaper, but
// then nothing runs side by side.
void handOff(benchmark::State& state) {
    cpu_set_t allowed{};
    pthread_getaffinity_np(pthread_self(), sizeof allowed, &allowed);
    const std::array<cpu_set_t, 2> processors = twoProcessors(allowed);
    PingPong game;
    const auto exchanges = static_cast<int>(state.max_iterations);
    std::jthread partner([&game, exchanges] {
        for (int i = 0; i < exchanges; ++i)
            game.play(true);
    });
    const bool pinned = pin(pthread_self(), processors[0]) && pin(partner.native_handle(), processors[1]);
    {
        IterationTimes times(state);
        for ([[maybe_unused]] auto _ : state) {
            times.start();
            game.play(false);
            game.awaitReturn();
            times.stop();
        }
    }
    if (!pin(pthread_self(), allowed) || !pinned) state.SkipWithError("needs two processors");
}

}  // namespace

void registerRoundTrip() {
    registerManual(name::roundTrip, roundTrip, trips);
    registerManual(name::roundTripPolled, roundTripPolled, trips);
    // An iteration is two hand-offs: there and back.
    registerManual(name::handOff, handOff, handOffs);
}

}  // namespace torvik::bench
