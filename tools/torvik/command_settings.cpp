#include <fmt/format.h>

#include <memory>
#include <string>

#include "TORVIK.h"
#include "command_line.h"
#include "connection.h"
#include "number_option.h"
#include "parameters/device_parameters.h"
#include "parameters/library_call.h"

namespace torvik::tool {

namespace {

ExitCode storeSettingsSet(const ConnectionOptions& options, std::uint32_t set) {
    const Connection connection(options);
    if (TORVIKstoreSettings(connection.deviceNo(), static_cast<std::uint8_t>(set)) != 0) {
        connection.fail(ExitCode::deviceFailed, fmt::format("storing the present settings as set {}", set));
    }
    return ExitCode::success;
}

ExitCode loadSettingsSet(const ConnectionOptions& options, std::uint32_t set) {
    const Connection connection(options);
    const std::int32_t deviceNo = connection.deviceNo();
    try {
        tellRestart(callWithRestart(deviceNo, [&] { return TORVIKloadSettings(deviceNo, set); }));
    } catch (const Refused& refused) {
        throw refusalFailure(fmt::format("loading settings set {}", set), refused.error);
    }
    return ExitCode::success;
}

using SettingsAction = ExitCode (*)(const ConnectionOptions&, std::uint32_t);

void addSettingsVerb(CLI::App& settings, CommandLine& commandLine, const std::string& verb,
                     const std::string& description, SettingsAction action) {
    CLI::App* const command = settings.add_subcommand(verb, description);
    const auto set = std::make_shared<std::uint32_t>(0);
    addNumberOption(*command, "N", *set, {0, 255}, "number of the set; 0 is what a restart brings back")
        ->required()
        ->type_name("");
    addConnectionOptions(*command, commandLine.connection);
    command->callback([&commandLine, set, action] {
        commandLine.action = [&commandLine, set, action](Session&) { return action(commandLine.connection, *set); };
    });
}

}  // namespace

void addSettingsCommand(CommandLine& commandLine) {
    CLI::App* const command =
        commandLine.app.add_subcommand("settings", "store the device's settings as a set, or load a stored set");
    command->require_subcommand(1);
    addSettingsVerb(*command, commandLine, "store", "store the present settings", storeSettingsSet);
    addSettingsVerb(*command, commandLine, "load", "load a stored set and restart the device", loadSettingsSet);
}

}  // namespace torvik::tool
