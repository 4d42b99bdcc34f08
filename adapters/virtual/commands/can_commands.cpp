#include "amplifier.hpp"
#include "commands/command_table.hpp"

namespace virtual_adapter {
namespace {

constexpr std::uint8_t kIdentifiers = 3;  // of commands, answers and values: the first of the numbered settings

void canSetting(CommandCall& call) {
    const auto& numbered = call.amplifier.settings().can.numbered;
    const std::uint8_t number = call.u8(0);
    if (number >= numbered.size()) return call.reply.error(device_status::kWrongIndex);
    call.reply.u32(numbered[number]);
}

// New identifiers come into use with the next reset.
void setCanSetting(CommandCall& call) {
    const std::uint8_t number = call.u8(0);
    const std::uint32_t value = call.u32(1);
    if (number >= call.amplifier.settings().can.numbered.size()) return call.reply.error(device_status::kWrongIndex);
    if (number < kIdentifiers && value > kHighestStandardId) return call.reply.error(device_status::kWrongData);
    call.amplifier.changeSettings(Kept::stored, call.now,
                                  [=](Settings& settings) { settings.can.numbered[number] = value; });
    call.reply.acknowledge();
}

// Nothing reads the four bytes back; the state tells that some came.
void setIdentifier(CommandCall& call) {
    call.amplifier.noteIdentifierSet();
    call.reply.acknowledge();
}

void identifierState(CommandCall& call) {
    call.reply.u8(call.amplifier.identifierSet() ? 1 : 0);
}

// Entry 0: the number of channels sent in each set.
void transmitMapping(CommandCall& call) {
    const auto& mapping = call.amplifier.settings().can.mapping;
    const std::uint8_t entry = call.u8(0);
    if (entry >= mapping.size()) return call.reply.error(device_status::kWrongIndex);
    call.reply.u16(mapping[entry]);
}

void setTransmitMapping(CommandCall& call) {
    const std::uint8_t entry = call.u8(0);
    const std::uint16_t value = call.u16(1);
    if (entry >= CanSettings::kMappingEntries) return call.reply.error(device_status::kWrongIndex);
    if (entry == 0 && (value < 1 || value > CanSettings::kMostCounted))
        return call.reply.error(device_status::kWrongData);
    call.amplifier.changeSettings(Kept::stored, call.now,
                                  [=](Settings& settings) { settings.can.mapping[entry] = value; });
    call.reply.acknowledge();
}

constexpr CommandRow kCanRows[] = {
    {0x19, 4, true, setIdentifier},      {0x1A, 0, true, identifierState}, {0x49, 1, true, transmitMapping},
    {0x4A, 3, true, setTransmitMapping}, {0x8C, 1, true, canSetting},      {0x8D, 5, true, setCanSetting},
};

}  // namespace

std::span<const CommandRow> canCommands() {
    return kCanRows;
}

}  // namespace virtual_adapter
