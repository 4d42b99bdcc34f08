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

void serialNumber(CommandCall& call) {
    call.reply.u32(call.amplifier.memory().serial);
}

void setSerialNumber(CommandCall& call) {
    if (call.u32(0) == 0) return call.reply.error(device_status::kWrongData);
    call.amplifier.memory().serial = call.u32(0);
    call.reply.acknowledge();
}

void firmwareVersion(CommandCall& call) {
    call.reply.u32(call.amplifier.config().firmware);
}

void hardwareVersion(CommandCall& call) {
    call.reply.u32(call.amplifier.memory().hardware);
}

void softwareConfiguration(CommandCall& call) {
    call.reply.u32(call.amplifier.memory().softwareConfiguration);
}

// The query is a command code and a byte that is not looked at.
void commandAvailable(CommandCall& call) {
    if (findCommand(call.u8(0), call.amplifier.config().firmware) == nullptr)
        return call.reply.error(device_status::kUnknownCommand);
    call.reply.acknowledge();
}

void hours(CommandCall& call) {
    const auto& kept = call.amplifier.memory().hours;
    const std::uint8_t index = call.u8(0);
    if (index >= kept.size()) return call.reply.error(device_status::kWrongIndex);
    call.reply.f32(kept[index]);
}

// The first counter is meant; it stands still, so that it reads back what was written.
void setHours(CommandCall& call) {
    call.amplifier.memory().hours[0] = call.f32(0);
    call.reply.acknowledge();
}

// Addresses count bytes. The memories of the channels follow the amplifier's own.
void tedsData(CommandCall& call) {
    const std::uint8_t selector = call.u8(0);
    const std::size_t address = call.u16(1);
    std::array<std::uint8_t, 4> data{};
    if (selector >= TedsMemory::kSelectors || address + data.size() > TedsMemory::kBytes)
        return call.reply.error(device_status::kWrongIndex);
    for (std::size_t i = 0; i < data.size(); ++i)
        data[i] = TedsMemory::byteAt(selector, address + i);
    call.reply.bytes(data);
}

// One bit for each of the bench's channels: all their sensors have a memory.
void tedsActive(CommandCall& call) {
    call.reply.u32((1U << call.amplifier.config().signals.size()) - 1U);
}

constexpr CommandRow kIdentityRows[] = {
    {0x01, 1, true, interfaceIdent},
    {0x1F, 0, true, serialNumber},
    {0x20, 4, true, setSerialNumber},
    {0x2A, 0, true, softwareConfiguration},
    {0x2B, 0, true, firmwareVersion},
    {0x36, 0, true, hardwareVersion},
    {0x56, 1, true, hours},
    {0x57, 4, true, setHours},
    {0x65, 3, true, tedsData},
    {0x68, 0, true, tedsActive},
    {0x93, 2, true, commandAvailable},
};

}  // namespace

std::span<const CommandRow> identityCommands() {
    return kIdentityRows;
}

}  // namespace virtual_adapter
