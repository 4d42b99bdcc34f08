#include "amplifier.hpp"
#include "commands/command_table.hpp"

namespace virtual_adapter {
namespace {

constexpr std::array<float, 2> kDataRateRange{0.1F, 20'000.0F};

void frequency(CommandCall& call) {
    call.reply.f32(static_cast<float>(call.amplifier.settings().rates.frequency));
}

// The stream changes its pace at once.
void setFrequency(CommandCall& call) {
    const float frequency = call.f32(0);
    if (!(frequency >= kDataRateRange[0] && frequency <= kDataRateRange[1]))
        return call.reply.error(device_status::kWrongData);
    call.amplifier.changeSettings(
        Kept::stored, call.now, [=](Settings& settings) { settings.rates.frequency = static_cast<double>(frequency); });
    call.reply.acknowledge();
}

void dataRateLimit(CommandCall& call) {
    if (call.u8(0) >= kDataRateRange.size()) return call.reply.error(device_status::kWrongIndex);
    call.reply.f32(kDataRateRange[call.u8(0)]);
}

// Parameter 0 holds the input in its high half and the item in its low half.
void counterMode(CommandCall& call) {
    const std::size_t input = call.u8(0) >> 4U;
    if (input >= RateSettings::kCounterInputs) return call.reply.error(device_status::kWrongIndex);
    call.reply.u32(call.amplifier.settings().rates.counterModes[input][call.u8(0) & 0xFU]);
}

// Item 0 switches the counter on, and with it one more channel of the set; 0 switches it off.
void setCounterMode(CommandCall& call) {
    const std::size_t input = call.u8(0) >> 4U;
    const std::size_t item = call.u8(0) & 0xFU;
    const std::uint32_t value = call.u32(1);
    if (input >= RateSettings::kCounterInputs) return call.reply.error(device_status::kWrongIndex);
    call.amplifier.changeSettings(Kept::stored, call.now, [=](Settings& settings) {
        std::uint32_t& mode = settings.rates.counterModes[input][item];
        std::uint16_t& channels = settings.can.mapping[0];
        if (item == 0 && mode == 0 && value != 0 && channels < CanSettings::kMostCounted) ++channels;
        if (item == 0 && mode != 0 && value == 0 && channels > 1) --channels;
        mode = value;
    });
    call.reply.acknowledge();
}

// The byte that comes with the request means nothing.
void analogueFilter(CommandCall& call) {
    call.reply.u16(call.amplifier.settings().rates.analogueFilter);
}

void setAnalogueFilter(CommandCall& call) {
    call.amplifier.changeSettings(Kept::present, call.now,
                                  [value = call.u16(0)](Settings& settings) { settings.rates.analogueFilter = value; });
    call.reply.acknowledge();
}

constexpr CommandRow kRateRows[] = {
    {0x63, 1, true, dataRateLimit},     {0x69, 1, true, counterMode},  {0x6A, 5, true, setCounterMode},
    {0x8A, 0, true, frequency},         {0x8B, 4, true, setFrequency}, {0x90, 1, true, analogueFilter},
    {0x91, 2, true, setAnalogueFilter},
};

}  // namespace

std::span<const CommandRow> rateCommands() {
    return kRateRows;
}

}  // namespace virtual_adapter
