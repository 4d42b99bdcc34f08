#include "expected_devices.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "api/TORVIK.h"
#include "value_stream.h"

namespace torvik::proof {

namespace {

double scaleOf(Encoding encoding) {
    switch (encoding) {
        case Encoding::int16:
            return 2.1 / 65535;
        case Encoding::int24:
            return 2.1 / 16777215;
        default:
            return 1;
    }
}

bool same(double value, double expected) {
    if (std::isnan(expected)) return std::isnan(value);
    return value == expected && std::signbit(value) == std::signbit(expected);
}

}  // namespace

void ExpectedSets::push(const Set& set) {
    sets_[made_.load() % sets_.size()] = set;
    ++made_;
}

std::optional<std::uint8_t> ExpectedDevices::deviceOf(std::uint32_t identifier) {
    for (std::uint8_t deviceNo = healthyDevice; deviceNo <= lastVictim; ++deviceNo) {
        if (identifier == answerIdOf(deviceNo) || identifier == valueIdOf(deviceNo)) return deviceNo;
    }
    return std::nullopt;
}

void ExpectedDevices::handedOut(const PcanMessage& message) {
    const std::optional<std::uint8_t> deviceNo = deviceOf(message.id);
    if (!deviceNo) {
        ++withoutDevice_;
        return;
    }
    test::ExpectedDevice& device = devices_[*deviceNo];
    if (!device.take(message.data) || *deviceNo > lastComparedDevice) return;
    ExpectedSets::Set set;
    for (unsigned channel = 0; channel < channelCount; ++channel)
        set[channel] = device.value(channel);
    sets_[*deviceNo].push(set);
}

bool ExpectedDevices::anyFull() const {
    return std::ranges::any_of(sets_, &ExpectedSets::full);
}

bool ExpectedDevices::allRead() const {
    return std::ranges::all_of(sets_, &ExpectedSets::empty);
}

std::size_t ValueComparison::take() {
    if (fault_) return 0;
    std::int32_t count = 0;
    const std::int32_t result = TORVIKreadMultiple(deviceNo_, 0, values_.data(),
                                                   static_cast<std::int32_t>(values_.size()), &count, statuses_.data());
    if (result < 0) fault_ = fmt::format("device {}: set {} cannot be read", deviceNo_, taken_);
    if (result <= 0) return 0;
    const std::size_t sets = static_cast<std::size_t>(count) / channelCount;
    for (std::size_t i = 0; i < sets; ++i) {
        if (!compareSet(&values_[i * channelCount], &statuses_[i * channelCount])) return 0;
    }
    return sets;
}

bool ValueComparison::compareSet(const double* values, const std::uint32_t* statuses) {
    if (sets_.empty()) {
        fault_ = fmt::format("device {}: a set is delivered that was not sent, after {}", deviceNo_, taken_);
        return false;
    }
    const ExpectedSets::Set& expected = sets_.front();
    const double scale = scaleOf(encodingOf(deviceNo_));
    for (unsigned channel = 0; channel < channelCount; ++channel) {
        const double value = expected[channel].number * scale;
        const std::uint32_t status = expected[channel].status & 15U;
        if (same(values[channel], value) && statuses[channel] == status) continue;
        fault_ = fmt::format("device {}, channel {}, set {}: value {} with status {} in place of {} with {}", deviceNo_,
                             channel + 1, taken_, values[channel], statuses[channel], value, status);
        return false;
    }
    sets_.pop();
    ++taken_;
    return true;
}

}  // namespace torvik::proof
