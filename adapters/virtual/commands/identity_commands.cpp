#include "amplifier.hpp"
#include "commands/command_table.hpp"

namespace virtual_adapter {
namespace {

void interfaceIdent(CommandCall& call) {
    const auto& idents = call.amplifier.config().interfaceIdent;
    const std::uint8_t index = call.u8(0);
    if (index >= idents.size()) return call.reply.error(device_status::kWrongIndex);
    call.reply.u32(idents[index]);
}

// The channel count stands in the low three bits, so that eight channels read as 0.
void modeWord(CommandCall& call) {
    const auto channels = static_cast<std::uint32_t>(call.amplifier.values().channels());
    call.reply.u32((call.amplifier.config().mode & ~7U) | (channels & 7U));
}

void firmwareVersion(CommandCall& call) {
    call.reply.u32(call.amplifier.config().firmware);
}

constexpr CommandRow kRows[] = {
    {0x01, 1, true, interfaceIdent},
    {0x26, 0, true, modeWord},
    {0x2B, 0, true, firmwareVersion},
};

}  // namespace

std::span<const CommandRow> identityCommands() {
    return kRows;
}

}  // namespace virtual_adapter
