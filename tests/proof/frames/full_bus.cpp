// A week of a full bus: 39 devices with 6 channels each send for as many frames as asked for, through the library's own
// receive thread, and every value read is compared with the one sent.
//
// --singly: each frame comes with a wake-up of its own, because the queue seems empty after every frame.
//
// --spoil shows that a fault would be found: one frame in the middle is lost, doubled, altered or has the value of the
// next set.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "api/TORVIK.h"
#include "frame_accounting.h"
#include "value_stream.h"

namespace torvik::proof {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t framesPerSet = lastDevice * channelCount;  // one set of every device
constexpr std::uint32_t bufferSize = 512;
constexpr std::uint64_t setsUnderWay = 448;  // never fills a buffer
constexpr std::uint64_t setsAtOnce = 64;
constexpr std::chrono::seconds longestSilence(20);
constexpr int failed = 1;

enum class Spoil : std::uint8_t { nothing, lose, twice, alter, reorder };

class FullBus : public FrameSource {
  public:
    FullBus(Spoil spoil, std::uint64_t spoiledFrame) : spoil_(spoil), spoiledFrame_(spoiledFrame) {}

    // Lets the devices send this many sets in all.
    void allow(std::uint64_t sets) { allowed_.store(sets * framesPerSet, std::memory_order_release); }

    std::uint32_t next(PcanMessage& message) override {
        if (frame_ == allowed_.load(std::memory_order_acquire)) return pcan::queueEmpty;
        writeValueFrame(deviceNo_, channel_, set_, message);
        if (frame_ == spoiledFrame_ && spoil_ != Spoil::nothing) return spoilFrame(message);
        ++frame_;
        advance();
        return pcan::ok;
    }

  private:
    // In every other set the devices send at the same time and their frames mix.
    void advance() {
        const bool mixed = (set_ & 1) != 0;
        if (mixed ? ++deviceNo_ <= lastDevice : ++channel_ < channelCount) return;
        if (mixed) {
            deviceNo_ = 1;
            if (++channel_ < channelCount) return;
        } else {
            channel_ = 0;
            if (++deviceNo_ <= lastDevice) return;
        }
        deviceNo_ = 1;
        channel_ = 0;
        ++set_;
    }

    std::uint32_t spoilFrame(PcanMessage& message) {
        const Spoil spoil = std::exchange(spoil_, Spoil::nothing);
        if (spoil == Spoil::twice) return pcan::ok;
        if (spoil == Spoil::alter) message.data[4] ^= 1;
        if (spoil == Spoil::reorder) {
            PcanMessage later;
            writeValueFrame(deviceNo_, channel_, set_ + 1, later);
            std::copy(later.data.begin() + 4, later.data.end(), message.data.begin() + 4);
        }
        ++frame_;
        advance();
        return spoil == Spoil::lose ? next(message) : pcan::ok;
    }

    Spoil spoil_;
    std::uint64_t spoiledFrame_;
    std::uint64_t frame_ = 0;
    std::uint64_t set_ = 0;
    std::uint8_t deviceNo_ = 1;
    std::uint32_t channel_ = 0;
    std::atomic<std::uint64_t> allowed_ = 0;
};

// Reads all devices until each has delivered `sets` sets. Result: what went wrong; empty: nothing.
std::string readAll(FullBus& bus, std::uint64_t sets) {
    std::vector<SetChecker> checkers;
    for (std::uint8_t deviceNo = 1; deviceNo <= lastDevice; ++deviceNo)
        checkers.emplace_back(deviceNo, bufferSize);
    std::uint64_t allowed = 0;
    auto latest = Clock::now();
    for (std::uint64_t taken = 0; taken < sets;) {
        if (const std::uint64_t more = std::min(taken + setsUnderWay, sets);
            more >= allowed + setsAtOnce || (more == sets && allowed < sets)) {
            allowed = more;
            bus.allow(allowed);
            ProofAdapter::instance().signal();
        }
        std::size_t arrived = 0;
        taken = sets;
        for (SetChecker& checker : checkers) {
            arrived += checker.take();
            if (checker.fault()) return *checker.fault();
            taken = std::min(taken, checker.sets());
        }
        if (arrived > 0) {
            latest = Clock::now();
        } else if (Clock::now() - latest > longestSilence) {
            return fmt::format("lost: nothing comes any more after {} sets", taken);
        } else {
            std::this_thread::yield();
        }
    }
    return {};
}

// Every device has sent so many complete sets and nothing else.
std::vector<std::string> differences(const FrameAccounting& accounting, std::uint64_t sets) {
    TORVIKstatistics expected{};
    expected.framesRouted = expected.framesStored = sets * channelCount;
    expected.setsStored = sets;
    std::vector<std::string> lines;
    for (std::uint8_t deviceNo = 1; deviceNo <= lastDevice; ++deviceNo) {
        for (std::string& line : accounting.differences(deviceNo, expected))
            lines.push_back(std::move(line));
    }
    const TORVIKstatistics all = accounting.since(0);
    if (all.framesReceived != sets * framesPerSet || all.framesWithoutDevice + all.framesNotRouted != 0)
        lines.push_back(fmt::format("{} frames received", all.framesReceived));
    if (all.valuesOverwritten + all.valuesCleared != 0)
        lines.push_back(fmt::format("{} values overwritten, {} cleared", all.valuesOverwritten, all.valuesCleared));
    return lines;
}

int run(std::uint64_t frames, Spoil spoil, bool singly) {
    const std::uint64_t sets = (frames + framesPerSet - 1) / framesPerSet;
    FullBus bus(spoil, sets / 2 * framesPerSet + 1);
    for (std::uint8_t deviceNo = 1; deviceNo <= lastDevice; ++deviceNo)
        activateDevice(deviceNo, bufferSize);
    ProofAdapter& adapter = ProofAdapter::instance();
    const FrameAccounting accounting;
    if (singly) adapter.handOutSingly();
    const std::uint64_t emptyBefore = adapter.emptyReads();
    adapter.connect(&bus);
    const auto begin = Clock::now();
    std::vector<std::string> faults;
    if (std::string fault = readAll(bus, sets); !fault.empty()) faults.push_back(std::move(fault));
    const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    // After a fault not all sets have been sent.
    if (faults.empty()) faults = differences(accounting, sets);
    for (std::string& violation : accounting.violations())
        faults.push_back(std::move(violation));
    const std::uint64_t pauses = adapter.emptyReads() - emptyBefore;
    if (singly && pauses + 1 < sets * framesPerSet)
        faults.push_back(fmt::format("{} pauses between {} frames", pauses, sets * framesPerSet));
    TORVIKrelease(0);
    adapter.connect(nullptr);

    for (const std::string& fault : faults)
        fmt::print("FAULT {}\n", fault);
    if (!faults.empty()) return failed;
    fmt::print(
        "full bus: {} value frames of {} devices x {} channels{}, every value compared: 0 lost, 0 wrong, 0 doubled, "
        "0 reordered; {:.1f} million frames/s, {:.1f} s\n",
        sets * framesPerSet, lastDevice, channelCount, singly ? ", each with a wake-up of its own" : "",
        static_cast<double>(sets * framesPerSet) / seconds / 1e6, seconds);
    return 0;
}

}  // namespace
}  // namespace torvik::proof

int main(int argc, char** argv) {
    using torvik::proof::Spoil;
    CLI::App app("Sends value frames of 39 devices through the library and compares every value read.");
    std::uint64_t frames = 100'000'000;
    Spoil spoil = Spoil::nothing;
    app.add_option("--frames", frames, "How many; whole sets of all devices are sent")->check(CLI::PositiveNumber);
    app.add_option("--spoil", spoil, "Spoil one frame in the middle: the exit code has to be 1")
        ->transform(CLI::CheckedTransformer(std::map<std::string, Spoil>{
            {"lose", Spoil::lose}, {"twice", Spoil::twice}, {"alter", Spoil::alter}, {"reorder", Spoil::reorder}}));
    bool singly = false;
    app.add_flag("--singly", singly, "Hand out one frame for each wake-up");
    CLI11_PARSE(app, argc, argv);
    try {
        return torvik::proof::run(frames, spoil, singly);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "not run: %s\n", exception.what());
        return 2;
    }
}
