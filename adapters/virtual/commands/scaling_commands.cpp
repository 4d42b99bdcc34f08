#include "commands/channel_selection.hpp"

namespace virtual_adapter {
namespace {

void setZero(CommandCall& call) {
    const ValueStream& values = call.amplifier.values();
    changeChannels(call, Kept::present, [&](Settings& settings, std::size_t channel) {
        settings.scaling[channel].zero = values.zeroOf(channel);
    });
}

void zero(CommandCall& call) {
    withChannel(call, [&](std::size_t channel) {
        call.reply.u32(static_cast<std::uint32_t>(call.amplifier.settings().scaling[channel].zero));
    });
}

void writeZero(CommandCall& call) {
    changeChannels(call, Kept::present, [value = call.i32(1)](Settings& settings, std::size_t channel) {
        settings.scaling[channel].zero = value;
    });
}

template <float ChannelScaling::*number>
void readNumber(CommandCall& call) {
    withChannel(call, [&](std::size_t channel) { call.reply.f32(call.amplifier.settings().scaling[channel].*number); });
}

template <float ChannelScaling::*number, Kept kept>
void writeNumber(CommandCall& call) {
    changeChannels(call, kept, [value = call.f32(1)](Settings& settings, std::size_t channel) {
        settings.scaling[channel].*number = value;
    });
}

// The output follows the input again after a moment; nothing reads the value back.
void writeOutput(CommandCall& call) {
    if (call.u8(0) > kMostChannels) return call.reply.error(device_status::kWrongIndex);
    call.reply.acknowledge();
}

void outputType(CommandCall& call) {
    withChannel(call,
                [&](std::size_t channel) { call.reply.bytes(call.amplifier.settings().scaling[channel].outputType); });
}

void setOutputType(CommandCall& call) {
    changeChannels(call, Kept::stored,
                   [type = std::array{call.u8(1), call.u8(2)}](Settings& settings, std::size_t channel) {
                       settings.scaling[channel].outputType = type;
                   });
}

constexpr CommandRow kScalingRows[] = {
    {0x02, 1, true, zero},
    {0x03, 5, true, writeZero},
    {0x04, 1, true, readNumber<&ChannelScaling::outputOffset>},
    {0x05, 5, true, writeNumber<&ChannelScaling::outputOffset, Kept::stored>},
    {0x06, 1, true, readNumber<&ChannelScaling::outputScale>},
    {0x07, 5, true, writeNumber<&ChannelScaling::outputScale, Kept::present>},
    {0x08, 3, true, writeOutput},
    {0x0C, 1, true, setZero},
    {0x0D, 1, true, outputType},
    {0x0E, 3, true, setOutputType},
    {0x14, 1, true, readNumber<&ChannelScaling::userScale>},
    {0x15, 5, true, writeNumber<&ChannelScaling::userScale, Kept::present>},
    {0x94, 1, true, readNumber<&ChannelScaling::noiseCut>},
    {0x95, 5, true, writeNumber<&ChannelScaling::noiseCut, Kept::present>},
    {0x9A, 1, true, readNumber<&ChannelScaling::userOffset>},
    {0x9B, 5, true, writeNumber<&ChannelScaling::userOffset, Kept::present>},
};

}  // namespace

std::span<const CommandRow> scalingCommands() {
    return kScalingRows;
}

}  // namespace virtual_adapter
