#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>

#include "TORVIK.h"

namespace torvik::tool {

/// How a command reaches its device: what the options common to all device commands say.
struct ConnectionOptions {
    std::uint32_t deviceNo = 1;
    std::uint32_t adapterType = TORVIK_ADAPTER_USB;
    std::uint32_t baudRate = 1000000;
    std::uint32_t bufferSize = 65534;
    std::uint32_t commandId = 0x100;
    std::uint32_t answerId = 0x101;
    std::uint32_t protocolKind = 16;
    bool debug = false;
    bool adapterLog = false;
    bool simulate = false;
    std::string benchFile;  ///< empty: the virtual adapter's own default
};

/// Adds those options to a command, so that they may stand behind its name. `options` must live as long as the parser.
void addConnectionOptions(CLI::App& command, ConnectionOptions& options);

/// Adds them to the program itself, so that they may stand before the command's name; its help does not repeat them.
void addHiddenConnectionOptions(CLI::App& program, ConnectionOptions& options);

/// "usb", "pci", "pccard" or "handle1".
std::string adapterName(std::uint32_t adapterType);

}  // namespace torvik::tool
