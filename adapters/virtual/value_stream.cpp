#include "value_stream.hpp"

#include <algorithm>
#include <bit>

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

double largestCount(ValueType type) {
    return type == ValueType::int16 ? 32767.0 : 8388607.0;
}

std::int32_t rounded(double value) {
    return static_cast<std::int32_t>(value < 0 ? value - 0.5 : value + 0.5);
}

}  // namespace

ValueStream::ValueStream(const AmplifierConfig& config)
    : config_(&config), scale_(countsPerUnit(config)), limit_(largestCount(config.valueType)) {}

RawValue ValueStream::valueAt(std::size_t channel, std::uint64_t set) const {
    const SignalPlace place{config_->seed, static_cast<std::uint32_t>(channel), config_->frequency};
    const double value = signalValue(config_->signals[channel], place, set) * scale_;
    if (config_->valueType == ValueType::float32) {
        const auto single = static_cast<float>(value);
        return {std::bit_cast<std::int32_t>(single), 0, static_cast<double>(single)};
    }
    const double cut = std::clamp(value, -limit_, limit_);
    const std::int32_t counts = rounded(cut);
    const bool overload = value > limit_ + 0.5 || value < -limit_ - 0.5;
    return {counts, overload ? kValueOverload : std::uint8_t{0}, static_cast<double>(counts)};
}

std::size_t ValueStream::nextSet(Frames& frames) {
    std::size_t count = 0;
    for (std::size_t channel = 0; channel < channels(); ++channel) {
        const RawValue value = valueAt(channel, set_);
        maxima_[channel] = std::max(maxima_[channel], value.number < 0 ? -value.number : value.number);
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
    Frame frame{config_->valueId, kStandardFrame, 8, {}};
    const auto type = static_cast<unsigned>(config_->valueType);
    frame.data[0] = static_cast<std::uint8_t>(channel);
    frame.data[1] = static_cast<std::uint8_t>(type << 4U | value.status);
    frame.data[2] = static_cast<std::uint8_t>(set_ >> 8U);
    frame.data[3] = static_cast<std::uint8_t>(set_);
    // The value stands at the left end of the four bytes, most significant byte first.
    auto bits = static_cast<std::uint32_t>(value.counts);
    if (config_->valueType == ValueType::int16) bits <<= 16U;
    if (config_->valueType == ValueType::int24) bits <<= 8U;
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
