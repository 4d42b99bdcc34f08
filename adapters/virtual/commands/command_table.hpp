#pragma once

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
};

// One command of the amplifier. To add one: write its function, put its row into the table of its family; a new family
// is a file of its own in this folder, named in command_table.cpp.
struct CommandRow {
    std::uint8_t code;
    std::uint8_t parameterCount;
    bool answered;
    void (*run)(CommandCall& call);
};

// Null when the amplifier does not know the command.
[[nodiscard]] const CommandRow* findCommand(std::uint8_t code);

[[nodiscard]] std::span<const CommandRow> canCommands();
[[nodiscard]] std::span<const CommandRow> identityCommands();
[[nodiscard]] std::span<const CommandRow> statusCommands();
[[nodiscard]] std::span<const CommandRow> valueCommands();

}  // namespace virtual_adapter
