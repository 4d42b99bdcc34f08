#include "value_stream.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "signal.hpp"

namespace virtual_adapter {
namespace {

// The whole range of an integer type spans 2.1 of the full scale.
double countsPerUnit(const AmplifierConfig& config) {
    if (config.counts) return 1.0;
    switch (config.valueType) {
        case ValueType::int16:
            return 65535.0 / 2.1;
        case ValueType::int24:
            return 16777215.0 / 2.1;
        default:
            return 1.0;
    }
}

// A zero counts in steps of the integer types, of the finer one where values are floats.
double zeroStep(const AmplifierConfig& config) {
    return config.valueType == ValueType::float32 && !config.counts ? 2.1 / 16777215.0 : 1.0;
}

double largestNumber(ValueType type) {
    switch (type) {
        case ValueType::int16:
            return 32767.0;
        case ValueType::int24:
            return 8388607.0;
        default:
            return static_cast<double>(std::numeric_limits<float>::max());
    }
}

std::int32_t rounded(double value) {
    return static_cast<std::int32_t>(value < 0 ? value - 0.5 : value + 0.5);
}

}  // namespace

ValueStream::ValueStream(const AmplifierConfig& config)
    : seed_(config.seed),
      type_(config.valueType),
      identifier_(config.valueId),
      channels_(config.signals.size()),
      frequency_(config.frequency),
      scale_(countsPerUnit(config)),
      zeroStep_(zeroStep(config)),
      limit_(largestNumber(config.valueType)) {
    std::ranges::copy(config.signals, signals_.begin());
}

ChannelNumbers ValueStream::measuredAt(std::uint64_t set) const {
    ChannelNumbers numbers{};
    for (std::size_t channel = 0; channel < numbers.size(); ++channel) {
        const SignalPlace place{seed_, static_cast<std::uint32_t>(channel), frequency_};
        numbers[channel] = signalValue(signals_[channel], place, set);
    }
    if (forceMatrix_) forceMatrix_->apply(numbers);
    for (double& number : numbers)
        number *= scale_;
    return numbers;
}

ChannelNumbers ValueStream::nextFiltered() const {
    ChannelNumbers numbers = measuredAt(set_);
    if (filters_.empty()) return numbers;
    FilterChain ahead = filters_;
    ahead.run(numbers);
    return numbers;
}

double ValueStream::adjusted(std::size_t channel, double number) const {
    const Adjustment& adjustment = adjustments_[channel];
    const double value = (number - adjustment.zero) * adjustment.factor + adjustment.offset;
    return std::abs(value) < adjustment.noiseCut ? 0.0 : value;
}

RawValue ValueStream::valueAt(std::size_t channel, std::uint64_t set) const {
    return rawValue(channel, measuredAt(set)[channel]);
}

RawValue ValueStream::nextValue(std::size_t channel) const {
    return rawValue(channel, nextFiltered()[channel]);
}

RawValue ValueStream::rawValue(std::size_t channel, double number) const {
    const double value = adjusted(channel, number);
    const bool overload = !(std::abs(value) <= limit_ + 0.5);
    const std::uint8_t status = overload ? kValueOverload : std::uint8_t{0};
    // A scaling that is no number leaves no value at all.
    const double cut = std::isnan(value) ? 0.0 : std::clamp(value, -limit_, limit_);
    if (type_ == ValueType::float32) {
        const auto single = static_cast<float>(cut);
        return {std::bit_cast<std::int32_t>(single), status, static_cast<double>(single)};
    }
    const std::int32_t counts = rounded(cut);
    return {counts, status, static_cast<double>(counts)};
}

std::int32_t ValueStream::zeroOf(std::size_t channel) const {
    constexpr double limit = std::numeric_limits<std::int32_t>::max();
    const double number = nextFiltered()[channel] / zeroStep_;
    if (std::isnan(number)) return 0;
    return rounded(std::clamp(number, -limit, limit));
}

void ValueStream::setScaling(std::size_t channel, const ChannelScaling& scaling) {
    adjustments_[channel] = {scaling.zero * zeroStep_, static_cast<double>(scaling.userScale),
                             static_cast<double>(scaling.userOffset) * scale_,
                             static_cast<double>(scaling.noiseCut) * scale_};
}

ValueStream::Extremes ValueStream::extremes(std::size_t channel) const {
    const Extremes& kept = extremes_[channel];
    return {kept.any, kept.smallest / scale_, kept.largest / scale_};
}

void ValueStream::noteExtremes(std::size_t channel, double number) {
    Extremes& kept = extremes_[channel];
    kept.smallest = kept.any ? std::min(kept.smallest, number) : number;
    kept.largest = kept.any ? std::max(kept.largest, number) : number;
    kept.any = true;
}

std::size_t ValueStream::nextSet(Frames& frames) {
    std::size_t count = 0;
    ChannelNumbers numbers = measuredAt(set_);
    filters_.run(numbers);
    for (std::size_t channel = 0; channel < channels(); ++channel) {
        const RawValue value = rawValue(channel, numbers[channel]);
        noteExtremes(channel, value.number);
        if (value.status != 0) noteError(channel, value.status);
        if (skips_[channel] > 0) {
            --skips_[channel];
            continue;
        }
        frames[count++] = frameOf(channel, value);
        if (repeats_[channel] > 0) {
            --repeats_[channel];
            frames[count] = frames[count - 1];
            ++count;
        }
    }
    ++set_;
    return count;
}

Frame ValueStream::frameOf(std::size_t channel, const RawValue& value) const {
    Frame frame{identifier_, kStandardFrame, 8, {}};
    const auto type = static_cast<unsigned>(type_);
    frame.data[0] = static_cast<std::uint8_t>(channel);
    frame.data[1] = static_cast<std::uint8_t>(type << 4U | value.status);
    frame.data[2] = static_cast<std::uint8_t>(set_ >> 8U);
    frame.data[3] = static_cast<std::uint8_t>(set_);
    // The value stands at the left end of the four bytes, most significant byte first.
    auto bits = static_cast<std::uint32_t>(value.counts);
    if (type_ == ValueType::int16) bits <<= 16U;
    if (type_ == ValueType::int24) bits <<= 8U;
    frame.data[4] = static_cast<std::uint8_t>(bits >> 24U);
    frame.data[5] = static_cast<std::uint8_t>(bits >> 16U);
    frame.data[6] = static_cast<std::uint8_t>(bits >> 8U);
    frame.data[7] = static_cast<std::uint8_t>(bits);
    return frame;
}

void ValueStream::noteError(std::size_t channel, std::uint8_t status) {
    std::shift_right(errors_.begin(), errors_.end(), 1);
    errors_[0] = {static_cast<std::uint8_t>(channel + 1), status, static_cast<std::uint32_t>(set_)};
}

}  // namespace virtual_adapter
