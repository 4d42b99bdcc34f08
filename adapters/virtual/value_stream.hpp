#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "bench.hpp"
#include "filter_chain.hpp"
#include "force_matrix.hpp"
#include "frame.hpp"
#include "settings.hpp"

namespace virtual_adapter {

// A measured value as it travels: raw bits and the status nibble of its frame.
struct RawValue {
    std::int32_t counts;  // float32: the bits of the number
    std::uint8_t status;
    double number;  // what a receiver decodes
};

inline constexpr std::uint8_t kValueOverload = 1;  // status nibble: the value was cut to its type's range

// An amplifier's measuring channels: makes the frames of one set after the other. Set number n is the same whenever it
// is sent with the same settings and no filter on; the number counts the sets made, so that a stream that was stopped
// goes on without a gap. On its way to the frame a signal passes the sensor's calibration, the filters and the scaling.
class ValueStream {
  public:
    // The frames of a set may be repeated by a test: at most one more of each.
    static constexpr std::size_t kMostFrames = 2 * kMostChannels;
    using Frames = std::array<Frame, kMostFrames>;

    explicit ValueStream(const AmplifierConfig& config);

    // Makes the next set. Result: the number of frames.
    std::size_t nextSet(Frames& frames);

    [[nodiscard]] std::uint64_t setsMade() const { return set_; }
    // What a set carries when no filter is on.
    [[nodiscard]] RawValue valueAt(std::size_t channel, std::uint64_t set) const;
    // What the next set will carry.
    [[nodiscard]] RawValue nextValue(std::size_t channel) const;
    // The zero with which the next set's value of a channel, unscaled, becomes 0.
    [[nodiscard]] std::int32_t zeroOf(std::size_t channel) const;

    // Of more channels than there are, all are sent.
    void setChannels(std::size_t channels) { channels_ = channels < kMostChannels ? channels : kMostChannels; }
    [[nodiscard]] std::size_t channels() const { return channels_; }
    void setFrequency(double frequency) { frequency_ = frequency; }
    [[nodiscard]] double frequency() const { return frequency_; }
    void setIdentifier(std::uint32_t identifier) { identifier_ = identifier; }
    void setScaling(std::size_t channel, const ChannelScaling& scaling);
    void setFilters(const FilterSettings& filters) { filters_.use(filters); }
    // The filters that are on forget their past; setFilters() brings them back.
    void clearFilters() { filters_.clear(); }
    void setForceMatrix(const std::optional<ForceMatrix>& matrix) { forceMatrix_ = matrix; }

    void skip(std::size_t channel, std::uint32_t times) { skips_[channel] = times; }
    void repeat(std::size_t channel, std::uint32_t times) { repeats_[channel] = times; }

    // The smallest and the largest value since they were cleared, in the unit of the signals.
    struct Extremes {
        bool any = false;
        double smallest = 0;
        double largest = 0;
    };
    [[nodiscard]] Extremes extremes(std::size_t channel) const;
    void clearExtremes(std::size_t channel) { extremes_[channel] = {}; }

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
    // A channel's scaling in the numbers of the stream.
    struct Adjustment {
        double zero = 0;
        double factor = 1;
        double offset = 0;
        double noiseCut = 0;
    };

    [[nodiscard]] ChannelNumbers measuredAt(std::uint64_t set) const;
    [[nodiscard]] ChannelNumbers nextFiltered() const;
    [[nodiscard]] double adjusted(std::size_t channel, double number) const;
    [[nodiscard]] RawValue rawValue(std::size_t channel, double number) const;
    void noteExtremes(std::size_t channel, double number);
    void noteError(std::size_t channel, std::uint8_t status);
    [[nodiscard]] Frame frameOf(std::size_t channel, const RawValue& value) const;

    std::array<SignalConfig, kMostChannels> signals_{};
    std::uint64_t seed_;
    ValueType type_;
    std::uint32_t identifier_;
    std::size_t channels_;
    double frequency_;
    double scale_;     // stream numbers for 1 in the unit of the signals
    double zeroStep_;  // stream numbers for 1 in the unit of the zero
    double limit_;
    std::uint64_t set_ = 0;
    std::optional<ForceMatrix> forceMatrix_;
    FilterChain filters_;
    std::array<Adjustment, kMostChannels> adjustments_{};
    std::array<std::uint32_t, kMostChannels> skips_{};
    std::array<std::uint32_t, kMostChannels> repeats_{};
    std::array<Extremes, kMostChannels> extremes_{};
    std::array<ValueError, kErrorsKept> errors_{};
};

}  // namespace virtual_adapter
