#include "amplifier.hpp"
#include "commands/command_table.hpp"

namespace virtual_adapter {
namespace {

void resetStatus(CommandCall& call) {
    call.amplifier.protocolErrors().fill(0);
    call.amplifier.values().clearErrors();
    call.reply.acknowledge();
}

// Entry 0 is the latest: the refused command's code above the status it was answered with.
void protocolError(CommandCall& call) {
    const auto& errors = call.amplifier.protocolErrors();
    const std::uint8_t index = call.u8(0);
    if (index >= errors.size()) return call.reply.error(device_status::kWrongIndex);
    call.reply.u32(errors[index]);
}

// Entry 0 is the latest value that was cut to its range: channel, status nibble and number of its set.
void valueError(CommandCall& call) {
    const std::uint8_t index = call.u8(0);
    if (index >= ValueStream::kErrorsKept) return call.reply.error(device_status::kWrongIndex);
    const ValueStream::ValueError& entry = call.amplifier.values().valueError(index);
    call.reply.bytes(std::array{entry.channel, entry.status, static_cast<std::uint8_t>(entry.set >> 24U),
                                static_cast<std::uint8_t>(entry.set >> 16U), static_cast<std::uint8_t>(entry.set >> 8U),
                                static_cast<std::uint8_t>(entry.set)});
}

constexpr CommandRow kStatusRows[] = {
    {0x00, 0, true, resetStatus},
    {0x42, 1, true, protocolError},
    {0x43, 1, true, valueError},
};

}  // namespace

std::span<const CommandRow> statusCommands() {
    return kStatusRows;
}

}  // namespace virtual_adapter
