#include <algorithm>

#include "commands/channel_selection.hpp"

namespace virtual_adapter {
namespace {

constexpr std::size_t kPartSize = 4;  // characters of a user text in one frame

void unitNumber(CommandCall& call) {
    withChannel(call, [&](std::size_t channel) { call.reply.u8(call.amplifier.settings().units[channel]); });
}

void setUnitNumber(CommandCall& call) {
    changeChannels(call, Kept::present,
                   [unit = call.u8(1)](Settings& settings, std::size_t channel) { settings.units[channel] = unit; });
}

// Two answers, the first half of the text and then the second, each behind the number of its part.
void userText(CommandCall& call) {
    if (call.u8(0) >= DeviceMemory::kUserTexts) return call.reply.error(device_status::kWrongIndex);
    const std::span<const std::uint8_t> text = call.amplifier.memory().userTexts[call.u8(0)];
    for (std::uint8_t part = 1; part <= 2; ++part) {
        std::array<std::uint8_t, 1 + kPartSize> data{part};
        std::ranges::copy(text.subspan((part - 1U) * kPartSize, kPartSize), data.begin() + 1);
        call.reply.bytes(data);
    }
}

void writeUserText(CommandCall& call) {
    const std::uint8_t part = call.u8(1);
    if (call.u8(0) >= DeviceMemory::kUserTexts || part < 1 || part > 2)
        return call.reply.error(device_status::kWrongIndex);
    auto& text = call.amplifier.memory().userTexts[call.u8(0)];
    std::ranges::copy(call.parameters.subspan(2), text.begin() + static_cast<std::ptrdiff_t>((part - 1U) * kPartSize));
    call.reply.acknowledge();
}

constexpr CommandRow kUnitRows[] = {
    {0x0F, 1, true, unitNumber},
    {0x10, 2, true, setUnitNumber},
    {0x11, 1, true, userText},
    {0x12, 6, true, writeUserText},
};

}  // namespace

std::span<const CommandRow> unitCommands() {
    return kUnitRows;
}

}  // namespace virtual_adapter
