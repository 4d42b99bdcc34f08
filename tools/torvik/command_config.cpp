#include <fmt/format.h>

#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "command_line.h"
#include "configuration.h"
#include "connection.h"
#include "platform/file_replacement.h"

namespace torvik::tool {

namespace {

constexpr std::string_view standardOutput = "-";

struct ConfigRequest {
    std::string file;
    bool identifiers = false;
};

void writeConfigurationFile(const std::string& path, const std::string& text) try {
    platform::replaceFile(path, text);
} catch (const std::system_error& error) {
    throw Failure{.exitCode = ExitCode::outputFailed,
                  .tried = fmt::format("writing the configuration file '{}'", path),
                  .reason = fmt::format("the file cannot be made or written: {}", error.code().message()),
                  .advice = "check the path, the right to write there, and the disk for free space"};
}

/// What the file says, without the identifiers unless they are asked for.
std::vector<ConfigurationItem> requestedItems(const ConfigRequest& request) {
    auto items = readConfiguration(request.file);
    if (request.identifiers) return items;
    const auto left = std::erase_if(items, [](const ConfigurationItem& item) {
        return item.parameter->inConfiguration == InConfiguration::onRequest;
    });
    if (left > 0) {
        printMessage(fmt::format("torvik: {} CAN settings of the file are left alone without --identifiers\n", left));
    }
    return items;
}

std::string joinedLines(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line + "\n";
    return text;
}

void leaveOutWhatCannotBeLoaded(std::vector<ConfigurationItem>& items) {
    std::erase_if(items, [](const ConfigurationItem& item) {
        if (canBeLoaded(item)) return false;
        printMessage(fmt::format("torvik: {} is not saved: the device holds {}, which it cannot be set to\n",
                                 describePlace(*item.parameter, item.place),
                                 shownText(item.parameter->kind, item.value)));
        return true;
    });
}

ExitCode saveConfig(Session& session, const ConnectionOptions& options, const ConfigRequest& request) {
    const Connection connection(options);
    auto items = readConfiguration(session, connection, request.identifiers);
    leaveOutWhatCannotBeLoaded(items);
    if (request.file == standardOutput) {
        writeData(session, configurationText(items));
        return ExitCode::success;
    }
    writeConfigurationFile(request.file, configurationText(items));
    printMessage(fmt::format("torvik: {} settings saved to '{}'\n", items.size(), request.file));
    return ExitCode::success;
}

ExitCode loadConfig(Session& session, const ConnectionOptions& options, const ConfigRequest& request) {
    const auto items = requestedItems(request);
    const Connection connection(options);
    const WriteSummary summary = writeConfiguration(session, connection, items);
    const auto differences = differencesOf(session, connection, items);
    writeData(session, joinedLines(differences));
    for (const std::string& refused : summary.refused)
        printMessage(fmt::format("torvik: {}\n", refused));
    printMessage(fmt::format("torvik: {} of {} settings written, all read back: {} differ\n", summary.written,
                             items.size(), differences.size()));
    if (differences.empty()) {
        printMessage("torvik: 'torvik settings store 0' keeps them over a restart\n");
        return ExitCode::success;
    }
    return ExitCode::differs;
}

ExitCode diffConfig(Session& session, const ConnectionOptions& options, const ConfigRequest& request) {
    const auto items = requestedItems(request);
    const Connection connection(options);
    const auto differences = differencesOf(session, connection, items);
    writeData(session, joinedLines(differences));
    return differences.empty() ? ExitCode::success : ExitCode::differs;
}

using ConfigAction = ExitCode (*)(Session&, const ConnectionOptions&, const ConfigRequest&);

void addConfigVerb(CLI::App& config, CommandLine& commandLine, const std::string& verb, const std::string& description,
                   ConfigAction action) {
    CLI::App* const command = config.add_subcommand(verb, description);
    const auto request = std::make_shared<ConfigRequest>();
    command->add_option("FILE", request->file, "the configuration file (TOML)")->required()->type_name("");
    command->add_flag("--identifiers", request->identifiers, "the CAN settings, too, identifiers among them");
    addConnectionOptions(*command, commandLine.connection);
    command->callback([&commandLine, request, action] {
        commandLine.action = [&commandLine, request, action](Session& session) {
            return action(session, commandLine.connection, *request);
        };
    });
}

}  // namespace

void addConfigCommand(CommandLine& commandLine) {
    CLI::App* const command = commandLine.app.add_subcommand(
        "config", "save what a user sets on the device to a file, load it, or tell what differs");
    command->require_subcommand(1);
    addConfigVerb(*command, commandLine, "save", "save to FILE; '-' is standard output", saveConfig);
    addConfigVerb(*command, commandLine, "load", "write what differs and read everything back", loadConfig);
    addConfigVerb(*command, commandLine, "diff", "tell what the device holds differently", diffConfig);
}

}  // namespace torvik::tool
