// Reading blocks of 1,000 values against copying the bytes that are delivered.
#include <algorithm>
#include <cstring>
#include <memory>

#include "api/TORVIK.h"
#include "benchmarks.h"
#include "can/receive_thread.h"
#include "devices.h"
#include "frames.h"
#include "memory_adapter.h"

namespace torvik::bench {

namespace {

constexpr int repetitions = 50;
constexpr std::int32_t blockLength = 1000;
constexpr std::uint32_t blocks = 4;
constexpr std::uint32_t valueCount = blocks * blockLength;

using Block = std::array<double, blockLength>;

const std::vector<PcanMessage>& framesOfLargeDevice() {
    static const std::vector<PcanMessage> frames = [] {
        std::vector<PcanMessage> made(valueCount);
        for (std::uint32_t set = 0; set < valueCount; ++set)
            made[set] = valueFrame(largeDevice, 0, set);
        return made;
    }();
    return frames;
}

bool holdsBlock(const Block& block, std::uint32_t firstSet) {
    for (std::uint32_t i = 0; i < blockLength; ++i) {
        if (block[i] != scaledValueOf(largeDevice, 0, firstSet + i)) return false;
    }
    return true;
}

void fillLargeDevice() {
    MemoryAdapter::instance().queue(framesOfLargeDevice());
    drainReceiveQueue();
}

void blockRead(benchmark::State& state) {
    const WithoutReceiveThread direct;
    clearAllBuffers();
    Block values{};
    IterationTimes times(state);
    for ([[maybe_unused]] auto _ : state) {
        fillLargeDevice();
        std::int32_t read = 0;
        times.start();
        for (std::uint32_t block = 0; block < blocks; ++block) {
            std::int32_t count = 0;
            TORVIKreadMultiple(largeDevice, 1, values.data(), blockLength, &count, nullptr);
            benchmark::DoNotOptimize(values.data());
            benchmark::ClobberMemory();
            read += count;
        }
        times.stop();
        const bool complete = read == static_cast<std::int32_t>(valueCount);
        if (!complete || !holdsBlock(values, valueCount - blockLength)) {
            return state.SkipWithError("values are missing or out of order");
        }
    }
}

// The bytes of one delivered block, copied as often as blocks are read.
void blockCopy(benchmark::State& state) {
    Block delivered{};
    for (std::uint32_t i = 0; i < blockLength; ++i)
        delivered[i] = scaledValueOf(largeDevice, 0, i);
    Block values{};
    IterationTimes times(state);
    for ([[maybe_unused]] auto _ : state) {
        times.start();
        for (std::uint32_t block = 0; block < blocks; ++block) {
            benchmark::DoNotOptimize(delivered.data());
            std::memcpy(values.data(), delivered.data(), sizeof delivered);
            benchmark::DoNotOptimize(values.data());
            benchmark::ClobberMemory();
        }
        times.stop();
        if (!holdsBlock(values, 0)) return state.SkipWithError("wrong copy");
    }
}

// Value by value, and as often locking and unlocking their mutex, by turns: where another virtual machine shares the
// processor's core, a read takes longer for as long, but locking hardly does.
void singleRead(benchmark::State& state) {
    const WithoutReceiveThread direct;
    clearAllBuffers();
    IterationTimes times(state);
    IterationTimes lockTimes(state, name::lockAndUnlock);
    for ([[maybe_unused]] auto _ : state) {
        fillLargeDevice();
        std::uint32_t read = 0;
        double value = 0;
        times.start();
        for (std::uint32_t i = 0; i < valueCount; ++i) {
            read += TORVIKread(largeDevice, 1, &value) == 1 ? 1 : 0;
            benchmark::DoNotOptimize(value);
        }
        times.stop();
        if (read != valueCount || value != scaledValueOf(largeDevice, 0, valueCount - 1)) {
            return state.SkipWithError("values are missing or out of order");
        }
        std::uint32_t locked = 0;
        lockTimes.start();
        for (std::uint32_t i = 0; i < valueCount; ++i)
            locked += exclusively(valueMutex, [] {}) ? 1 : 0;
        lockTimes.stop();
        if (locked != valueCount) return state.SkipWithError("the mutex cannot be locked");
    }
}

}  // namespace

void registerBlockRead() {
    registerManual(name::blockRead, blockRead, repetitions);
    registerManual(name::blockCopy, blockCopy, repetitions);
    registerManual(name::singleRead, singleRead, repetitions);
}

}  // namespace torvik::bench
