#pragma once

#include "command_line.h"

namespace torvik::tool {

// The verbs of `torvik filter` that design, and those that need a device.
void addFilterDesignVerbs(CLI::App& filter, CommandLine& commandLine);
void addFilterDeviceVerbs(CLI::App& filter, CommandLine& commandLine);

}  // namespace torvik::tool
