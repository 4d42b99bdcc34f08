#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "bench.hpp"
#include "frame.hpp"

namespace virtual_adapter {

// A measured value as it travels: raw bits and the status nibble of its frame.
struct RawValue {
    std::int32_t counts;  // float32: the bits of the number
    std::uint8_t status;
    double number;  // what a receiver decodes
};

inline constexpr std::uint8_t kValueOverload = 1;  // status nibble: the value was cut to its type's range

// An amplifier's measuring channels: makes the frames of one set after the other. Set number n is the same whenever it
// is sent; the number counts the sets made, so that a stream that was stopped goes on without a gap.
class ValueStream {
  public:
    // The frames of a set may be repeated by a test: at most one more of each.
    static constexpr std::size_t kMostFrames = 2 * kMostChannels;
    using Frames = std::array<Frame, kMostFrames>;

    explicit ValueStream(const AmplifierConfig& config);

    // Makes the next set. Result: the number of frames.
    std::size_t nextSet(Frames& frames);

    [[nodiscard]] std::uint64_t setsMade() const { return set_; }
    [[nodiscard]] RawValue valueAt(std::size_t channel, std::uint64_t set) const;
    [[nodiscard]] std::size_t channels() const { return config_->signals.size(); }

    void skip(std::size_t channel, std::uint32_t times) { skips_[channel] = times; }
    void repeat(std::size_t channel, std::uint32_t times) { repeats_[channel] = times; }

    // The largest magnitude since the maximum was cleared.
    [[nodiscard]] double maximum(std::size_t channel) const { return maxima_[channel]; }
    void clearMaximum(std::size_t channel) { maxima_[channel] = 0; }

    // The last values that were cut: the latest first.
    struct ValueError {
        std::uint8_t channel = 0;  // 1..8; 0: no entry
        std::uint8_t status = 0;
        std::uint32_t set = 0;
    };
    static constexpr std::size_t kErrorsKept = 8;
    [[nodiscard]] const ValueError& valueError(std::size_t index) const { return errors_[index]; }
    void clearErrors() { errors_ = {}; }

  private:
    void noteError(std::size_t channel, std::uint8_t status);
    [[nodiscard]] Frame frameOf(std::size_t channel, const RawValue& value) const;

    const AmplifierConfig* config_;
    std::uint64_t set_ = 0;
    double scale_;
    double limit_;
    std::array<std::uint32_t, kMostChannels> skips_{};
    std::array<std::uint32_t, kMostChannels> repeats_{};
    std::array<double, kMostChannels> maxima_{};
    std::array<ValueError, kErrorsKept> errors_{};
};

}  // namespace virtual_adapter
