#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string_view>

#include "bench_file.hpp"
#include "bus.hpp"
#include "can_entry_points.h"
#include "filter.hpp"
#include "frame.hpp"
#include "lock.hpp"
#include "parameters.hpp"
#include "receive_notifier.hpp"
#include "ring.hpp"
#include "status.hpp"
#include "virtual_control.h"

namespace virtual_adapter {

// The adapter of this process: one channel at a time, its receive queue, and the bus behind it. Every member locks.
// Nothing runs in the background; what is due is worked out whenever somebody looks.
class Adapter final : public FrameReceiver {
  public:
    static constexpr std::size_t kReceiveQueueLength = 32'767;
    static constexpr std::size_t kHistoryLength = 65'536;

    // Made on first use and never destroyed: other threads may still call while the process ends.
    static Adapter& instance();
    // Gives everything back when the library is unloaded; what is called afterwards finds no channel.
    static void shutDownInstance();

    // A bench that is not there or not understood makes initialize() fail.
    Adapter() noexcept;
    Adapter(const Adapter&) = delete;
    Adapter& operator=(const Adapter&) = delete;

    Status initialize(std::uint16_t channel, std::uint16_t btr0btr1);
    Status uninitialize(std::uint16_t channel);
    Status reset(std::uint16_t channel);
    Status status(std::uint16_t channel);
    Status read(std::uint16_t channel, CanMessage* message, CanTimestamp* timestamp);
    Status write(std::uint16_t channel, const CanMessage* message);
    Status filterMessages(std::uint16_t channel, std::uint32_t from, std::uint32_t to, std::uint8_t mode);
    Status getValue(std::uint16_t channel, std::uint8_t number, void* buffer, std::uint32_t length);
    Status setValue(std::uint16_t channel, std::uint8_t number, const void* buffer, std::uint32_t length);
    Status errorText(Status status, std::uint16_t language, char* buffer);

    // As the control functions describe them.
    bool resetAll();
    bool configure(const BenchResult& result);
    // Always the same place, so that a thread may read it while another configures.
    [[nodiscard]] const char* message() const { return message_.data(); }
    std::uint32_t push(const VirtualFrame* frames, std::uint32_t count);
    void failCalls(std::uint32_t entry, Status status, std::uint32_t skip, std::uint32_t count);
    void addAnswerRule(const AnswerRules::Rule& rule);
    void clearAnswerRules();
    void holdStream(std::uint32_t device, bool hold);
    std::uint32_t sendSets(std::uint32_t device, std::uint32_t sets);
    void skipFrame(std::uint32_t device, std::uint32_t channel, std::uint32_t times);
    void repeatFrame(std::uint32_t device, std::uint32_t channel, std::uint32_t times);
    void setBusLoad(std::uint32_t percent, std::uint32_t id);
    void pause(bool on);
    std::uint32_t queued();
    VirtualCounters counters();
    std::uint32_t takeWritten(VirtualFrame* frames, std::uint32_t capacity);
    bool valueOf(std::uint32_t device, std::uint32_t channel, std::uint64_t set, double& value);

    // The process is being forked: the child gets a usable adapter without a channel, and leaves its parent's alone.
    void beforeFork() { lock_.lock(); }
    void afterForkInParent() { lock_.unlock(); }
    void afterForkInChild();

    // A frame is due (called by the notifier's system).
    void dueTimeReached();

  private:
    struct FailRule {
        Status status = kOk;
        std::uint32_t skip = 0;
        std::uint32_t count = 0;
    };
    // Looking at the clock costs more than taking a frame out of the queue, so it is done once for so many frames.
    static constexpr std::uint32_t kReadsPerLook = 32;
    // A call must end, whatever number it is given.
    static constexpr std::uint32_t kMostSetsPerCall = 65'536;

    void receive(const Frame& frame, Nanoseconds time) override;

    template <class Call>
    Status entry(VirtualEntry which, Call call);
    Status forcedStatus(FailRule& rule);
    [[nodiscard]] Status checkOpen(std::uint16_t channel) const;
    [[nodiscard]] Status checkPlace(const ParameterRow& row, std::uint16_t channel) const;
    [[nodiscard]] std::uint64_t numberOf(const ParameterRow& row, std::uint16_t channel) const;
    Status storeNumber(const ParameterRow& row, std::uint64_t value);
    void lookAtClock();
    void advance() { bus_.advance(monotonicTime(), *this); }
    [[nodiscard]] static Nanoseconds monotonicTime();
    void notify();
    // When the client is to look for the next frame.
    [[nodiscard]] Nanoseconds wakeTime() const;
    void closeChannel();
    void discardWaiting();
    void remember(const Frame& frame);
    void useBench(const BenchConfig& bench);
    // The bench of the environment, or the default one.
    static BenchResult configuredBench();
    void setMessage(std::string_view message);
    void refuse(const BenchResult& result);
    [[nodiscard]] Amplifier* findAmplifier(std::uint32_t device, std::uint32_t channel);
    void shutDown();

    Lock lock_;
    std::uint16_t channel_ = 0;  // 0: none is initialised
    std::uint16_t bitRateCode_ = 0;
    bool shutDown_ = false;
    bool benchRefused_ = false;
    bool paused_ = false;
    bool overrun_ = false;  // frames were lost and the client has not been told
    bool arrived_ = false;  // frames came since the notifier was told
    std::uint32_t readsSinceLook_ = 0;
    VirtualCounters counters_{};
    std::array<FailRule, VIRTUAL_ENTRY_COUNT> failRules_{};
    ParameterValues parameters_;
    Filter filter_;
    BenchConfig bench_;
    std::array<char, 1024> message_{};
    ReceiveNotifier notifier_;
    Bus bus_{counters_};
    Ring<TimedFrame, kReceiveQueueLength + 1> received_;
    Ring<Frame, kHistoryLength> written_;
};

// The frame of every entry point: its call is counted, then refused by a test's rule or carried out.
template <class Call>
Status Adapter::entry(VirtualEntry which, Call call) {
    const std::lock_guard guard(lock_);
    ++counters_.calls[which];
    FailRule& rule = failRules_[which];
    if (rule.count != 0) [[unlikely]] {
        const Status forced = forcedStatus(rule);
        if (forced != kOk) return forced;
    }
    return call();
}

}  // namespace virtual_adapter
