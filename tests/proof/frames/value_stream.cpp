#include "value_stream.h"

#include <fmt/format.h>

#include <stdexcept>

#include "api/TORVIK.h"

namespace torvik::proof {

namespace {

template <Encoding encoding>
bool allEqual(std::span<const double> values, std::uint8_t deviceNo, std::uint64_t firstSet) {
    bool equal = true;
    std::uint64_t set = firstSet;
    for (std::size_t i = 0; i < values.size(); i += channelCount, ++set) {
        const std::uint32_t first = mixedCounts(deviceNo, 0, set);
        for (std::uint32_t channel = 0; channel < channelCount; ++channel)
            equal &= values[i + channel] == scaledValue<encoding>(first + channel * 4099U);
    }
    return equal;
}

double expectedValue(std::uint8_t deviceNo, std::uint32_t channel, std::uint64_t set) {
    const std::uint32_t mixed = mixedCounts(deviceNo, channel, set);
    switch (encodingOf(deviceNo)) {
        case Encoding::int16:
            return scaledValue<Encoding::int16>(mixed);
        case Encoding::int24:
            return scaledValue<Encoding::int24>(mixed);
        default:
            return scaledValue<Encoding::float32>(mixed);
    }
}

// Which set near this one has such a value.
std::optional<std::int64_t> distanceOf(double value, std::uint8_t deviceNo, std::uint32_t channel, std::uint64_t set) {
    constexpr std::int64_t farthest = 20000;
    for (std::int64_t distance = 1; distance <= farthest; ++distance) {
        for (const std::int64_t signedDistance : {distance, -distance}) {
            if (value == expectedValue(deviceNo, channel, set + static_cast<std::uint64_t>(signedDistance)))
                return signedDistance;
        }
    }
    return std::nullopt;
}

std::string errorText(std::uint8_t deviceNo) {
    std::array<char, 128> text{};
    std::uint32_t code = 0;
    TORVIKgetLastErrorText(deviceNo, text.data(), &code);
    return text.data();
}

}  // namespace

SetChecker::SetChecker(std::uint8_t deviceNo, std::size_t setsAtOnce)
    : deviceNo_(deviceNo), values_(setsAtOnce * channelCount) {}

std::size_t SetChecker::take() {
    if (fault_) return 0;
    std::int32_t count = 0;
    const std::int32_t result =
        TORVIKreadMultiple(deviceNo_, 0, values_.data(), static_cast<std::int32_t>(values_.size()), &count, nullptr);
    if (result < 0) fault_ = fmt::format("device {}: {}", deviceNo_, errorText(deviceNo_));
    if (result <= 0) return 0;
    const auto values = std::span(values_).first(static_cast<std::size_t>(count));
    if (!holds(values)) {
        describeFault(values);
        return 0;
    }
    sets_ += values.size() / channelCount;
    return values.size() / channelCount;
}

bool SetChecker::holds(std::span<const double> values) const {
    switch (encodingOf(deviceNo_)) {
        case Encoding::int16:
            return allEqual<Encoding::int16>(values, deviceNo_, sets_);
        case Encoding::int24:
            return allEqual<Encoding::int24>(values, deviceNo_, sets_);
        default:
            return allEqual<Encoding::float32>(values, deviceNo_, sets_);
    }
}

void SetChecker::describeFault(std::span<const double> values) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::uint64_t set = sets_ + i / channelCount;
        const auto channel = static_cast<std::uint32_t>(i % channelCount);
        if (values[i] == expectedValue(deviceNo_, channel, set)) continue;
        const auto distance = distanceOf(values[i], deviceNo_, channel, set);
        const std::string what =
            !distance       ? fmt::format("wrong: {} in place of {}", values[i], expectedValue(deviceNo_, channel, set))
            : *distance > 0 ? fmt::format("lost or reordered: the value is that of {} sets later", *distance)
                            : fmt::format("doubled or reordered: the value is that of {} sets before", -*distance);
        fault_ = fmt::format("device {}, channel {}, set {}: {}", deviceNo_, channel + 1, set, what);
        return;
    }
}

void activateDevice(std::uint8_t deviceNo, std::uint32_t bufferSize) {
    std::uint32_t channels = 0;
    if (TORVIKactivateExtended(deviceNo, TORVIK_ADAPTER_USB, 1000000, bufferSize, &channels, commandIdOf(deviceNo),
                               answerIdOf(deviceNo), TORVIK_FLAG_PROTOCOL_KIND_16) != 0 ||
        channels != channelCount) {
        throw std::runtime_error(fmt::format("device {} cannot be activated with {} channels: {}", deviceNo,
                                             channelCount, errorText(deviceNo)));
    }
}

}  // namespace torvik::proof
