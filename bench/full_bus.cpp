// The receive thread at a full bus against a bare loop on a thread that is woken the same way: what it costs, and how
// soon after its arrival a frame can be read.
#include <sys/resource.h>

#include <algorithm>
#include <ctime>
#include <optional>
#include <thread>

#include "bare_loop.h"
#include "benchmarks.h"
#include "devices.h"
#include "memory_adapter.h"
#include "platform/receive_event.h"

namespace torvik::bench {

namespace {

using Clock = MemoryAdapter::Clock;

constexpr int repetitions = 2;
constexpr std::uint32_t setsOfEach = 8;
constexpr std::chrono::microseconds frameTime(125);  // on a bus of 1 Mbit/s
constexpr std::chrono::milliseconds receiveWait(200);

// Takes the frames from the adapter as the library's thread does, and stores them in the bare loop's rings.
class BareReceiver {
  public:
    BareReceiver() {
        event_.create();
        event_.watchDescriptor(MemoryAdapter::instance().descriptor());
        thread_ = std::jthread([this](const std::stop_token& stop) { run(stop); });
    }
    ~BareReceiver() {
        thread_.request_stop();
        event_.wake();
        thread_.join();
        event_.close();
    }
    BareReceiver(const BareReceiver&) = delete;
    BareReceiver& operator=(const BareReceiver&) = delete;

    const BareLoop& loop() const { return loop_; }

  private:
    void run(const std::stop_token& stop) {
        PcanMessage message;
        PcanTimestamp timestamp;
        while (!stop.stop_requested()) {
            event_.wait(receiveWait, true);
            while (MemoryAdapter::instance().read(message, timestamp) == pcan::ok)
                loop_.run({&message, 1});
        }
    }

    BareLoop loop_;
    platform::ReceiveEvent event_;
    std::jthread thread_;
};

double secondsOf(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// Processor time of all threads but this one.
double othersSeconds() {
    return secondsOf(CLOCK_PROCESS_CPUTIME_ID) - secondsOf(CLOCK_THREAD_CPUTIME_ID);
}

struct Received {
    double processorSeconds;
    double latestSeconds;  // of the soonest 99 % of the frames, from the signal until the queue was empty again
};

// Lets the frames arrive one by one, as on a bus that is never idle. Empty: a frame was not taken.
std::optional<Received> receiveAtFullBus(const std::vector<PcanMessage>& frames) {
    MemoryAdapter& adapter = MemoryAdapter::instance();
    std::vector<double> times;
    const double before = othersSeconds();
    Clock::time_point due = Clock::now();
    for (const PcanMessage& frame : frames) {
        due += frameTime;
        while (Clock::now() < due) {
        }
        const std::uint32_t emptied = adapter.timesEmptied();
        adapter.queue({&frame, 1});
        const Clock::time_point arrival = Clock::now();
        adapter.signal();
        while (adapter.timesEmptied() == emptied) {
            if (Clock::now() > arrival + receiveWait) return std::nullopt;
        }
        times.push_back(std::chrono::duration<double>(adapter.emptiedAt() - arrival).count());
    }
    const double after = othersSeconds();
    const auto latest = times.begin() + static_cast<std::ptrdiff_t>(times.size() * 99 / 100);
    std::ranges::nth_element(times, latest);
    return Received{after - before, *latest};
}

const std::vector<PcanMessage>& fullBus() {
    static const std::vector<PcanMessage> frames = makeQueue(std::size_t{deviceCount} * channelCount * setsOfEach);
    return frames;
}

template <class HoldsInOrder>
void measure(benchmark::State& state, const char* arrival, HoldsInOrder holdsInOrder) {
    double processor = 0;
    double latest = 0;
    for ([[maybe_unused]] auto _ : state) {
        const std::optional<Received> received = receiveAtFullBus(fullBus());
        if (!received) return state.SkipWithError("a frame is not taken from the adapter");
        processor += received->processorSeconds;
        latest += received->latestSeconds;
        state.SetIterationTime(received->processorSeconds);
        for (std::uint8_t deviceNo = 0; deviceNo < deviceCount; ++deviceNo) {
            if (!holdsInOrder(deviceNo)) return state.SkipWithError("values are missing or out of order");
        }
    }
    state.counters[IterationTimes::median] = processor / repetitions;
    state.counters[arrival] = latest / repetitions;
}

void fullBusLibrary(benchmark::State& state) {
    clearAllBuffers();
    measure(state, name::arrival, [](std::uint8_t deviceNo) { return takeSetsInOrder(deviceNo, setsOfEach); });
}

void fullBusBareLoop(benchmark::State& state) {
    const WithoutReceiveThread direct;
    const BareReceiver receiver;
    measure(state, name::arrivalBareLoop,
            [&](std::uint8_t deviceNo) { return receiver.loop().holdsInOrder(deviceNo, setsOfEach); });
}

}  // namespace

void registerFullBus() {
    registerManual(name::fullBus, fullBusLibrary, repetitions);
    registerManual(name::fullBusBareLoop, fullBusBareLoop, repetitions);
}

}  // namespace torvik::bench
