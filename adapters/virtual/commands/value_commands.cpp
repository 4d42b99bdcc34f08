#include "amplifier.hpp"
#include "commands/command_table.hpp"

namespace virtual_adapter {
namespace {

// The transmit mode follows: bit 0 of its first word set means that the amplifier does not transmit.
void setStreaming(CommandCall& call, bool on) {
    call.amplifier.changeSettings(Kept::present, call.now, [on](Settings& settings) {
        std::uint16_t& mode = settings.mode.transmitMode[0];
        mode = static_cast<std::uint16_t>(on ? mode & ~1U : mode | 1U);
    });
    call.reply.acknowledge();
}

void stopStream(CommandCall& call) {
    setStreaming(call, false);
}

void startStream(CommandCall& call) {
    setStreaming(call, true);
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
    call.reply.u32(static_cast<std::uint32_t>(values.nextValue(channel - 1U).counts));
}

void oneSet(CommandCall& call) {
    call.amplifier.requestSet(call.now);
}

void clearExtremes(CommandCall& call) {
    ValueStream& values = call.amplifier.values();
    const std::uint8_t selector = call.u8(0);
    if (selector > values.channels()) return call.reply.error(device_status::kWrongIndex);
    for (std::size_t channel = 0; channel < values.channels(); ++channel) {
        if (selector == 0 || selector == channel + 1) values.clearExtremes(channel);
    }
    call.reply.acknowledge();
}

// First the smallest value, then the largest, in the unit of the signals.
void extremes(CommandCall& call) {
    const std::uint8_t channel = call.u8(0);
    if (channel < 1 || channel > kMostChannels) return call.reply.error(device_status::kWrongIndex);
    const ValueStream::Extremes kept = call.amplifier.values().extremes(channel - 1U);
    call.reply.f32(static_cast<float>(kept.smallest));
    call.reply.f32(static_cast<float>(kept.largest));
}

void transmitMode(CommandCall& call) {
    const auto& modes = call.amplifier.settings().mode.transmitMode;
    const std::uint8_t index = call.u8(0);
    if (index >= modes.size()) return call.reply.error(device_status::kWrongIndex);
    call.reply.u16(modes[index]);
}

void setTransmitMode(CommandCall& call) {
    const std::uint8_t index = call.u8(0);
    const std::uint16_t mode = call.u16(1);
    if (index >= call.amplifier.settings().mode.transmitMode.size())
        return call.reply.error(device_status::kWrongIndex);
    call.amplifier.changeSettings(Kept::present, call.now,
                                  [=](Settings& settings) { settings.mode.transmitMode[index] = mode; });
    call.reply.acknowledge();
}

constexpr CommandRow kValueRows[] = {
    {0x23, 0, true, stopStream}, {0x24, 0, true, startStream},  {0x25, 0, true, clearDeviceBuffer},
    {0x3A, 1, true, rawValue},   {0x3B, 0, false, oneSet},      {0x3C, 1, true, clearExtremes},
    {0x53, 1, true, extremes},   {0x80, 1, true, transmitMode}, {0x81, 3, true, setTransmitMode},
};

}  // namespace

std::span<const CommandRow> valueCommands() {
    return kValueRows;
}

}  // namespace virtual_adapter
