// Hostile frames: whatever a bus and an adapter can deliver goes through the library's receive thread, while one thread
// reads four devices in the same stream and compares every value with what their frames amount to, and another calls
// what it likes on two others. Every frame of all six has to be counted for what became of it.
//
// A run is told by its seed: the same one gives the same frames.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "api/TORVIK.h"
#include "expected_devices.h"
#include "floating_point_traps.h"
#include "frame_accounting.h"
#include "hostile_stream.h"
#include "silenced_output.h"
#include "support/seed.h"
#include "value_stream.h"

namespace torvik::proof {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t bufferSize = 512;
constexpr std::chrono::seconds longestSilence(60);
constexpr std::uint32_t noValueIdentifier = 249;
constexpr std::uint32_t failedWrite = 223;
constexpr std::uint32_t identifierOfNobody = 0x7FF;
constexpr int failed = 1;

const char* nameOf(Entry entry) {
    constexpr std::array names = {"CAN_Initialize", "CAN_Uninitialize", "CAN_Reset",    "CAN_Read",
                                  "CAN_Write",      "CAN_GetValue",     "CAN_SetValue", "CAN_GetErrorText"};
    static_assert(names.size() == entryCount);
    return names[static_cast<std::size_t>(entry)];
}

std::uint32_t takeLastError(std::int32_t deviceNo) {
    std::array<char, 128> text{};
    std::uint32_t code = 0;
    TORVIKgetLastErrorText(deviceNo, text.data(), &code);
    return code;
}

// 0 or the code of the failure.
std::uint32_t activationCode(std::uint32_t flags = 0) {
    std::uint32_t channels = 0;
    if (TORVIKactivateExtended(healthyDevice, TORVIK_ADAPTER_USB, 1000000, bufferSize, &channels,
                               commandIdOf(healthyDevice), answerIdOf(healthyDevice),
                               TORVIK_FLAG_PROTOCOL_KIND_16 | flags) == 0) {
        return 0;
    }
    return takeLastError(healthyDevice);
}

// What an activation has to tell when one call of this entry point gives this status.
std::uint32_t expectedCode(Entry entry, std::uint32_t status) {
    switch (entry) {
        case Entry::initialize:
        case Entry::setValue:
            return status;
        case Entry::write:
        case Entry::getErrorText:
            return noValueIdentifier;
        default:
            return 0;
    }
}

// The first call of this entry point gives this status while the adapter is opened and closed. Result: what went wrong;
// empty: nothing.
std::string tryFirstCall(Entry entry, std::uint32_t status) {
    ProofAdapter& adapter = ProofAdapter::instance();
    const std::uint32_t debug = entry == Entry::getErrorText ? TORVIK_FLAG_DEBUG_OUTPUT : 0;
    if (entry == Entry::getErrorText) adapter.fail(Entry::write, pcan::busHeavy);
    adapter.fail(entry, status);
    const std::uint32_t code = activationCode(debug);
    TORVIKrelease(0);
    adapter.stopFailing(entry);
    adapter.forgetAnswers();
    takeLastError(healthyDevice);
    return code == expectedCode(entry, status) ? "" : fmt::format("the activation gave 0x{:X}", code);
}

// Gives a status a few times, then nothing. A frame comes before each: the library waits after passes that read nothing
// but faults.
class FewStatuses : public FrameSource {
  public:
    FewStatuses(std::uint32_t status, std::uint32_t times) : status_(status), left_(times) {}

    std::uint32_t next(PcanMessage& message) override {
        if (left_ == 0) return pcan::queueEmpty;
        message.id = identifierOfNobody;
        afterFrame_ = !afterFrame_;
        if (afterFrame_) return pcan::ok;
        --left_;
        ProofAdapter::instance().signal();
        return status_;
    }

  private:
    std::uint32_t status_;
    std::uint32_t left_;
    bool afterFrame_ = false;
};

// Never runs dry: the receive thread needs no event to read on.
class Chatter : public FrameSource {
  public:
    std::uint32_t next(PcanMessage& message) override {
        message.id = identifierOfNobody;
        return pcan::ok;
    }
};

constexpr std::uint32_t repetitions = 3;

std::string repeatResets(FewStatuses& source) {
    ProofAdapter& adapter = ProofAdapter::instance();
    const std::uint64_t before = adapter.recordOf(Entry::reset).calls;
    adapter.connect(&source);
    adapter.signal();
    const auto limit = Clock::now() + std::chrono::seconds(5);
    while (adapter.recordOf(Entry::reset).calls < before + repetitions && Clock::now() < limit)
        std::this_thread::yield();
    adapter.connect(nullptr);
    return Clock::now() < limit ? "" : "the adapter is not reset after each fault";
}

std::string repeatWrites() {
    for (std::uint32_t i = 0; i < repetitions; ++i) {
        std::uint32_t number = 0;
        if (TORVIKgetSerialNo(healthyDevice, &number) == 0 || takeLastError(healthyDevice) != failedWrite)
            return "a failed write is not reported";
    }
    return {};
}

// Opens the adapter, which may fail with `code`.
std::string open(std::uint32_t code = 0, std::uint32_t flags = 0) {
    const std::uint32_t given = activationCode(flags);
    return given == code ? "" : fmt::format("a later activation gave 0x{:X}", given);
}

// Several calls on end of this entry point give this status, later ones than the first after the opening where there
// are any. Result: what went wrong; empty: nothing.
std::string tryLaterCalls(Entry entry, std::uint32_t status) {
    ProofAdapter& adapter = ProofAdapter::instance();
    if (entry == Entry::initialize || entry == Entry::getValue) adapter.fail(entry, status, repetitions);
    if (entry == Entry::initialize) {
        for (std::uint32_t i = 0; i < repetitions; ++i) {
            if (const std::string fault = open(status); !fault.empty()) return fault;
            TORVIKrelease(0);
        }
        return {};
    }
    // Until the receive thread has ended.
    Chatter chatter;
    FewStatuses fewStatuses(pcan::busHeavy, repetitions);
    if (entry == Entry::getValue) adapter.connect(&chatter);
    std::string fault = open(0, entry == Entry::getErrorText ? TORVIK_FLAG_DEBUG_OUTPUT : 0);
    adapter.connect(nullptr);
    if (!fault.empty()) return fault;
    if (entry != Entry::getValue) adapter.fail(entry, status, repetitions);
    if (entry == Entry::getErrorText) adapter.fail(Entry::write, pcan::busHeavy, repetitions);
    if (entry == Entry::reset) fault = repeatResets(fewStatuses);
    if (entry == Entry::write || entry == Entry::getErrorText) fault = repeatWrites();
    for (std::uint32_t i = 1; entry == Entry::uninitialize && fault.empty() && i < repetitions; ++i) {
        TORVIKrelease(0);
        fault = open();
    }
    TORVIKrelease(0);
    adapter.stopFailing(entry);
    adapter.forgetAnswers();
    return fault;
}

// Every status of every other entry point than read. Result: what went wrong; empty: nothing.
std::string tryEveryStatus() {
    for (const Entry entry : {Entry::initialize, Entry::uninitialize, Entry::reset, Entry::write, Entry::getValue,
                              Entry::setValue, Entry::getErrorText}) {
        std::optional<SilencedOutput> silenced;
        if (entry == Entry::getErrorText) silenced.emplace();
        for (const std::uint32_t status : adapterStatuses) {
            // Without a receive event each answer takes 200 ms: the later calls of CAN_GetValue begin with the first.
            std::string fault = entry == Entry::getValue ? std::string() : tryFirstCall(entry, status);
            if (fault.empty()) fault = tryLaterCalls(entry, status);
            if (!fault.empty()) return fmt::format("status 0x{:X} of {}: {}", status, nameOf(entry), fault);
        }
    }
    return {};
}

// Those that the library calls several times while the adapter is open.
constexpr bool calledAgain(Entry entry) {
    return entry != Entry::initialize && entry != Entry::uninitialize;
}

// Statuses that an entry point has not given at least twice and, where it can, in a later call than the first after an
// opening. Empty: none.
std::vector<std::string> statusesNotGiven() {
    std::vector<std::string> faults;
    for (std::size_t index = 0; index < entryCount; ++index) {
        const auto entry = static_cast<Entry>(index);
        const EntryRecord record = ProofAdapter::instance().recordOf(entry);
        // Windows registers its event with CAN_SetValue.
        if (entry == Entry::getValue && !ProofAdapter::instance().hasDescriptor()) continue;
        for (std::size_t i = 0; i < adapterStatuses.size(); ++i) {
            if (record.given[i] >= 2 && (record.givenLater[i] > 0 || !calledAgain(entry))) continue;
            faults.push_back(fmt::format("{} has given status 0x{:X} {} times, {} times after its first call",
                                         nameOf(entry), adapterStatuses[i], record.given[i], record.givenLater[i]));
        }
    }
    return faults;
}

// Calls on the victims, one after the other, until it is to stop; on those whose values are compared only what leaves
// the values alone.
class Caller {
  public:
    explicit Caller(std::uint64_t seed) : random_(seed), thread_([this] { callUntilStopped(); }) {}
    ~Caller() { stop(); }
    Caller(const Caller&) = delete;
    Caller& operator=(const Caller&) = delete;

    void stop() {
        stopping_ = true;
        if (thread_.joinable()) thread_.join();
    }
    std::uint64_t calls() const { return calls_; }

  private:
    void callUntilStopped() {
        for (; !stopping_; ++calls_)
            call(static_cast<std::int32_t>(2 + random_.below(lastVictim - 1)));
    }

    static std::int32_t withoutReader(std::int32_t deviceNo) {
        return deviceNo > lastComparedDevice ? deviceNo : lastVictim - deviceNo % 2;
    }

    void call(std::int32_t deviceNo) {
        std::array<double, 8 * channelCount> values{};
        std::array<std::uint32_t, 8 * channelCount> statuses{};
        std::int32_t count = 0;
        std::uint32_t number = 0;
        TORVIKstatistics statistics{};
        switch (random_.below(16)) {
            case 0:
                if (random_.below(4) == 0)
                    ProofAdapter::instance().fail(Entry::write, adapterStatuses[random_.below(adapterStatuses.size())]);
                TORVIKgetSerialNo(deviceNo, &number);
                break;
            case 1:
                TORVIKgetRawValue(deviceNo, 1 + random_.below(8), &number);
                break;
            case 2:
                TORVIKclearDLLbuffer(withoutReader(deviceNo));
                break;
            case 3:
                ProofAdapter::instance().fail(Entry::reset, adapterStatuses[random_.below(adapterStatuses.size())]);
                takeLastError(deviceNo);
                break;
            case 4:
                TORVIKreceived(deviceNo, random_.below(10), &count);
                break;
            case 5:
                statistics.size = sizeof statistics;
                TORVIKgetStatistics(deviceNo, &statistics);
                break;
            case 6:
            case 7:
            case 8:
            case 9:
                TORVIKread(withoutReader(deviceNo), 1 + random_.below(8), values.data());
                break;
            default:
                TORVIKreadMultiple(withoutReader(deviceNo), random_.below(8), values.data(),
                                   static_cast<std::int32_t>(values.size()), &count, statuses.data());
        }
    }

    Random random_;
    std::uint64_t calls_ = 0;
    std::atomic<bool> stopping_ = false;
    std::thread thread_;
};

// Reads the compared devices until the stream has ended. Result: what went wrong; empty: nothing.
std::string readCompared(HostileStream& stream, const ExpectedDevices& devices,
                         std::vector<ValueComparison>& comparisons) {
    std::uint64_t framesSeen = 0;
    auto latest = Clock::now();
    while (!stream.ended() || !devices.allRead()) {
        std::size_t arrived = 0;
        for (ValueComparison& comparison : comparisons) {
            arrived += comparison.take();
            if (comparison.fault()) return *comparison.fault();
        }
        if (arrived > 0 && stream.takeWaiting()) ProofAdapter::instance().signal();
        const std::uint64_t frames = ProofAdapter::instance().framesRead();
        if (frames != framesSeen || arrived > 0) latest = Clock::now();
        framesSeen = frames;
        if (Clock::now() - latest > longestSilence)
            return fmt::format("lost: no frame is read and no set delivered any more after {} frames", frames);
        if (arrived == 0) std::this_thread::yield();
    }
    for (ValueComparison& comparison : comparisons) {
        comparison.take();
        if (comparison.fault()) return *comparison.fault();
    }
    return {};
}

void untilEverythingIsCounted(const FrameAccounting& accounting) {
    const auto limit = Clock::now() + std::chrono::seconds(5);
    while ((ProofAdapter::instance().answersWait() || !accounting.violations().empty()) && Clock::now() < limit)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

// What the adapter's own counts should be and are not.
std::vector<std::string> adapterDifferences(const TORVIKstatistics& counted, const HostileStream& stream,
                                            const ExpectedDevices& devices) {
    std::map<std::string, std::pair<std::uint64_t, std::uint64_t>> counts = {
        {"frames without a device", {counted.framesWithoutDevice, devices.withoutDevice()}},
        {"frames not routed", {counted.framesNotRouted, 0}},
        {"bus light", {counted.faultsBusLight, 0}},
        {"bus heavy", {counted.faultsBusHeavy, 0}},
        {"bus off", {counted.faultsBusOff, 0}},
        {"queue overrun", {counted.faultsQueueOverrun, 0}},
        {"illegal hardware", {counted.faultsIllegalHardware, 0}},
        {"other faults", {counted.faultsOther, 0}},
    };
    const std::map<std::uint32_t, std::string> names = {{0x4, "bus light"},
                                                        {0x8, "bus heavy"},
                                                        {0x10, "bus off"},
                                                        {0x40, "queue overrun"},
                                                        {0x1400, "illegal hardware"}};
    for (const auto& [status, times] : stream.faults()) {
        const auto found = names.find(status);
        counts[found == names.end() ? "other faults" : found->second].second += times;
    }
    std::vector<std::string> lines;
    for (const auto& [name, pair] : counts) {
        if (pair.first != pair.second)
            lines.push_back(fmt::format("{}: {} counted, {} given", name, pair.first, pair.second));
    }
    return lines;
}

struct Outcome {
    std::vector<std::string> faults;
    std::uint64_t frames = 0;
    std::uint64_t healthySets = 0;
    std::uint64_t setsCompared = 0;
    std::uint64_t statuses = 0;
    std::uint64_t calls = 0;
    double seconds = 0;

    void add(const std::vector<std::string>& more) { faults.insert(faults.end(), more.begin(), more.end()); }
};

void compareCounts(Outcome& outcome, const FrameAccounting& accounting, const HostileStream& stream,
                   const ExpectedDevices& devices) {
    outcome.add(accounting.violations());
    for (std::uint8_t deviceNo = 1; deviceNo <= lastDevice; ++deviceNo)
        outcome.add(
            accounting.differences(deviceNo, deviceNo <= lastVictim ? devices.counts(deviceNo) : TORVIKstatistics{}));
    outcome.add(adapterDifferences(accounting.since(0), stream, devices));
    for (std::uint8_t deviceNo = healthyDevice; deviceNo <= lastComparedDevice; ++deviceNo) {
        const TORVIKstatistics counts = accounting.since(deviceNo);
        if (counts.valuesOverwritten + counts.valuesCleared != 0)
            outcome.faults.push_back(fmt::format("device {}: {} values overwritten, {} cleared", deviceNo,
                                                 counts.valuesOverwritten, counts.valuesCleared));
    }
}

Outcome meetStream(std::uint64_t seed, std::uint64_t frames) {
    Outcome outcome;
    for (std::uint8_t deviceNo = healthyDevice; deviceNo <= lastVictim; ++deviceNo)
        activateDevice(deviceNo, bufferSize);
    ProofAdapter& adapter = ProofAdapter::instance();
    const FrameAccounting accounting;
    const auto devices = std::make_unique<ExpectedDevices>();
    adapter.observe(devices.get());
    HostileStream stream(seed, frames, *devices);
    std::vector<ValueComparison> comparisons;
    for (std::uint8_t deviceNo = healthyDevice; deviceNo <= lastComparedDevice; ++deviceNo)
        comparisons.emplace_back(deviceNo, devices->sets(deviceNo));
    const std::uint64_t framesBefore = adapter.framesRead();
    const auto begin = Clock::now();
    {
        Caller caller(seed + 1);
        adapter.connect(&stream);
        if (const std::string fault = readCompared(stream, *devices, comparisons); !fault.empty())
            outcome.faults.push_back(fault);
        caller.stop();
        outcome.calls = caller.calls();
    }
    outcome.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    adapter.connect(nullptr);
    untilEverythingIsCounted(accounting);
    // After a fault the stream has not come to its end.
    if (outcome.faults.empty()) compareCounts(outcome, accounting, stream, *devices);
    outcome.frames = adapter.framesRead() - framesBefore;
    outcome.healthySets = devices->sets(healthyDevice).made();
    for (const ValueComparison& comparison : comparisons)
        outcome.setsCompared += comparison.sets();
    for (const auto& [status, times] : stream.faults())
        outcome.statuses += times;
    TORVIKrelease(0);
    adapter.observe(nullptr);
    return outcome;
}

int run(std::uint64_t seed, std::uint64_t frames) {
    trapFloatingPoint();
    if (const std::string fault = tryEveryStatus(); !fault.empty()) {
        fmt::print("FAULT {}\n", fault);
        return failed;
    }
    Outcome outcome = meetStream(seed, frames);
    if (outcome.faults.empty()) outcome.add(statusesNotGiven());
    for (const std::string& fault : outcome.faults)
        fmt::print("FAULT {}; repeat with --seed {} --frames {}\n", fault, seed, frames);
    if (!outcome.faults.empty()) return failed;
    fmt::print(
        "hostile frames: {} frames with seed {}, {} adapter faults between them, {} calls beside them; {} sets of {} "
        "devices, {} of them the healthy one's, have the values and statuses sent; every frame of {} devices counted "
        "for its reason; every entry point has given each of {} statuses repeatedly; {:.2f} million frames/s, {:.1f} "
        "s\n",
        outcome.frames, seed, outcome.statuses, outcome.calls, outcome.setsCompared, lastComparedDevice,
        outcome.healthySets, lastVictim, adapterStatuses.size(),
        static_cast<double>(outcome.frames) / outcome.seconds / 1e6, outcome.seconds);
    return 0;
}

}  // namespace
}  // namespace torvik::proof

int main(int argc, char** argv) {
    CLI::App app("Sends hostile frames through the library, and a healthy device's in between.");
    std::uint64_t frames = 10'000'000;
    std::optional<std::uint64_t> seed;
    app.add_option("--frames", frames, "How many")->check(CLI::PositiveNumber);
    app.add_option("--seed", seed,
                   "The same seed gives the same frames; default: TORVIK_SEED, or another one each time");
    CLI11_PARSE(app, argc, argv);
    try {
        return torvik::proof::run(seed ? *seed : torvik::test::seed(), frames);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "not run: %s\n", exception.what());
        return 2;
    }
}
