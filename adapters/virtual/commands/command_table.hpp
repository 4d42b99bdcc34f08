#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

#include "frame.hpp"
#include "reply.hpp"

namespace virtual_adapter {

class Amplifier;

// One command on its way through the amplifier. Parameters are read by their place, big-endian; the table has checked
// their number.
struct CommandCall {
    Amplifier& amplifier;
    std::span<const std::uint8_t> parameters;
    Nanoseconds now;
    Reply& reply;

    [[nodiscard]] std::uint8_t u8(std::size_t place) const { return parameters[place]; }
    [[nodiscard]] std::uint16_t u16(std::size_t place) const {
        return static_cast<std::uint16_t>(parameters[place] << 8U | parameters[place + 1]);
    }
    [[nodiscard]] std::uint32_t u32(std::size_t place) const {
        return static_cast<std::uint32_t>(u16(place)) << 16U | u16(place + 2);
    }
    [[nodiscard]] std::int32_t i32(std::size_t place) const { return static_cast<std::int32_t>(u32(place)); }
    [[nodiscard]] float f32(std::size_t place) const { return std::bit_cast<float>(u32(place)); }
};

// One command of the amplifier. To add one: write its function, put its row into the table of its family; a new family
// is a file of its own in this folder, named in command_table.cpp.
struct CommandRow {
    std::uint8_t code;
    std::uint8_t parameterCount;
    bool answered;
    void (*run)(CommandCall& call);
    std::uint32_t firmware = 0;  // from which on amplifiers know it
};

// Null when an amplifier with this firmware does not know the command.
[[nodiscard]] const CommandRow* findCommand(std::uint8_t code, std::uint32_t firmware);

[[nodiscard]] std::span<const CommandRow> calibrationCommands();
[[nodiscard]] std::span<const CommandRow> canCommands();
[[nodiscard]] std::span<const CommandRow> filterCommands();
[[nodiscard]] std::span<const CommandRow> identityCommands();
[[nodiscard]] std::span<const CommandRow> inputCommands();
[[nodiscard]] std::span<const CommandRow> rateCommands();
[[nodiscard]] std::span<const CommandRow> scalingCommands();
[[nodiscard]] std::span<const CommandRow> settingsCommands();
[[nodiscard]] std::span<const CommandRow> statusCommands();
[[nodiscard]] std::span<const CommandRow> unitCommands();
[[nodiscard]] std::span<const CommandRow> valueCommands();

}  // namespace virtual_adapter
