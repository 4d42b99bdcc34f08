#include "amplifier.hpp"
#include "commands/command_table.hpp"

namespace virtual_adapter {
namespace {

void canSetting(CommandCall& call) {
    const AmplifierConfig& config = call.amplifier.config();
    switch (call.u8(0)) {
        case 0:
            return call.reply.u32(config.commandId);
        case 1:
            return call.reply.u32(config.answerId);
        case 2:
            return call.reply.u32(config.valueId);
        default:
            return call.reply.error(device_status::kWrongIndex);
    }
}

// Entry 0: the number of channels sent in each set.
void transmitMapping(CommandCall& call) {
    if (call.u8(0) != 0) return call.reply.error(device_status::kWrongIndex);
    call.reply.u16(static_cast<std::uint16_t>(call.amplifier.values().channels()));
}

constexpr CommandRow kRows[] = {
    {0x49, 1, true, transmitMapping},
    {0x8C, 1, true, canSetting},
};

}  // namespace

std::span<const CommandRow> canCommands() {
    return kRows;
}

}  // namespace virtual_adapter
