#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "amplifier.hpp"
#include "answer_rules.hpp"
#include "bench.hpp"
#include "frame.hpp"
#include "ring.hpp"
#include "virtual_control.h"

namespace virtual_adapter {

// Takes what the adapter sees on the bus.
class FrameReceiver {
  public:
    virtual void receive(const Frame& frame, Nanoseconds time) = 0;

  protected:
    ~FrameReceiver() = default;
};

// The one CAN bus: the client's adapter, the simulated amplifiers and foreign traffic. Nothing runs by itself;
// advance() lets everything happen that was due by then, in the order of time.
//
// With bus timing a frame takes its time on the wire, one after the other, and of those that are ready the one with the
// lowest identifier goes first. Without it a frame arrives the moment it is ready.
class Bus {
  public:
    static constexpr std::size_t kTransmitSlots = 32'768;
    // So many turns one advance() takes: half a minute of a full bus at 1 Mbit/s. When more were due, because nobody
    // looked for so long or the amplifiers are faster than this computer, the streams leave out what they missed.
    static constexpr std::uint32_t kMostTurns = 250'000;

    explicit Bus(VirtualCounters& counters) : counters_(counters) {}
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

    // Leaves the bus as it was when memory runs out.
    void setUp(const BenchConfig& bench);
    // Gives all memory back; only setUp() makes it a bus again.
    void release();

    // The adapter goes on the bus / off it. Off the bus nothing happens at all.
    void open(Nanoseconds now, std::uint32_t bitRate);
    void close();

    // When the next frame reaches the adapter, at the earliest. With bus timing it can be later by the time of the
    // frames that the client itself has still to send.
    [[nodiscard]] Nanoseconds nextDue() const { return nextDue_; }
    // That frame may be an answer.
    [[nodiscard]] bool answerNext() const { return answerNext_; }
    void advance(Nanoseconds now, FrameReceiver& receiver);

    // A frame of the client's. False: the transmit queue is full (with bus timing only).
    bool write(const Frame& frame, Nanoseconds now, FrameReceiver& receiver);
    void dropUnsent();

    // Foreign traffic of one identifier; 0 per cent: none.
    void setLoad(std::uint32_t percent, std::uint32_t id, Nanoseconds now);

    [[nodiscard]] AnswerRules& answerRules() { return rules_; }
    [[nodiscard]] std::size_t amplifierCount() const { return amplifiers_.size(); }
    [[nodiscard]] Amplifier& amplifier(std::size_t device) { return *amplifiers_[device]; }

    // To be called after one of the amplifiers was changed from outside.
    void updateDue();

    // Emits the next set of a device now, past the bus.
    void sendSet(std::size_t device, Nanoseconds now, FrameReceiver& receiver);

  private:
    struct Foreign {
        std::uint32_t id = 0;
        std::uint32_t percent = 0;
        Nanoseconds period = 0;
        Nanoseconds ready = kNever;
        std::uint64_t sent = 0;
    };
    struct Turn {
        std::size_t node;
        Nanoseconds begin;
    };

    // Nodes: the amplifiers, then foreign traffic, then the client.
    [[nodiscard]] std::size_t foreignNode() const { return amplifiers_.size(); }
    [[nodiscard]] std::size_t clientNode() const { return amplifiers_.size() + 1; }
    [[nodiscard]] std::uint32_t headId(std::size_t node) const;
    // Who gets the bus next, and when; never, when nobody has anything to send.
    [[nodiscard]] Turn nextTurn() const;
    [[nodiscard]] Nanoseconds duration(std::size_t node) const;
    void refresh(std::size_t node);
    void findNextDue();
    void startForeign(Nanoseconds now);
    void leaveOutMissed(Nanoseconds now);
    void takeTurn(const Turn& turn, Nanoseconds end, FrameReceiver& receiver);
    void sendFromAmplifier(const Turn& turn, Nanoseconds end, FrameReceiver& receiver);
    void carryToAmplifiers(const Frame& frame, Nanoseconds arrival);
    void carryOut(std::size_t device, const Frame& frame, Nanoseconds arrival);
    void queueAnswer(Amplifier& amplifier, const Reply::Answer& answer, Nanoseconds arrival,
                     const std::optional<AnswerRules::Rule>& rule);

    VirtualCounters& counters_;
    bool timing_ = false;
    std::uint32_t bitRate_ = 0;
    Nanoseconds busFree_ = 0;
    Nanoseconds nextDue_ = kNever;
    bool answerNext_ = false;
    std::vector<std::unique_ptr<Amplifier>> amplifiers_;
    std::vector<std::uint32_t> commandIds_;  // per amplifier
    std::vector<Nanoseconds> ready_;         // per node
    AnswerRules rules_;
    Foreign foreign_;
    Ring<TimedFrame, kTransmitSlots> unsent_;
};

}  // namespace virtual_adapter
