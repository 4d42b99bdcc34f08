// A command and its answer, which comes 230 microseconds after the write; and what handing over to a thread costs.
#include <array>

#include "answering_thread.h"
#include "api/TORVIK.h"
#include "benchmarks.h"
#include "core/device_table.h"
#include "core/transaction.h"
#include "core/wire.h"
#include "platform/thread.h"

namespace torvik::bench {

namespace {

constexpr int trips = 60;
constexpr std::uint8_t deviceNo = 0;

// Commands and hand-offs by turns: what waking a thread costs changes with the load of the machine.
void roundTrip(benchmark::State& state) {
    AnsweringThread amplifier(deviceNo, answerDelay);
    std::uint32_t expected = 0;
    IterationTimes times(state);
    IterationTimes handOffs(state, name::handOff);
    for ([[maybe_unused]] auto _ : state) {
        std::uint32_t ident = 0;
        times.start();
        const std::int32_t result = TORVIKgetInterfaceIdent(deviceNo, 0, &ident);
        times.stop();
        if (result != 0 || ident != ++expected) return state.SkipWithError("wrong answer");
        handOffs.start(amplifier.awaitHandOff());
        handOffs.stop();
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

}  // namespace

void registerRoundTrip() {
    registerManual(name::roundTrip, roundTrip, trips);
    registerManual(name::roundTripPolled, roundTripPolled, trips);
}

}  // namespace torvik::bench
