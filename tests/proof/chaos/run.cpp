#include "run.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <numeric>
#include <random>
#include <span>
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

// Firmware below each version from which the library does more, and one that does everything.
struct Make {
    std::uint32_t firmware;
    std::uint32_t copies;
    const char* settings;
};

constexpr Make makes[] = {
    {0x00030008, 8, ""},
    {0x0003000A, 8, "value_type = \"int16\"\n"},
    {0x0003002E, 8, "channels = 8\nvalue_type = \"int16\"\n"},
    {0x00030031, 8, "calibrated = true\n"},
    {0x00040000, 7, "value_type = \"float32\"\ncalibrated = true\n"},
};

// Nobody waits for a device's reset: a command to a device that is off the bus is never answered.
std::string rig(std::uint32_t protocolKind) {
    std::string text;
    std::uint32_t amplifier = 0;
    for (const Make& make : makes) {
        const std::uint32_t commandId = commandIdOf(amplifier);
        text += "[[amplifier]]\ncommand = " + std::to_string(commandId) +
                "\nanswer = " + std::to_string(commandId + 1) + "\nvalue = " + std::to_string(commandId + 2) +
                "\ncopies = " + std::to_string(make.copies) +
                "\nfrequency = 20\nreset_time_ms = 0\nfirmware = " + std::to_string(make.firmware) +
                "\nprotocol = " + std::to_string(protocolKind) + "\n" + make.settings + "\n";
        amplifier += make.copies;
    }
    return text;
}

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

Run::Run(std::uint64_t seed, Spoil spoil)
    : seed_(seed),
      spoil_(spoil),
      folder_(std::filesystem::temp_directory_path() / ("torvik-chaos-" + std::to_string(std::random_device()()))),
      calls_(randomCalls()),
      called_(calls_.size()),
      failedNormally_(calls_.size()),
      watchdog_(abortRun) {
    std::filesystem::create_directories(folder_);
    for (const RandomCall& call : calls_) {
        weights_.push_back(call.weight);
        normalWeights_.push_back(call.inNormalPhases ? call.weight : 0);
    }
    // All exports but TORVIKrelease, and the two extensions.
    complainUnless(calls_.size() == 103, "the table of calls has " + std::to_string(calls_.size()) + " exports");
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

std::string Run::normalFailures() const {
    std::vector<std::size_t> order(calls_.size());
    std::iota(order.begin(), order.end(), 0U);
    std::ranges::sort(order, std::greater(), [this](std::size_t index) { return failedNormally_[index].load(); });
    std::string text;
    for (const std::size_t index : std::span(order).first(10))
        text += std::string(" ") + calls_[index].name + " " + std::to_string(failedNormally_[index]);
    return text;
}

std::string Run::fileOf(std::size_t thread) const {
    return (folder_ / ("response" + std::to_string(thread) + ".txt")).string();
}

std::uint32_t Run::kindOfRound() const {
    return roundNo_ % 2 == 1 ? 16 : 32;
}

void Run::loadLibrary() {
    // The channel was left open by the unload before.
    if (virtualReset() != 0 || virtualConfigure(rig(kindOfRound()).c_str()) != 0)
        throw std::runtime_error(virtualMessage());
    library_ = std::make_unique<test::LoadedLibrary>(libraryPath);
    if (!library_->loaded()) throw std::runtime_error("the library does not load");
    addresses_.clear();
    for (const RandomCall& call : calls_) {
        addresses_.push_back(function<void()>(call.name));
        if (addresses_.back() == nullptr) throw std::runtime_error(std::string("there is no ") + call.name);
    }
    function<decltype(chaosWitness)>("chaosWitness")(Watchdog::excuse, Watchdog::noteAnswer);
}

void Run::round(std::uint64_t calls) {
    ++roundNo_;
    loadLibrary();
    normalPhase(calls / 5);
    callFromAllThreads(Arguments::Kind::any, calls - calls / 5);
    figures_.waitsCutShort += function<decltype(chaosWaitsCutShort)>("chaosWaitsCutShort")();
    checkThatNothingWasLost();
    checkThatDevicesAnswer();
    unloadUnderCalls();
}

void Run::callFromAllThreads(Arguments::Kind kind, std::uint64_t calls) {
    std::vector<std::jthread> callers;
    for (std::size_t thread = 0; thread < threads; ++thread) {
        const std::uint64_t share = calls / threads + (thread < calls % threads ? 1 : 0);
        const auto body = kind == Arguments::Kind::any ? &Run::callAtRandom : &Run::callNormally;
        callers.emplace_back([this, body, thread, share] { (this->*body)(thread, share); });
    }
}

void Run::callAtRandom(std::size_t thread, std::uint64_t calls) {
    Arguments any(seed_ + 1000 * roundNo_ + thread, Arguments::Kind::any, fileOf(thread), calibrationFile);
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
        ++figures_.stormCalls;
    }
}

void Run::normalPhase(std::uint64_t calls) {
    const std::uint32_t flag = kindOfRound() == 16 ? TORVIK_FLAG_PROTOCOL_KIND_16 : TORVIK_FLAG_PROTOCOL_KIND_32;
    for (std::int32_t deviceNo = 1; deviceNo <= deviceCount; ++deviceNo)
        complainUnless(activateOne(threads, deviceNo, flag) == 0,
                       "device " + std::to_string(deviceNo) + " is not active");
    spoilNormalPhase();
    callFromAllThreads(Arguments::Kind::usual, calls);
    virtualClearAnswerRules();
}

void Run::spoilNormalPhase() const {
    constexpr std::uint32_t microseconds = 1'200'000;  // the device answers in time, but not at once
    constexpr std::array<std::uint8_t, 8> refusal = {0x46, 0x52};
    if (spoil_ == Spoil::lateAnswer)
        virtualAnswerRule(0, VIRTUAL_ANY_COMMAND, VIRTUAL_ANSWER_DELAY, 1, microseconds, nullptr);
    for (std::uint32_t amplifier = 0; spoil_ == Spoil::refusals && amplifier < deviceCount; amplifier += 4)
        virtualAnswerRule(amplifier, VIRTUAL_ANY_COMMAND, VIRTUAL_ANSWER_REPLACE, VIRTUAL_FOR_EVER, 0, refusal.data());
}

void Run::callNormally(std::size_t thread, std::uint64_t calls) {
    constexpr std::array failures = {-1, 229, 255};
    Arguments usual(seed_ + 1000 * roundNo_ + 500 + thread, Arguments::Kind::usual, fileOf(thread), calibrationFile);
    std::mt19937_64 chooser(usual.below(0xFFFFFFFF));
    std::discrete_distribution<std::size_t> choose(normalWeights_.begin(), normalWeights_.end());
    for (std::uint64_t i = 0; i < calls; ++i) {
        const std::size_t index = choose(chooser);
        const std::int32_t result = callOne(thread, index, usual);
        ++figures_.calls;
        ++figures_.normalCalls;
        if (std::ranges::find(failures, result) == failures.end()) continue;
        ++figures_.normalFailures;
        ++failedNormally_[index];
    }
}

std::int32_t Run::callOne(std::size_t thread, std::size_t index, Arguments& any) {
    const RandomCall& call = calls_[index];
    any.beginCall();
    watchdog_.begin(thread, call.name, call.mostWaits());
    const std::int32_t result = call.run(addresses_[index], any, any.device());
    watchdog_.end(thread);
    ++called_[index];
    if (result < 0) ++figures_.failures;
    if (std::string_view(call.name) == "TORVIKactivateExtended") {
        ++figures_.activations;
        if (result == 0) ++figures_.activationsSucceeded;
    }
    return result;
}

void Run::releaseOne(std::size_t thread, std::int32_t deviceNo) {
    bool met = false;
    watchdog_.begin(thread, deviceNo == 0 ? "TORVIKrelease of everything" : "TORVIKrelease");
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
    const std::uint64_t handedOut = adapterCounters().framesRead;
    complainUnless(all.framesReceived > 0 && all.framesReceived == handedOut,
                   "the adapter has handed out " + std::to_string(handedOut) + " frames, the library counts " +
                       std::to_string(all.framesReceived));
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
    const auto setting = function<decltype(TORVIKgetCANSettings)>("TORVIKgetCANSettings");
    for (std::int32_t deviceNo = 1; deviceNo <= deviceCount; ++deviceNo) {
        const std::int32_t result = activateOne(threads, deviceNo, TORVIK_FLAG_PROTOCOL_KIND_16);
        const bool active = result == 0 || takeError(deviceNo) == noChannelCount;
        std::uint32_t valueId = 0;
        watchdog_.begin(threads, "a question after the round");
        const std::int32_t asked = setting(deviceNo, valueIdentifier, &valueId);
        watchdog_.end(threads);
        complainUnless(active && asked == 0 && valueId == commandIdOf(static_cast<std::uint32_t>(deviceNo - 1)) + 2,
                       "device " + std::to_string(deviceNo) + " is not what it was: " + std::to_string(result) + ", " +
                           std::to_string(asked) + ", identifier " + std::to_string(valueId));
    }
}

std::int32_t Run::activateOne(std::size_t thread, std::int32_t deviceNo, std::uint32_t kindFlag) {
    const std::uint32_t commandId = commandIdOf(static_cast<std::uint32_t>(deviceNo - 1));
    std::uint32_t channels = 0;
    watchdog_.begin(thread, "activation of a device");
    const std::int32_t result = function<decltype(TORVIKactivateExtended)>("TORVIKactivateExtended")(
        deviceNo, TORVIK_ADAPTER_USB, 1'000'000, 100, &channels, commandId, commandId + 1, kindFlag);
    watchdog_.end(thread);
    return result;
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
        watchdog_.begin(threads, "unloading");
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
