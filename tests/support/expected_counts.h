// What a device's frames have to be counted as and stored as, computed from the frames alone. Shares no code with the
// library.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "api/TORVIKstatistics.h"

namespace torvik::test {

// One value as a set leaves it behind: the status byte of its frame and the number before scaling.
struct ExpectedValue {
    std::uint8_t status = 0;
    double number = 0;
};

// One device from its activation on, while nothing is locked or released. Its number of channels is known, 1..8.
class ExpectedDevice {
  public:
    explicit ExpectedDevice(unsigned channels) : channels_(channels) {}

    // The next frame under one of its identifiers. True: it completes a set.
    bool take(const std::array<std::uint8_t, 8>& data);

    // The counts of frames and sets; what depends on the readers of values and answers is 0.
    const TORVIKstatistics& counts() const { return counts_; }

    // The channel's value in the set completed last.
    ExpectedValue value(unsigned channel) const;

  private:
    using Counter = std::uint64_t TORVIKstatistics::*;

    void drop(Counter frames, Counter sets);
    void completeSet();
    void countStep();

    unsigned channels_;
    TORVIKstatistics counts_{};
    std::array<unsigned, 8> framesOf_{};  // of the set begun, by channel index
    unsigned framesInSet_ = 0;            // 0: no set is begun
    unsigned sequence_ = 0;
    bool anyCompleted_ = false;
    unsigned completedSequence_ = 0;
    std::array<std::array<std::uint8_t, 8>, 8> latest_{};  // frame of each channel index, of earlier sets, too
};

TORVIKstatistics statisticsOf(std::int32_t deviceNo);

// All counts since an earlier reading; framesInAssembly as it is now.
TORVIKstatistics countsBetween(const TORVIKstatistics& earlier, const TORVIKstatistics& later);

// The sum of framesInAssembly and of all that can become of a routed frame.
std::uint64_t endsOf(const TORVIKstatistics& counts);

// A line for each count of a device's frames and sets that differs; `counted` is a difference of two readings.
std::vector<std::string> differences(const TORVIKstatistics& expected, const TORVIKstatistics& counted);

}  // namespace torvik::test
