// What a faulty bus, a faulty adapter and faulty devices can put before the library, by a seed: frames of any
// identifier, type and length, value frames in any order with any number in them, statuses in place of frames. In
// between a healthy device sends its sets, and others send short frames and wrong channels under its identifiers.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <map>

#include "expected_devices.h"
#include "proof_adapter.h"

namespace torvik::proof {

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
    HostileStream(std::uint64_t seed, std::uint64_t frames, ExpectedDevices& devices)
        : random_(seed), framesLeft_(frames), devices_(devices) {}

    std::uint32_t next(PcanMessage& message) override;

    // True once: the stream waits until some sets are read, and then for a signal.
    bool takeWaiting() { return waiting_.exchange(false); }

    // All frames have been handed out; the healthy device has sent whole sets only.
    bool ended() const { return ended_.load(std::memory_order_acquire); }
    std::uint64_t healthySets() const { return healthySets_; }

    // Adapter faults by status.
    const std::map<std::uint32_t, std::uint64_t>& faults() const { return faults_; }

  private:
    struct Victim {
        std::uint8_t channel = 0;
        std::uint16_t sequence = 0;
    };

    bool waitsForReader();
    void writeHealthy(PcanMessage& message);
    void makeHostile(PcanMessage& message);
    void makeValueFrame(PcanMessage& message);
    void addressHealthy(PcanMessage& message);
    static void keepReadable(PcanMessage& message);
    std::uint32_t giveStatus();
    std::uint32_t anyIdentifier();
    std::uint32_t anyStatus();
    std::uint32_t anyValue();
    void cutToLength(PcanMessage& message);

    Random random_;
    std::uint64_t framesLeft_;
    ExpectedDevices& devices_;
    std::map<std::uint32_t, std::uint64_t> faults_;
    bool afterStatus_ = true;
    std::uint32_t healthyChannel_ = 0;
    std::array<Victim, lastVictim + 1> victims_{};
    std::uint64_t healthySets_ = 0;
    std::atomic<bool> waiting_ = false;
    std::atomic<bool> ended_ = false;
};

}  // namespace torvik::proof
