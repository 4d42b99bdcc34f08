#include "connection_options.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "number_option.h"
#include "number_text.h"

namespace torvik::tool {

namespace {

constexpr std::array<std::pair<std::string_view, std::uint32_t>, 4> adapters{{
    {"usb", TORVIK_ADAPTER_USB},
    {"pci", TORVIK_ADAPTER_PCI},
    {"pccard", TORVIK_ADAPTER_PC_CARD},
    {"handle1", TORVIK_ADAPTER_CHANNEL_1},
}};

constexpr std::array<std::uint32_t, 16> baudRates{1000000, 800000, 500000, 250000, 125000, 100000, 95000, 83000,
                                                  50000,   47000,  33000,  25000,  20000,  12500,  10000, 5000};

constexpr const char* group = "How the device is reached";

void addAdapterOption(CLI::App& command, ConnectionOptions& options) {
    const auto take = [&options](const std::string& text) {
        const auto number = parseNumber(text);
        for (const auto& [name, type] : adapters) {
            if (text == name || number == type) {
                options.adapterType = type;
                return;
            }
        }
        throw CLI::ValidationError("--adapter",
                                   fmt::format("'{}' is none of usb, pci, pccard, handle1 (or 1..4)", text));
    };
    command.add_option_function<std::string>("-a,--adapter", take, "usb, pci, pccard or handle1 (or 1..4)")
        ->type_name("TYPE")
        ->default_str("usb")
        ->group(group);
}

void addBaudOption(CLI::App& command, ConnectionOptions& options) {
    const auto take = [&options](const std::string& text) {
        const auto number = parseNumber(text);
        if (!number || std::ranges::find(baudRates, *number) == baudRates.end()) {
            throw CLI::ValidationError(
                "--baud", fmt::format("'{}' is none of the possible bit rates: {}", text, fmt::join(baudRates, ", ")));
        }
        options.baudRate = *number;
    };
    command.add_option_function<std::string>("-b,--baud", take, "bit rate of the bus in bit/s")
        ->type_name("RATE")
        ->default_str("1000000")
        ->group(group);
}

void addProtocolOption(CLI::App& command, ConnectionOptions& options) {
    const auto take = [&options](const std::string& text) {
        if (text != "16" && text != "32") {
            throw CLI::ValidationError("--protocol", fmt::format("'{}' is neither 16 nor 32", text));
        }
        options.protocolKind = text == "16" ? 16 : 32;
    };
    command.add_option_function<std::string>("--protocol", take, "protocol kind of the device, 16 or 32")
        ->type_name("KIND")
        ->default_str("16")
        ->group(group);
}

void addSimulateOption(CLI::App& command, ConnectionOptions& options) {
    const auto take = [&options](const std::string& file) {
        options.simulate = true;
        options.benchFile = file;
    };
    command
        .add_option_function<std::string>("--simulate", take,
                                          "use simulated amplifiers in place of an adapter: those that FILE describes, "
                                          "or one with six channels")
        ->expected(0, 1)
        ->type_name("[FILE]")
        ->group(group);
}

}  // namespace

void addConnectionOptions(CLI::App& command, ConnectionOptions& options) {
    constexpr NumberRange identifiers{1, 2047};
    addNumberOption(command, "-d,--device", options.deviceNo, {1, 39}, "device number in the library, 1..39")
        ->default_str("1")
        ->group(group);
    addAdapterOption(command, options);
    addBaudOption(command, options);
    addNumberOption(command, "--command-id", options.commandId, identifiers, "CAN identifier of commands, 1..2047")
        ->default_str("0x100")
        ->group(group);
    addNumberOption(command, "--answer-id", options.answerId, identifiers, "CAN identifier of answers, 1..2047")
        ->default_str("0x101")
        ->group(group);
    addNumberOption(command, "--buffer", options.bufferSize, {1, 65534}, "values kept per channel, 1..65534")
        ->default_str("65534")
        ->group(group);
    addProtocolOption(command, options);
    addSimulateOption(command, options);
    command.add_flag("--debug", options.debug, "print the library's debug lines (to standard error)")->group(group);
    command.add_flag("--adapter-log", options.adapterLog, "let the adapter's library write its own log file")
        ->group(group);
}

void addHiddenConnectionOptions(CLI::App& program, ConnectionOptions& options) {
    addConnectionOptions(program, options);
    for (CLI::Option* const option : program.get_options()) {
        if (option->get_group() == group) option->group("");
    }
}

std::string adapterName(std::uint32_t adapterType) {
    for (const auto& [name, type] : adapters) {
        if (type == adapterType) return std::string(name);
    }
    return fmt::format("type {}", adapterType);
}

}  // namespace torvik::tool
