#include <algorithm>

#include "commands/channel_selection.hpp"

namespace virtual_adapter {
namespace {

// How many entries a channel offers; their types and ranges are settings, their number is the device's.
std::size_t offeredRanges(const CommandCall& call) {
    return call.amplifier.config().ranges.size();
}

// Entry 0 is the present type and range. Channel 0 stands for the first.
void inputTypeRange(CommandCall& call) {
    const std::size_t channel = std::max<std::size_t>(call.u8(0), 1) - 1;
    const std::size_t entry = call.u8(1);
    if (channel >= kMostChannels || entry > offeredRanges(call)) return call.reply.error(device_status::kWrongIndex);
    const ChannelInput& input = call.amplifier.settings().inputs[channel];
    const InputRange& range = entry == 0 ? input.present : input.offered[entry - 1];
    call.reply.u32(static_cast<std::uint32_t>(range.type) << 24U | range.hundredths);
}

// The channel gets the first range that is offered with the type.
void setInputType(CommandCall& call) {
    const auto offers = [&, count = offeredRanges(call), type = call.u8(1)](const ChannelInput& input) {
        const auto last = input.offered.begin() + static_cast<std::ptrdiff_t>(count);
        const auto found = std::find_if(input.offered.begin(), last, [=](auto range) { return range.type == type; });
        return found == last ? nullptr : &*found;
    };
    const std::size_t selector = call.u8(0);
    const auto& inputs = call.amplifier.settings().inputs;
    if (selector <= kMostChannels && offers(inputs[std::max<std::size_t>(selector, 1) - 1]) == nullptr)
        return call.reply.error(device_status::kWrongData);
    changeChannels(call, Kept::stored, [&](Settings& settings, std::size_t channel) {
        ChannelInput& input = settings.inputs[channel];
        if (const InputRange* const range = offers(input)) input.present = *range;
    });
}

// Entry 0 is the present range; its type stays.
void writeInputRange(CommandCall& call) {
    const std::size_t entry = call.u8(1);
    const std::uint32_t hundredths = call.u32(2);
    if (entry > offeredRanges(call)) return call.reply.error(device_status::kWrongIndex);
    if (hundredths > kLargestRange) return call.reply.error(device_status::kWrongData);
    changeChannels(call, Kept::stored, [=](Settings& settings, std::size_t channel) {
        ChannelInput& input = settings.inputs[channel];
        (entry == 0 ? input.present : input.offered[entry - 1]).hundredths = hundredths;
    });
}

// Null when there is no such value. Here channels are counted from 0.
std::uint32_t* calibrationValue(CommandCall& call) {
    auto& values = call.amplifier.memory().calibration;
    const std::size_t index = call.u8(0);
    const std::size_t channel = call.u8(1);
    return index < values.size() && channel < values[index].size() ? &values[index][channel] : nullptr;
}

void readCalibration(CommandCall& call) {
    const std::uint32_t* const value = calibrationValue(call);
    if (value == nullptr) return call.reply.error(device_status::kWrongIndex);
    call.reply.u32(*value);
}

void writeCalibration(CommandCall& call) {
    std::uint32_t* const value = calibrationValue(call);
    if (value == nullptr) return call.reply.error(device_status::kWrongIndex);
    *value = call.u32(2);
    call.reply.acknowledge();
}

constexpr CommandRow kInputRows[] = {
    {0x17, 2, true, readCalibration}, {0x18, 6, true, writeCalibration}, {0x34, 6, true, writeInputRange},
    {0xA2, 2, true, inputTypeRange},  {0xA3, 2, true, setInputType},
};

}  // namespace

std::span<const CommandRow> inputCommands() {
    return kInputRows;
}

}  // namespace virtual_adapter
