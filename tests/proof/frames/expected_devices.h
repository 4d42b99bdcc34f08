// What the library has to count and to deliver, computed from every frame that the adapter hands out.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "proof_adapter.h"
#include "support/expected_counts.h"

namespace torvik::proof {

inline constexpr std::uint8_t healthyDevice = 1;
inline constexpr std::uint8_t lastComparedDevice = 4;  // every value of devices 1..4 is compared
inline constexpr std::uint8_t lastVictim = 6;          // anything may be called on 5 and 6

// The device's sets from the thread that hands the frames out to the one that reads the values.
class ExpectedSets {
  public:
    using Set = std::array<test::ExpectedValue, channelCount>;

    // No more may be sent until some have been read: never fills the device's buffer.
    bool full() const { return made() - taken_.load() >= setsUnderWay; }
    bool empty() const { return made() == taken_.load(); }
    std::uint64_t made() const { return made_.load(); }

    void push(const Set& set);
    const Set& front() const { return sets_[taken_.load() % sets_.size()]; }
    void pop() { ++taken_; }

  private:
    static constexpr std::uint64_t setsUnderWay = 448;

    std::array<Set, 512> sets_{};
    std::atomic<std::uint64_t> made_ = 0;
    std::atomic<std::uint64_t> taken_ = 0;
};

class ExpectedDevices : public FrameObserver {
  public:
    // Of an active device 1..6; nothing under an identifier of nobody.
    static std::optional<std::uint8_t> deviceOf(std::uint32_t identifier);

    void handedOut(const PcanMessage& message) override;

    const TORVIKstatistics& counts(std::uint8_t deviceNo) const { return devices_[deviceNo].counts(); }
    std::uint64_t withoutDevice() const { return withoutDevice_; }
    ExpectedSets& sets(std::uint8_t deviceNo) { return sets_[deviceNo]; }
    bool anyFull() const;
    bool allRead() const;

  private:
    std::vector<test::ExpectedDevice> devices_{lastVictim + 1U, test::ExpectedDevice(channelCount)};
    std::array<ExpectedSets, lastComparedDevice + 1> sets_;
    std::uint64_t withoutDevice_ = 0;
};

// Reads a device and compares every value and status with the expected one.
class ValueComparison {
  public:
    ValueComparison(std::uint8_t deviceNo, ExpectedSets& sets) : deviceNo_(deviceNo), sets_(sets) {}

    // Takes what waits. Result: how many sets came.
    std::size_t take();

    std::uint64_t sets() const { return taken_; }
    const std::optional<std::string>& fault() const { return fault_; }

  private:
    bool compareSet(const double* values, const std::uint32_t* statuses);

    static constexpr std::size_t setsAtOnce = 64;

    std::uint8_t deviceNo_;
    ExpectedSets& sets_;
    std::uint64_t taken_ = 0;
    std::array<double, setsAtOnce * channelCount> values_{};
    std::array<std::uint32_t, setsAtOnce * channelCount> statuses_{};
    std::optional<std::string> fault_;
};

}  // namespace torvik::proof
