// A measurement application at a full bus: 39 devices of six channels, every value compared with what its device has
// sent. It says "streaming" once values come, reads until its input ends, and then tells what became of every frame,
// one "name number" in a line. Whoever starts it may stop it meanwhile, or leave it hardly any processor.
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "TORVIK.h"
#include "TORVIKstatistics.h"
#include "virtual_control.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::int32_t deviceCount = 39;
constexpr std::size_t channels = 6;
constexpr double scale = 2.1 / 16777215;

// 39 x 35 sets a second are a little more than the bus carries. The first channel of set n is n.
constexpr const char* fullBus = R"(
[bus]
timing = true
[[amplifier]]
command = 0x100
answer = 0x101
value = 0x102
identifier_step = 3
copies = 39
channels = 6
value_type = "int24"
unit = "counts"
frequency = 35
seed = 7
[[amplifier.signal]]
wave = "ramp"
amplitude = 32768
offset = 32768
frequency = 0.00053405761718750
[[amplifier.signal]]
wave = "noise"
amplitude = 8000000
[[amplifier.signal]]
wave = "noise"
amplitude = 4000000
[[amplifier.signal]]
wave = "noise"
amplitude = 1000
[[amplifier.signal]]
wave = "sine"
amplitude = 5000000
frequency = 1.7
[[amplifier.signal]]
wave = "noise"
amplitude = 8000000
)";

void require(bool condition, const char* what) {
    if (!condition) throw std::runtime_error(what);
}

// What has been read of one device.
class DeviceReader {
  public:
    explicit DeviceReader(std::int32_t deviceNo) : deviceNo_(deviceNo) {}

    void readWaiting() {
        std::array<double, 100 * channels> values{};
        std::int32_t count = 0;
        while (TORVIKreadMultiple(deviceNo_, 0, values.data(), values.size(), &count, nullptr) == 1) {
            const std::span read(values.data(), static_cast<std::size_t>(count));
            for (std::size_t set = 0; set < read.size(); set += channels)
                take(read.subspan(set).first<channels>());
        }
    }

    [[nodiscard]] std::uint64_t sets() const { return sets_; }
    [[nodiscard]] std::uint64_t missing() const { return missing_; }
    [[nodiscard]] std::uint64_t wrong() const { return wrong_; }
    [[nodiscard]] std::uint64_t outOfOrder() const { return outOfOrder_; }

  private:
    void take(std::span<const double, channels> values) {
        ++sets_;
        const auto number = static_cast<std::uint64_t>(std::llround(values[0] / scale));
        for (std::uint32_t channel = 0; channel < channels; ++channel) {
            double sent = 0;
            require(virtualValue(static_cast<std::uint32_t>(deviceNo_ - 1), channel, number, &sent) == 0, "generator");
            if (values[channel] != sent * scale) ++wrong_;
        }
        if (number < next_) {
            ++outOfOrder_;
            return;
        }
        missing_ += number - next_;
        next_ = number + 1;
    }

    std::int32_t deviceNo_;
    std::uint64_t next_ = 0;
    std::uint64_t sets_ = 0;
    std::uint64_t missing_ = 0;
    std::uint64_t wrong_ = 0;
    std::uint64_t outOfOrder_ = 0;
};

VirtualCounters adapterCounters() {
    VirtualCounters counters{};
    virtualGetCounters(&counters);
    return counters;
}

TORVIKstatistics statisticsOf(std::int32_t deviceNo) {
    TORVIKstatistics statistics{};
    statistics.size = sizeof statistics;
    require(TORVIKgetStatistics(deviceNo, &statistics) == 0, "statistics");
    return statistics;
}

void holdStreams(bool hold) {
    for (std::uint32_t device = 0; device < deviceCount; ++device)
        virtualHoldStream(device, hold ? 1 : 0);
}

// Nothing streams yet, so that every value frame there will ever be belongs to a reader.
void activateDevices() {
    require(virtualConfigure(fullBus) == 0, virtualMessage());
    holdStreams(true);
    for (std::int32_t device = 1; device <= deviceCount; ++device) {
        std::uint32_t count = 0;
        const auto command = static_cast<std::uint32_t>(0x100 + 3 * (device - 1));
        require(TORVIKactivateExtended(device, TORVIK_ADAPTER_USB, 1000000, 65534, &count, command, command + 1,
                                       TORVIK_FLAG_PROTOCOL_KIND_16) == 0,
                "activation");
        require(count == channels, "number of channels");
    }
}

// Ends the streams behind whole sets, and lets every device send one set more: the gap before it is what was lost last.
void endStreams() {
    holdStreams(true);
    std::uint64_t before = 0;
    std::uint64_t sent = adapterCounters().valueFramesSent;
    do {
        before = sent;
        std::this_thread::sleep_for(milliseconds(100));
        sent = adapterCounters().valueFramesSent;
    } while (sent != before);
    for (std::uint32_t device = 0; device < deviceCount; ++device)
        require(virtualSendSets(device, 1) == channels, "room for the last sets");
}

void waitUntilRouted() {
    const auto deadline = Clock::now() + std::chrono::seconds(30);
    while (virtualQueued() != 0 || statisticsOf(0).setsStored == 0 ||
           statisticsOf(0).framesReceived != adapterCounters().framesRead) {
        require(Clock::now() < deadline, "the last frames have not been read");
        std::this_thread::sleep_for(milliseconds(10));
    }
    // The last frame is counted before it is routed.
    std::this_thread::sleep_for(milliseconds(100));
}

void print(const char* name, std::uint64_t number) {
    std::printf("%s %llu\n", name, static_cast<unsigned long long>(number));
}

void reportReaders(const std::vector<DeviceReader>& readers) {
    std::uint64_t sets = 0;
    std::uint64_t missing = 0;
    std::uint64_t wrong = 0;
    std::uint64_t outOfOrder = 0;
    std::uint64_t countedOtherwise = 0;
    std::uint64_t least = UINT64_MAX;
    for (std::int32_t device = 1; const DeviceReader& reader : readers) {
        const TORVIKstatistics statistics = statisticsOf(device++);
        if (statistics.setsStored != reader.sets() || statistics.setsMissing != reader.missing()) ++countedOtherwise;
        sets += reader.sets();
        missing += reader.missing();
        wrong += reader.wrong();
        outOfOrder += reader.outOfOrder();
        least = std::min(least, reader.sets());
    }
    print("setsRead", sets);
    print("setsMissing", missing);
    print("valuesWrong", wrong);
    print("setsOutOfOrder", outOfOrder);
    print("leastSetsOfADevice", least);
    print("devicesCountedOtherwise", countedOtherwise);
}

void reportAdapter(const VirtualCounters& before) {
    const VirtualCounters after = adapterCounters();
    print("valueFramesSent", after.valueFramesSent - before.valueFramesSent);
    print("answersSent", after.answersSent - before.answersSent);
    print("framesRead", after.framesRead - before.framesRead);
    print("framesOverrun", after.framesOverrun - before.framesOverrun);
    print("framesDiscarded", after.framesDiscarded - before.framesDiscarded);
}

void reportLibrary(const TORVIKstatistics& before) {
    const TORVIKstatistics after = statisticsOf(0);
    print("framesReceived", after.framesReceived - before.framesReceived);
    print("framesWithoutDevice", after.framesWithoutDevice - before.framesWithoutDevice);
    print("framesNotRouted", after.framesNotRouted - before.framesNotRouted);
    print("framesRouted", after.framesRouted - before.framesRouted);
    print("framesStored", after.framesStored - before.framesStored);
    print("framesInAssembly", after.framesInAssembly);
    print("framesOfPartialSets", after.framesOutsideSet + after.framesOfIncompleteSets + after.framesOfBrokenSets);
    print("valuesStale", after.valuesStale);
    print("valuesOverwritten", after.valuesOverwritten);
    print("overrunsReported", after.faultsQueueOverrun);
}

int run() {
    activateDevices();
    const VirtualCounters adapterBefore = adapterCounters();
    const TORVIKstatistics libraryBefore = statisticsOf(0);
    std::vector<DeviceReader> readers;
    for (std::int32_t device = 1; device <= deviceCount; ++device)
        readers.emplace_back(device);

    std::atomic<bool> ending = false;
    std::thread input([&ending] {
        while (std::getchar() != EOF) {
        }
        ending = true;
    });
    holdStreams(false);
    const auto began = Clock::now();
    Clock::duration longestPause{};
    bool announced = false;
    for (auto last = began; !ending;) {
        std::this_thread::sleep_for(milliseconds(5));
        const auto now = Clock::now();
        longestPause = std::max(longestPause, now - last);
        last = now;
        for (DeviceReader& reader : readers)
            reader.readWaiting();
        if (!announced && readers.back().sets() > 0) {
            announced = true;
            std::puts("streaming");
            static_cast<void>(std::fflush(stdout));
        }
    }
    input.join();
    const std::uint64_t sent = adapterCounters().valueFramesSent - adapterBefore.valueFramesSent;
    const std::chrono::duration<double> streamed = Clock::now() - began;
    endStreams();
    waitUntilRouted();
    for (DeviceReader& reader : readers)
        reader.readWaiting();

    print("milliseconds", static_cast<std::uint64_t>(streamed.count() * 1000));
    print("longestPauseMilliseconds",
          static_cast<std::uint64_t>(std::chrono::duration_cast<milliseconds>(longestPause).count()));
    print("framesPerSecond", static_cast<std::uint64_t>(static_cast<double>(sent) / streamed.count()));
    reportReaders(readers);
    reportAdapter(adapterBefore);
    reportLibrary(libraryBefore);
    TORVIKrelease(0);
    return 0;
}

}  // namespace

int main() {
    try {
        return run();
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "frozen_reader: %s\n", failure.what());
        return 1;
    }
}
