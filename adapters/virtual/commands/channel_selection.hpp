#pragma once

#include <cstddef>
#include <cstdint>

#include "amplifier.hpp"
#include "commands/command_table.hpp"

// Every amplifier has its eight inputs, however many of them it sends.
namespace virtual_adapter {

// Answers for one channel, counted from 1, that stands in parameter 0.
template <class Answer>
void withChannel(CommandCall& call, Answer answer) {
    const std::uint8_t channel = call.u8(0);
    if (channel < 1 || channel > kMostChannels) return call.reply.error(device_status::kWrongIndex);
    answer(channel - std::size_t{1});
}

// Changes the settings of the channel in parameter 0, or with 0 of all, and acknowledges.
template <class Change>
void changeChannels(CommandCall& call, Kept kept, Change change) {
    const std::uint8_t selector = call.u8(0);
    if (selector > kMostChannels) return call.reply.error(device_status::kWrongIndex);
    call.amplifier.changeSettings(kept, call.now, [&](Settings& settings) {
        for (std::size_t channel = 0; channel < kMostChannels; ++channel) {
            if (selector == 0 || selector == channel + 1) change(settings, channel);
        }
    });
    call.reply.acknowledge();
}

}  // namespace virtual_adapter
