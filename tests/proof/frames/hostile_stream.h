// What a faulty bus, a faulty adapter and faulty devices can put before the library, by a seed: frames of any
// identifier, type and length, value frames in any order with any number in them, statuses in place of frames. In
// between a healthy device sends its sets, which nothing else disturbs.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <utility>

#include "proof_adapter.h"

namespace torvik::proof {

inline constexpr std::uint8_t healthyDevice = 1;
inline constexpr std::uint8_t lastVictim = 6;  // 2..6 are active, too, and get their share

// Every status that the adapter library documents, and a few that it does not.
extern const std::array<std::uint32_t, 30> adapterStatuses;

// Xorshift: the same numbers on every system.
class Random {
  public:
    explicit Random(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15U | 1) {}

    std::uint64_t next() {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 7;
        state_ ^= state_ << 17;
        return state_;
    }
    // Below `limit`.
    std::uint32_t below(std::uint32_t limit) {
        return static_cast<std::uint32_t>((next() >> 32) * std::uint64_t{limit} >> 32);
    }

  private:
    std::uint64_t state_;
};

class HostileStream : public FrameSource {
  public:
    HostileStream(std::uint64_t seed, std::uint64_t frames) : random_(seed), framesLeft_(frames) {}

    // Lets the healthy device send this many sets in all.
    void allow(std::uint64_t sets) { allowed_.store(sets, std::memory_order_release); }

    std::uint32_t next(PcanMessage& message) override;

    // All frames have been handed out; the healthy device has sent whole sets only.
    bool ended() const { return ended_.load(std::memory_order_acquire); }
    std::uint64_t healthySets() const { return healthySets_.load(std::memory_order_acquire); }
    std::uint64_t statuses() const { return statuses_; }

  private:
    struct Victim {
        std::uint8_t channel = 0;
        std::uint16_t sequence = 0;
    };

    std::uint32_t nextHealthy(PcanMessage& message);
    void makeHostile(PcanMessage& message);
    void makeValueFrame(PcanMessage& message);
    void addressHealthyInVain(PcanMessage& message);
    std::uint32_t anyIdentifier();
    std::uint32_t anyStatus();
    std::uint32_t anyValue();
    void cutToLength(PcanMessage& message);

    Random random_;
    std::uint64_t framesLeft_;
    std::uint64_t statuses_ = 0;
    bool healthyIsDue_ = false;
    bool afterStatus_ = true;
    std::uint32_t healthyChannel_ = 0;
    std::array<Victim, lastVictim + 1> victims_{};
    std::atomic<std::uint64_t> healthySets_ = 0;
    std::atomic<std::uint64_t> allowed_ = 0;
    std::atomic<bool> ended_ = false;
};

}  // namespace torvik::proof
