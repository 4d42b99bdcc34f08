#include "amplifier.hpp"
#include "commands/command_table.hpp"

// The mode word, the settings sets and the reset that restores them.
namespace virtual_adapter {
namespace {

constexpr std::uint32_t kCountBits = 7;

// The channel count stands in the low three bits, so that eight channels read as 0.
void modeWord(CommandCall& call) {
    const Settings& settings = call.amplifier.settings();
    call.reply.u32(settings.mode.mode | (settings.can.channelCount() & kCountBits));
}

void setModeWord(CommandCall& call) {
    const std::uint32_t mode = call.u32(0);
    call.amplifier.changeSettings(Kept::stored, call.now, [=](Settings& settings) {
        const auto count = static_cast<std::uint16_t>(mode & kCountBits);
        settings.mode.mode = mode & ~kCountBits;
        settings.can.mapping[0] = count == 0 ? std::uint16_t{8} : count;
    });
    call.reply.acknowledge();
}

void loadSettings(CommandCall& call) {
    if (call.u8(0) >= SettingsMemory::kSets) return call.reply.error(device_status::kWrongIndex);
    call.amplifier.loadSettings(call.u8(0), call.now);
    call.reply.acknowledge();
}

void storeSettings(CommandCall& call) {
    const std::uint8_t set = call.u8(0);
    if (set >= SettingsMemory::kSets) return call.reply.error(device_status::kWrongIndex);
    if (set == SettingsMemory::kFactory) return call.reply.error(device_status::kWrongData);
    call.amplifier.storeSettings(set);
    call.reply.acknowledge();
}

void reset(CommandCall& call) {
    call.amplifier.restart(call.now);
}

// Nothing reads the word back.
void switchBlocking(CommandCall& call) {
    call.reply.acknowledge();
}

constexpr CommandRow kSettingsRows[] = {
    {0x09, 1, true, loadSettings}, {0x0A, 1, true, storeSettings}, {0x26, 0, true, modeWord},
    {0x27, 4, true, setModeWord},  {0x78, 0, false, reset},        {0x92, 4, true, switchBlocking},
};

}  // namespace

std::span<const CommandRow> settingsCommands() {
    return kSettingsRows;
}

}  // namespace virtual_adapter
