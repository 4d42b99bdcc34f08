#include "run.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <string_view>
#include <thread>

#include "TORVIK.h"
#include "TORVIKstatistics.h"
#include "virtual_control.h"
#include "witness.h"

namespace torvik::proof {

namespace {

using std::chrono::milliseconds;

constexpr const char* libraryPath = TORVIK_WITNESSED_LIBRARY;
constexpr const char* calibrationFile = TORVIK_CALIBRATION_FILE;

// Three makes of firmware: without a restart of the device, without calibrations of other dimensions, with everything.
// Nobody waits for a device's reset: a command to a device that is off the bus is never answered.
constexpr const char* bench = R"(
[[amplifier]]
copies = 13
frequency = 20
reset_time_ms = 0
firmware = 0x00030008

[[amplifier]]
command = 0x127
answer = 0x128
value = 0x129
copies = 13
frequency = 20
reset_time_ms = 0
firmware = 0x0003002E
channels = 8
value_type = "int16"

[[amplifier]]
command = 0x14E
answer = 0x14F
value = 0x150
copies = 13
frequency = 20
reset_time_ms = 0
value_type = "float32"
calibrated = true
)";

// One call in so many releases a device, and one everything.
constexpr std::uint32_t releaseOnceIn = 60;
constexpr std::uint32_t releaseAllOnceIn = 10'000;

void abortRun(const std::string& what) {
    std::printf("chaos: NOT HELD: %s\n", what.c_str());
    std::fflush(stdout);
    std::abort();
}

VirtualCounters adapterCounters() {
    VirtualCounters counters{};
    virtualGetCounters(&counters);
    return counters;
}

}  // namespace

Run::Run(std::uint64_t seed)
    : seed_(seed),
      folder_(std::filesystem::temp_directory_path() / ("torvik-chaos-" + std::to_string(std::random_device()()))),
      calls_(randomCalls()),
      called_(calls_.size()),
      watchdog_(abortRun) {
    std::filesystem::create_directories(folder_);
    for (const RandomCall& call : calls_)
        weights_.push_back(call.weight);
    // All exports but TORVIKrelease, and the extension.
    complainUnless(calls_.size() == 102, "the table of calls has " + std::to_string(calls_.size()) + " exports");
}

Run::~Run() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void Run::complainUnless(bool condition, const std::string& what) {
    if (!condition) complaints_.push_back("round " + std::to_string(roundNo_) + ": " + what);
}

std::size_t Run::neverCalled() const {
    return static_cast<std::size_t>(std::ranges::count_if(called_, [](const auto& times) { return times == 0; }));
}

std::string Run::fileOf(std::size_t thread) const {
    return (folder_ / ("response" + std::to_string(thread) + ".txt")).string();
}

void Run::loadLibrary() {
    // The channel was left open by the unload before.
    if (virtualReset() != 0 || virtualConfigure(bench) != 0) throw std::runtime_error(virtualMessage());
    library_ = std::make_unique<test::LoadedLibrary>(libraryPath);
    if (!library_->loaded()) throw std::runtime_error("the library does not load");
    addresses_.clear();
    for (const RandomCall& call : calls_) {
        addresses_.push_back(function<void()>(call.name));
        if (addresses_.back() == nullptr) throw std::runtime_error(std::string("there is no ") + call.name);
    }
    function<decltype(chaosWitness)>("chaosWitness")();
}

void Run::round(std::uint64_t calls) {
    ++roundNo_;
    loadLibrary();
    {
        std::vector<std::jthread> callers;
        for (std::size_t thread = 0; thread < threads; ++thread) {
            const std::uint64_t share = calls / threads + (thread < calls % threads ? 1 : 0);
            callers.emplace_back([this, thread, share] { callAtRandom(thread, share); });
        }
    }
    figures_.waitsCutShort += function<decltype(chaosWaitsCutShort)>("chaosWaitsCutShort")();
    checkThatNothingWasLost();
    checkThatDevicesAnswer();
    unloadUnderCalls();
}

void Run::callAtRandom(std::size_t thread, std::uint64_t calls) {
    Arguments any(seed_ + 1000 * roundNo_ + thread, fileOf(thread), calibrationFile);
    std::mt19937_64 chooser(any.below(0xFFFFFFFF));
    std::discrete_distribution<std::size_t> choose(weights_.begin(), weights_.end());
    // Each thread begins with a part of all exports, so that even those chosen rarely are called in a short run.
    std::size_t next = thread;
    for (std::uint64_t i = 0; i < calls; ++i) {
        if (any.onceIn(releaseAllOnceIn)) {
            releaseOne(thread, 0);
        } else if (any.onceIn(releaseOnceIn)) {
            const std::int32_t deviceNo = any.device();
            // Everything is released by the line above alone.
            releaseOne(thread, deviceNo == 0 ? 40 : deviceNo);
        } else if (roundNo_ == 1 && next < calls_.size()) {
            callOne(thread, next, any);
            next += threads;
        } else {
            callOne(thread, choose(chooser), any);
        }
        ++figures_.calls;
    }
}

void Run::callOne(std::size_t thread, std::size_t index, Arguments& any) {
    const RandomCall& call = calls_[index];
    any.beginCall();
    watchdog_.begin(thread, call.name, call.bound());
    const std::int32_t result = call.run(addresses_[index], any, any.device());
    watchdog_.end(thread);
    ++called_[index];
    if (result < 0) ++figures_.failures;
    if (std::string_view(call.name) == "TORVIKactivateExtended") {
        ++figures_.activations;
        if (result == 0) ++figures_.activationsSucceeded;
    }
}

void Run::releaseOne(std::size_t thread, std::int32_t deviceNo) {
    bool met = false;
    watchdog_.begin(thread, deviceNo == 0 ? "TORVIKrelease of everything" : "TORVIKrelease", milliseconds(10'000));
    const std::int32_t result = function<decltype(chaosRelease)>("chaosRelease")(deviceNo, &met);
    watchdog_.end(thread);
    ++figures_.releases;
    if (met) ++figures_.meetings;
    if (result != 0) ++figures_.failures;
}

// Every frame that the adapter has handed out is accounted for, with everything released.
void Run::checkThatNothingWasLost() {
    releaseOne(threads, 0);
    const auto statisticsOf = [this](std::int32_t deviceNo) {
        TORVIKstatistics counts{};
        counts.size = sizeof counts;
        function<decltype(TORVIKgetStatistics)>("TORVIKgetStatistics")(deviceNo, &counts);
        return counts;
    };
    const TORVIKstatistics all = statisticsOf(0);
    complainUnless(all.framesReceived > 0 && all.framesReceived == adapterCounters().framesRead,
                   "the adapter has handed out " + std::to_string(adapterCounters().framesRead) +
                       " frames, the library counts " + std::to_string(all.framesReceived));
    complainUnless(all.framesReceived == all.framesRouted + all.framesWithoutDevice + all.framesNotRouted,
                   "received frames are neither routed nor dropped");
    const std::uint64_t ended = all.framesStored + all.answersStored + all.answersNotStored + all.commandFrames +
                                all.framesWrongChannel + all.framesNoChannelCount + all.framesOutsideSet +
                                all.framesOfIncompleteSets + all.framesOfBrokenSets + all.framesOfLockedSets +
                                all.framesOfReleasedSets + all.framesReplaced + all.framesBeyondChannels;
    complainUnless(all.framesRouted == ended + all.framesInAssembly, "routed frames have no end");
}

// No lock is held, no record damaged: each device is activated, and its answer is its own.
void Run::checkThatDevicesAnswer() {
    // Told to send more channels than there can be by a call of the round.
    constexpr std::uint32_t noChannelCount = 246;
    constexpr std::uint8_t valueIdentifier = 2;
    const auto activate = function<decltype(TORVIKactivateExtended)>("TORVIKactivateExtended");
    const auto setting = function<decltype(TORVIKgetCANSettings)>("TORVIKgetCANSettings");
    for (std::int32_t deviceNo = 1; deviceNo <= deviceCount; ++deviceNo) {
        const std::uint32_t commandId = commandIdOf(static_cast<std::uint32_t>(deviceNo - 1));
        std::uint32_t channels = 0;
        watchdog_.begin(threads, "activation after the round", milliseconds(10'000));
        const std::int32_t result = activate(deviceNo, TORVIK_ADAPTER_USB, 1'000'000, 100, &channels, commandId,
                                             commandId + 1, TORVIK_FLAG_PROTOCOL_KIND_16);
        const bool active = result == 0 || takeError(deviceNo) == noChannelCount;
        std::uint32_t valueId = 0;
        const std::int32_t asked = setting(deviceNo, valueIdentifier, &valueId);
        watchdog_.end(threads);
        complainUnless(active && asked == 0 && valueId == commandId + 2,
                       "device " + std::to_string(deviceNo) + " is not what it was: " + std::to_string(result) + ", " +
                           std::to_string(asked) + ", identifier " + std::to_string(valueId));
    }
}

std::uint32_t Run::takeError(std::int32_t deviceNo) {
    std::array<char, 128> text{};
    std::uint32_t code = 0;
    function<decltype(TORVIKgetLastErrorText)>("TORVIKgetLastErrorText")(deviceNo, text.data(), &code);
    return code;
}

// A call that sends one command and waits: each on a device of its own, none of which answers any more.
std::int32_t Run::callThatWaits(std::size_t thread) {
    const auto deviceNo = static_cast<std::int32_t>(1 + 2 * thread);
    std::uint32_t answer = 0;
    double value = 0;
    std::array<double, 36> values{};
    switch ((thread + roundNo_) % 6) {
        case 0:
            return function<decltype(TORVIKgetInterfaceIdent)>("TORVIKgetInterfaceIdent")(deviceNo, 0, &answer);
        case 1:
            return function<decltype(TORVIKgetFrequency)>("TORVIKgetFrequency")(deviceNo, &value);
        case 2:
            return function<decltype(TORVIKsetZero)>("TORVIKsetZero")(deviceNo, 1);
        case 3:
            return function<decltype(TORVIKreadFTSensorCalArray)>("TORVIKreadFTSensorCalArray")(
                deviceNo, 0, nullptr, &value, nullptr, values.data(), nullptr, nullptr);
        case 4:
            return function<decltype(TORVIKloadSettings)>("TORVIKloadSettings")(deviceNo, 1);
        default:
            return function<decltype(TORVIKgetUnitText)>("TORVIKgetUnitText")(deviceNo, 1, 0,
                                                                              reinterpret_cast<char*>(values.data()));
    }
}

void Run::unloadUnderCalls() {
    // Nearly: a call on a device that does not answer waits for 2000 ms.
    constexpr milliseconds waitOfTheCalls(1500);
    for (std::uint32_t amplifier = 0; amplifier < deviceCount; ++amplifier)
        virtualAnswerRule(amplifier, VIRTUAL_ANY_COMMAND, VIRTUAL_ANSWER_DROP, VIRTUAL_FOR_EVER, 0, nullptr);
    const std::uint64_t written = adapterCounters().framesWritten;
    std::vector<std::int32_t> results(threads);
    {
        std::vector<std::jthread> callers;
        for (std::size_t thread = 0; thread < threads; ++thread)
            callers.emplace_back([this, thread, &results] { results[thread] = callThatWaits(thread); });
        // Each has written its command: it is inside, and will stay for two seconds unless it is woken.
        const auto deadline = Watchdog::Clock::now() + waitOfTheCalls;
        while (adapterCounters().framesWritten < written + threads && Watchdog::Clock::now() < deadline)
            std::this_thread::yield();
        complainUnless(adapterCounters().framesWritten == written + threads, "not every call has begun to wait");
        const auto begun = Watchdog::Clock::now();
        watchdog_.begin(threads, "unloading", milliseconds(10'000));
        library_.reset();
        watchdog_.end(threads);
        const auto took = std::chrono::duration_cast<milliseconds>(Watchdog::Clock::now() - begun);
        figures_.longestUnload = std::max(figures_.longestUnload, took);
    }
    ++figures_.unloads;
    complainUnless(figures_.longestUnload < waitOfTheCalls, "an unload has waited for its calls");
    complainUnless(!test::LoadedLibrary::present(libraryPath), "the library stays in memory");
    complainUnless(std::ranges::count(results, -1) == threads, "a call that an unload met has not failed");
}

}  // namespace torvik::proof
