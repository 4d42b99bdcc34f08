// Hostile frames: whatever a bus and an adapter can deliver goes through the library's receive thread, while one thread
// reads a healthy device in the same stream, which must lose nothing, and another calls what it likes on the others.
//
// A run is told by its seed: the same one gives the same frames.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "api/TORVIK.h"
#include "floating_point_traps.h"
#include "frame_law.h"
#include "hostile_stream.h"
#include "silenced_output.h"
#include "support/seed.h"
#include "value_stream.h"

namespace torvik::proof {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t bufferSize = 512;
constexpr std::uint64_t setsUnderWay = 448;  // never fills the healthy device's buffer
constexpr std::chrono::seconds longestSilence(60);
constexpr std::uint32_t noValueIdentifier = 249;
constexpr int failed = 1;

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

// Opens and closes the adapter with this status, and gives what the activation has told.
std::uint32_t codeAt(Entry entry, std::uint32_t status) {
    ProofAdapter::instance().failOnce(entry, status);
    const std::uint32_t code = activationCode();
    TORVIKrelease(0);
    return code;
}

// The same for the text of a failed write, which only debug output asks for.
std::uint32_t codeAtErrorText(std::uint32_t status) {
    ProofAdapter& adapter = ProofAdapter::instance();
    const SilencedOutput silenced;
    adapter.failOnce(Entry::write, pcan::busHeavy);
    adapter.failOnce(Entry::getErrorText, status);
    const std::uint32_t code = activationCode(TORVIK_FLAG_DEBUG_OUTPUT);
    TORVIKrelease(0);
    return code;
}

// The activation tells the status of one call or goes on without, and the next one succeeds. Result: what went wrong;
// empty: nothing.
std::string tryStatus(Entry entry, std::uint32_t status) {
    ProofAdapter& adapter = ProofAdapter::instance();
    const std::uint32_t code = entry == Entry::getErrorText ? codeAtErrorText(status) : codeAt(entry, status);
    const bool given = adapter.takeStatus(entry) == pcan::ok;
    adapter.forgetAnswers();
    takeLastError(healthyDevice);
    if (code != expectedCode(entry, status)) return fmt::format("the activation gave 0x{:X}", code);
    if (entry == Entry::getErrorText && !given) return "debug output has not asked for the text";
    const std::uint32_t next = activationCode();
    TORVIKrelease(0);
    return next == 0 ? "" : fmt::format("the next activation gave 0x{:X}", next);
}

// Every status of every other entry point, once each. Result: what went wrong; empty: nothing.
std::string tryEveryStatus() {
    for (const Entry entry : {Entry::initialize, Entry::uninitialize, Entry::reset, Entry::write, Entry::getValue,
                              Entry::setValue, Entry::getErrorText}) {
        for (const std::uint32_t status : adapterStatuses) {
            if (const std::string fault = tryStatus(entry, status); !fault.empty())
                return fmt::format("status 0x{:X} of entry point {}: {}", status, static_cast<int>(entry), fault);
        }
    }
    return {};
}

// Calls on the victims, one after the other, until it is to stop.
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

    void call(std::int32_t deviceNo) {
        std::array<double, 8 * channelCount> values{};
        std::array<std::uint32_t, 8 * channelCount> statuses{};
        std::int32_t count = 0;
        std::uint32_t number = 0;
        TORVIKstatistics statistics{};
        switch (random_.below(16)) {
            case 0:
                if (random_.below(4) == 0)
                    ProofAdapter::instance().failOnce(Entry::write,
                                                      adapterStatuses[random_.below(adapterStatuses.size())]);
                TORVIKgetSerialNo(deviceNo, &number);
                break;
            case 1:
                TORVIKgetRawValue(deviceNo, 1 + random_.below(8), &number);
                break;
            case 2:
                TORVIKclearDLLbuffer(deviceNo);
                break;
            case 3:
                ProofAdapter::instance().failOnce(Entry::reset, adapterStatuses[random_.below(adapterStatuses.size())]);
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
                TORVIKread(deviceNo, 1 + random_.below(8), values.data());
                break;
            default:
                TORVIKreadMultiple(deviceNo, random_.below(8), values.data(), static_cast<std::int32_t>(values.size()),
                                   &count, statuses.data());
        }
    }

    Random random_;
    std::uint64_t calls_ = 0;
    std::atomic<bool> stopping_ = false;
    std::thread thread_;
};

// Reads the healthy device until the stream has ended. Result: what went wrong; empty: nothing.
std::string readHealthy(HostileStream& stream, SetChecker& checker) {
    std::uint64_t allowed = 0;
    std::uint64_t framesSeen = 0;
    auto latest = Clock::now();
    while (!stream.ended() || checker.sets() < stream.healthySets()) {
        if (checker.sets() + setsUnderWay >= allowed + setsUnderWay / 8) {
            allowed = checker.sets() + setsUnderWay;
            stream.allow(allowed);
            ProofAdapter::instance().signal();
        }
        const std::size_t arrived = checker.take();
        if (checker.fault()) return *checker.fault();
        const std::uint64_t frames = ProofAdapter::instance().framesRead();
        if (frames != framesSeen) {
            framesSeen = frames;
            latest = Clock::now();
        }
        if (Clock::now() - latest > longestSilence)
            return fmt::format("lost: no frame is read any more after {}", frames);
        if (arrived == 0) std::this_thread::yield();
    }
    return {};
}

bool untilEverythingIsCounted(const FrameLaw& law) {
    for (const auto limit = Clock::now() + std::chrono::seconds(5); Clock::now() < limit;) {
        if (law.broken().empty()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return law.broken().empty();
}

struct Outcome {
    std::vector<std::string> faults;
    std::uint64_t frames = 0;
    std::uint64_t healthySets = 0;
    std::uint64_t statuses = 0;
    std::uint64_t calls = 0;
    double seconds = 0;
};

Outcome meetStream(std::uint64_t seed, std::uint64_t frames) {
    Outcome outcome;
    for (std::uint8_t deviceNo = healthyDevice; deviceNo <= lastVictim; ++deviceNo)
        activateDevice(deviceNo, bufferSize);
    const FrameLaw law;
    HostileStream stream(seed, frames);
    SetChecker checker(healthyDevice, bufferSize);
    const std::uint64_t framesBefore = ProofAdapter::instance().framesRead();
    const auto begin = Clock::now();
    {
        Caller caller(seed + 1);
        ProofAdapter::instance().connect(&stream);
        if (const std::string fault = readHealthy(stream, checker); !fault.empty()) outcome.faults.push_back(fault);
        caller.stop();
        outcome.calls = caller.calls();
    }
    outcome.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    ProofAdapter::instance().connect(nullptr);
    if (!untilEverythingIsCounted(law)) {
        for (const std::string& text : law.broken())
            outcome.faults.push_back("frame law broken: " + text);
    }
    const TORVIKstatistics healthy = law.since(healthyDevice);
    if (healthy.setsStored != checker.sets() || healthy.framesStored != checker.sets() * channelCount ||
        healthy.valuesOverwritten + healthy.valuesStale + healthy.setsMissing + healthy.framesOutsideSet != 0) {
        outcome.faults.push_back(
            fmt::format("the healthy device sent {} sets; {} are counted", checker.sets(), healthy.setsStored));
    }
    outcome.frames = ProofAdapter::instance().framesRead() - framesBefore;
    outcome.healthySets = checker.sets();
    outcome.statuses = stream.statuses();
    TORVIKrelease(0);
    return outcome;
}

int run(std::uint64_t seed, std::uint64_t frames) {
    trapFloatingPoint();
    if (const std::string fault = tryEveryStatus(); !fault.empty()) {
        fmt::print("FAULT {}\n", fault);
        return failed;
    }
    const Outcome outcome = meetStream(seed, frames);
    for (const std::string& fault : outcome.faults)
        fmt::print("FAULT {}; repeat with --seed {} --frames {}\n", fault, seed, frames);
    if (!outcome.faults.empty()) return failed;
    fmt::print(
        "hostile frames: {} frames with seed {}, {} adapter faults between them, {} calls beside them; the healthy "
        "device's {} sets all right; {} statuses of {} other entry points survived; {:.2f} million frames/s, {:.1f} "
        "s\n",
        outcome.frames, seed, outcome.statuses, outcome.calls, outcome.healthySets, adapterStatuses.size(), entryCount,
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
