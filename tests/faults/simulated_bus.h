// An adapter library inside the test program with three devices on its bus. Linking it takes the place of loading one.
// A device answers within the writing of the command, on the caller's own thread, through the library's real receive
// path; together with the simulated clock the same calls meet the same faults every time. Or the library's own receive
// thread reads, and real time passes.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <string_view>
#include <thread>
#include <vector>

#include "arrival_signal.h"
#include "can/pcan_api.h"
#include "faults/fault_plan.h"
#include "faults/simulated_clock.h"
#include "params/export_row.h"

namespace torvik::test {

inline constexpr std::size_t simulatedDevices = 3;

// Numbered like the library's devices, 1 the first.
constexpr std::uint32_t commandIdOf(std::int32_t deviceNo) {
    return static_cast<std::uint32_t>(deviceNo) * 0x100;
}
constexpr std::uint32_t answerIdOf(std::int32_t deviceNo) {
    return commandIdOf(deviceNo) + 1;
}
constexpr std::uint32_t valueIdOf(std::int32_t deviceNo) {
    return commandIdOf(deviceNo) + 2;
}

// What a device answers to the request for its identification.
constexpr std::uint32_t identOf(std::int32_t deviceNo) {
    return 0x1D00 + static_cast<std::uint32_t>(deviceNo);
}

using Bytes = std::array<std::uint8_t, 8>;

class SimulatedBus {
  public:
    // A position of an exchange.
    struct Position {
        bool written = false;   // a frame goes out here
        bool answered = false;  // an answer comes here
    };

    // The adapter's functions; the last is the finding of all of them.
    enum class Entry : std::uint8_t { initialize, uninitialize, reset, read, write, getValue, setValue, library };

    // The adapter call that failed.
    struct FailedCall {
        Entry entry = Entry::read;
        std::size_t position = 0;    // of the exchange: the next one
        std::size_t answer = 0;      // the position whose answer was put on the bus last
        std::uint8_t parameter = 0;  // of getValue and setValue
        bool framesWaited = false;   // in the receive queue
    };

    static SimulatedBus& instance();

    // Everything works, nothing is scripted or recorded.
    void restore(SimulatedClock& clock);

    // What all devices report as their firmware version.
    void setFirmware(std::uint32_t version) { firmware_ = version; }

    // The first device gives these answers, each once and in this order to its command, and its own to others.
    void script(std::span<const Answer> answers);

    // From now on commands to the first device are positions of an exchange, and the fault strikes.
    void begin(const FaultPlan& plan, std::function<void()> release = {});

    // The fault is over. What was recorded stays until the next beginning.
    void end();

    // There is no bus any more, until the exchange ends.
    void breakDown();

    // An answer from nowhere waits to be read.
    void queueForeignAnswer();

    // Lets the library read what is there, as its receive thread does when it is woken.
    void pump();

    // Until the next restoring the library's own receive thread reads what comes, woken by the adapter's signal.
    void readOnReceiveThread();

    // A complete set of a device's values: each channel's is its index, counted from `first`.
    void sendSet(std::int32_t deviceNo, std::uint16_t sequence, std::int16_t first);

    // Frames that the library has taken since the restoring.
    std::uint64_t framesRead();

    // The n-th adapter call (1 the first) fails with this status, or all from it on. Once the receive thread reads,
    // only its own calls count.
    void failCall(std::uint32_t nth, bool fromThenOn, std::uint32_t status);
    void failNoCall();
    std::optional<FailedCall> failedCall() const { return failedCall_; }

    // Nobody has read them yet.
    std::size_t waitingFrames();

    const std::vector<Position>& positions() const { return positions_; }
    const std::vector<std::uint8_t>& sent() const { return sent_; }  // command codes that went out
    // As they were put on the bus last: for the first device, and for the one that misdirected answers go to.
    const Bytes& lastAnswer() const { return lastAnswer_; }
    const Bytes& misdirectedAnswer() const { return misdirectedAnswer_; }

    // The adapter's functions.
    std::uint32_t getValue(std::uint8_t parameter, void* value);
    std::uint32_t setValue(std::uint8_t parameter, std::uint64_t value);
    std::uint32_t call(Entry entry, std::uint8_t parameter = 0);
    bool findsLibrary() { return call(Entry::library) == pcan::ok; }
    std::uint32_t reset();
    std::uint32_t read(PcanMessage& message);
    std::uint32_t write(const PcanMessage& message);

  private:
    struct Frame {
        std::uint32_t identifier;
        Bytes data;
    };

    std::vector<Bytes> answersTo(std::int32_t deviceNo, const PcanMessage& message);
    std::optional<Bytes> takeScripted(std::uint8_t command);
    std::uint32_t writeToFirst(const PcanMessage& message);
    void deliver(std::size_t position, const Bytes& answer);
    void deliverFaulty(const Bytes& answer);
    void put(std::uint32_t identifier, const Bytes& data);
    void scheduleRelease();
    void scheduleWakeUps();

    SimulatedClock* clock_ = nullptr;
    std::uint32_t firmware_ = 0;
    std::deque<Answer> script_;
    FaultPlan plan_;
    std::function<void()> release_;
    bool inExchange_ = false;
    bool brokenDown_ = false;
    std::size_t position_ = 0;
    std::size_t delivering_ = 0;
    std::vector<Position> positions_;
    std::vector<std::uint8_t> sent_;
    Bytes lastAnswer_{};
    Bytes misdirectedAnswer_{};
    Bytes shifted_{};

    proof::ArrivalSignal signal_;
    bool onReceiveThread_ = false;
    std::thread::id testThread_;
    std::uint64_t framesRead_ = 0;

    std::mutex queueMutex_;
    std::deque<Frame> queue_;

    std::uint32_t callsUntilFailure_ = 0;  // 0: none fails
    bool fromThenOn_ = false;
    bool failing_ = false;
    std::uint32_t failureStatus_ = 0;
    std::optional<FailedCall> failedCall_;
};

}  // namespace torvik::test
