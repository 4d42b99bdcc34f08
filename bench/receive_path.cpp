// The receive path against a bare loop: the pass alone, and through the receive thread after a pause.
#include <algorithm>
#include <thread>

#include "bare_loop.h"
#include "benchmarks.h"
#include "can/receive_thread.h"
#include "devices.h"
#include "memory_adapter.h"

namespace torvik::bench {

namespace {

constexpr int passes = 20;
constexpr std::chrono::seconds queueLimit(5);

BareLoop& bareLoop() {
    static BareLoop loop;
    return loop;
}

const std::vector<PcanMessage>& queuedFrames() {
    static const std::vector<PcanMessage> frames = makeQueue(queueLength);
    return frames;
}

bool allSetsStored() {
    for (std::uint8_t deviceNo = 0; deviceNo < deviceCount; ++deviceNo) {
        if (!takeSetsInOrder(deviceNo, completeSetsOf(deviceNo))) return false;
    }
    return true;
}

void receivePath(benchmark::State& state) {
    const WithoutReceiveThread direct;
    clearAllBuffers();
    IterationTimes times(state);
    for ([[maybe_unused]] auto _ : state) {
        MemoryAdapter::instance().queue(queuedFrames());
        times.start();
        const std::uint8_t code = drainReceiveQueue();
        times.stop();
        if (code != 0 || !allSetsStored()) return state.SkipWithError("sets are missing or out of order");
    }
}

void receiveBareLoop(benchmark::State& state) {
    BareLoop& loop = bareLoop();
    std::vector<PcanMessage> arrived(queueLength);
    IterationTimes times(state);
    for ([[maybe_unused]] auto _ : state) {
        loop.clear();
        // As fresh in the processor's caches as what is put into the adapter's queue.
        std::ranges::copy(queuedFrames(), arrived.begin());
        times.start();
        loop.run(arrived);
        times.stop();
        for (std::uint8_t deviceNo = 0; deviceNo < deviceCount; ++deviceNo) {
            if (!loop.holdsInOrder(deviceNo, completeSetsOf(deviceNo))) {
                return state.SkipWithError("values are missing or out of order");
            }
        }
    }
}

bool waitUntilEmptied(std::uint32_t timesBefore) {
    const auto deadline = IterationTimes::Clock::now() + queueLimit;
    while (MemoryAdapter::instance().timesEmptied() == timesBefore) {
        if (IterationTimes::Clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// The queue ends inside a set: what is missing comes later and must complete it.
bool unfinishedSetGoesOn() {
    constexpr std::size_t rest = channelCount - queueLength % channelCount;
    const std::vector<PcanMessage> more = makeQueue(queueLength + rest);
    const auto deviceNo = static_cast<std::uint8_t>(queueLength / channelCount % deviceCount);
    const std::uint32_t before = MemoryAdapter::instance().timesEmptied();
    MemoryAdapter::instance().queue(std::span(more).last(rest));
    MemoryAdapter::instance().signal();
    return waitUntilEmptied(before) && takeSetsInOrder(deviceNo, 1, completeSetsOf(deviceNo));
}

void queueAfterPause(benchmark::State& state) {
    MemoryAdapter& adapter = MemoryAdapter::instance();
    clearAllBuffers();
    IterationTimes times(state);
    for ([[maybe_unused]] auto _ : state) {
        const std::uint32_t before = adapter.timesEmptied();
        adapter.queue(queuedFrames());
        times.start();
        adapter.signal();
        if (!waitUntilEmptied(before)) return state.SkipWithError("the queue is not emptied");
        times.stop(adapter.emptiedAt());
        if (!allSetsStored()) return state.SkipWithError("sets are missing or out of order");
        if (!unfinishedSetGoesOn()) return state.SkipWithError("the set at the end of the queue is lost");
    }
}

}  // namespace

void registerReceivePath() {
    registerManual(name::receivePath, receivePath, passes);
    registerManual(name::receiveBareLoop, receiveBareLoop, passes);
    registerManual(name::queue, queueAfterPause, passes);
}

}  // namespace torvik::bench
