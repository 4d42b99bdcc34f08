// Counts what becomes of every frame the adapter hands out. Everything counts from load on and is never reset: whoever
// wants an interval takes the difference of two readings.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace torvik {

// A number that only one thread at a time changes: no locked instruction, and any thread may read it.
class Counter {
  public:
    void add(std::uint64_t amount = 1) { set(value_.load(std::memory_order_relaxed) + amount); }
    void set(std::uint64_t value) { value_.store(value, std::memory_order_release); }
    std::uint64_t get() const { return value_.load(std::memory_order_acquire); }

  private:
    std::atomic<std::uint64_t> value_ = 0;
};

// Where a frame that was routed to a device ends. Every frame ends in exactly one of them.
enum class FrameEnd : std::uint8_t {
    stored,           // its value stands in a complete set
    answerStored,     // put into the answer ring
    answerNotStored,  // the answers were locked for 10000 ms, or its device was activated anew meanwhile
    command,          // first data byte 0x80 or more
    wrongChannel,     // channel index 8..15
    noChannelCount,   // the number of channels is not known yet, or is not 1..8
    outsideSet,       // the first frame of its set is missing
    incompleteSet,    // the next set began before its own was complete
    brokenSet,        // another sequence number came within its set; that frame, too
    lockedSet,        // the values were locked for 10000 ms
    releasedSet,      // its device was released or activated anew
    replaced,         // a later frame of the same channel in the same set took its place
    beyondChannels,   // its channel index is not below the number of channels
};
inline constexpr std::size_t frameEndCount = 13;

struct FrameCounts {
    std::uint64_t routed = 0;
    std::uint64_t inAssembly = 0;  // in a set that is not complete yet
    std::array<std::uint64_t, frameEndCount> ends{};
    std::uint64_t setsStored = 0;
    std::uint64_t setsIncomplete = 0;
    std::uint64_t setsBroken = 0;
    std::uint64_t setsLocked = 0;
    std::uint64_t setsReleased = 0;
    std::uint64_t sequenceJumps = 0;  // stored sets whose number does not follow that of the set stored before
    std::uint64_t setsMissing = 0;    // by the numbers of the sets stored before and after
    std::uint64_t valuesStale = 0;    // stored again, because another frame took the place of theirs
    std::uint64_t valuesOverwritten = 0;
    std::uint64_t answersOverwritten = 0;

    std::uint64_t of(FrameEnd end) const { return ends[static_cast<std::size_t>(end)]; }

    // routed == inAssembly + the sum of all ends, at any time.
    std::uint64_t sumOfEnds() const;
    FrameCounts& operator+=(const FrameCounts& other);
};

// The frames that have taken their place in a set which is not complete yet. Only the receive thread changes it, with
// nearly every frame: nothing else is counted before the set is stored or abandoned.
class StagedFrames {
  public:
    void stage(unsigned channel) { set((word() + 1) | firstChannelBit << channel); }
    void clear() { set(0); }

    std::uint32_t count() const { return word() & countBits; }
    std::uint32_t channels() const { return word() / firstChannelBit; }  // a bit for each channel index that has come

  private:
    static constexpr std::uint32_t countBits = 0xFFFF;
    static constexpr std::uint32_t firstChannelBit = countBits + 1;

    std::uint32_t word() const { return word_.load(std::memory_order_acquire); }
    void set(std::uint32_t word) { word_.store(word, std::memory_order_release); }

    std::atomic<std::uint32_t> word_ = 0;
};

// One device's frames, changed by the receive thread alone. What it touches with every set comes first.
class FrameCounters {
  public:
    // Changes made while one lives are seen together or not at all.
    class Change {
      public:
        explicit Change(FrameCounters& counters) : counters_(counters) {
            counters_.begun_.set(counters_.begun_.get() + 1);
        }
        ~Change() { counters_.ended_.set(counters_.begun_.get()); }
        Change(const Change&) = delete;
        Change& operator=(const Change&) = delete;

      private:
        FrameCounters& counters_;
    };

    // A frame that ends at once.
    void end(FrameEnd end) {
        const Change change(*this);
        routed_.add();
        of(end).add();
    }
    void endAnswer(bool overwritten) {
        const Change change(*this);
        routed_.add();
        of(FrameEnd::answerStored).add();
        if (overwritten) answersOverwritten_.add();
    }

    // The staged frames end for this reason; if they began a set, that is counted, too.
    void abandon(StagedFrames& staged, FrameEnd reason);

    // The staged frames end in a stored set of `channels` channels.
    void storeSet(StagedFrames& staged, std::uint32_t channels, std::uint64_t overwritten);

    // A set was stored whose number is so far behind the one stored before (1: it is the next).
    void countSequenceStep(std::uint16_t step);

    FrameCounts read(const StagedFrames& staged) const;

  private:
    Counter& of(FrameEnd end) { return ends_[static_cast<std::size_t>(end)]; }
    Counter* setsAbandonedFor(FrameEnd reason);
    FrameCounts copy(const StagedFrames& staged) const;

    Counter begun_;
    Counter ended_;
    Counter routed_;  // without those that are staged
    Counter setsStored_;
    std::array<Counter, frameEndCount> ends_;
    Counter setsIncomplete_;
    Counter setsBroken_;
    Counter setsLocked_;
    Counter setsReleased_;
    Counter sequenceJumps_;
    Counter setsMissing_;
    Counter valuesStale_;
    Counter valuesOverwritten_;
    Counter answersOverwritten_;
};

enum class AdapterFault : std::uint8_t { busLight, busHeavy, busOff, queueOverrun, illegalHardware, other };
inline constexpr std::size_t adapterFaultCount = 6;

// What belongs to no device.
struct alignas(64) AdapterCounters {
    Counter received;       // frames that the adapter handed out to the receive thread
    Counter withoutDevice;  // no active device has their identifier
    Counter notRouted;      // the answers were locked for 10000 ms
    std::array<Counter, adapterFaultCount> faults;
    Counter lastOtherFault;  // status
    // By a thread that had been given up, which can be beside the receive thread.
    std::atomic<std::uint64_t> afterEnd = 0;
};

extern constinit AdapterCounters adapterCounters;

}  // namespace torvik
