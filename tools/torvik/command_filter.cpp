#include "command_filter.h"

namespace torvik::tool {

void addFilterCommand(CommandLine& commandLine) {
    CLI::App* const command = commandLine.app.add_subcommand(
        "filter", "design and plot digital filters, load them into the device, show and switch its filters");
    command->require_subcommand(1);
    addFilterDesignVerbs(*command, commandLine);
    addFilterDeviceVerbs(*command, commandLine);
}

}  // namespace torvik::tool
