#include "amplifier.hpp"
#include "commands/command_table.hpp"

namespace virtual_adapter {
namespace {

void stopStream(CommandCall& call) {
    call.amplifier.setStreaming(false, call.now);
    call.reply.acknowledge();
}

void startStream(CommandCall& call) {
    call.amplifier.setStreaming(true, call.now);
    call.reply.acknowledge();
}

void clearDeviceBuffer(CommandCall& call) {
    call.amplifier.dropRequestedSets();
    call.reply.acknowledge();
}

// Channels are counted from 1; integers come sign-extended, floats as their bits.
void rawValue(CommandCall& call) {
    const ValueStream& values = call.amplifier.values();
    const std::uint8_t channel = call.u8(0);
    if (channel < 1 || channel > values.channels()) return call.reply.error(device_status::kWrongIndex);
    call.reply.u32(static_cast<std::uint32_t>(values.valueAt(channel - 1U, values.setsMade()).counts));
}

void oneSet(CommandCall& call) {
    call.amplifier.requestSet(call.now);
}

void clearMaximum(CommandCall& call) {
    ValueStream& values = call.amplifier.values();
    const std::uint8_t selector = call.u8(0);
    if (selector > values.channels()) return call.reply.error(device_status::kWrongIndex);
    for (std::size_t channel = 0; channel < values.channels(); ++channel) {
        if (selector == 0 || selector == channel + 1) values.clearMaximum(channel);
    }
    call.reply.acknowledge();
}

// Index 0: bit 0 set means that the amplifier does not transmit. Index 1: no bits in use.
void transmitMode(CommandCall& call) {
    const std::uint8_t index = call.u8(0);
    if (index > 1) return call.reply.error(device_status::kWrongIndex);
    call.reply.u16(index == 0 && !call.amplifier.streaming() ? 1 : 0);
}

constexpr CommandRow kRows[] = {
    {0x23, 0, true, stopStream},   {0x24, 0, true, startStream}, {0x25, 0, true, clearDeviceBuffer},
    {0x3A, 1, true, rawValue},     {0x3B, 0, false, oneSet},     {0x3C, 1, true, clearMaximum},
    {0x80, 1, true, transmitMode},
};

}  // namespace

std::span<const CommandRow> valueCommands() {
    return kRows;
}

}  // namespace virtual_adapter
