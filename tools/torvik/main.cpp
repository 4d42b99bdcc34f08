#include <fmt/format.h>

#include <exception>
#include <sstream>
#include <string>
#include <vector>

#include "TORVIK.h"
#include "command_line.h"
#include "failure.h"

namespace torvik::tool {

namespace {

/// Tells the exit codes below the help of a command and of its verbs.
void addExitCodes(CLI::App& command) {
    command.footer(std::string(exitCodeHelp));
    for (CLI::App* const verb : command.get_subcommands({}))
        addExitCodes(*verb);
}

void setUpParser(CommandLine& commandLine) {
    CLI::App& app = commandLine.app;
    app.description("Operates VARDA amplifiers on a CAN bus through the TORVIK library.");
    app.name("torvik");
    std::uint32_t version = 0;
    TORVIKDllVersion(&version);
    app.set_version_flag(
        "--version", fmt::format("torvik {} (library {}.{})", TORVIK_TOOL_VERSION, version >> 16, version & 0xFFFF));
    app.require_subcommand(1);
    app.allow_windows_style_options(false);  // a path may begin with a slash on every system
    app.get_formatter()->column_width(28);
    addHiddenConnectionOptions(app, commandLine.connection);
    addInfoCommand(commandLine);
    addStreamCommand(commandLine);
    addExplainCommand(commandLine);
    addListCommand(commandLine);
    addShowCommand(commandLine);
    addGetCommand(commandLine);
    addSetCommand(commandLine);
    addZeroCommand(commandLine);
    addUnitsCommand(commandLine);
    addSettingsCommand(commandLine);
    addConfigCommand(commandLine);
    addFilterCommand(commandLine);
    addCalibrationCommand(commandLine);
    addExitCodes(app);
}

/// Help and version go to standard output as data; a wrong use is told on standard error.
ExitCode reportParsing(Session& session, const CLI::App& app, const CLI::ParseError& error) {
    std::ostringstream data;
    std::ostringstream messages;
    const int result = app.exit(error, data, messages);
    if (result == 0) {
        writeData(session, data.str());
        return ExitCode::success;
    }
    // The parser misses a command before it minds one that it does not know.
    const std::vector<std::string> unknown = app.remaining();
    const bool unknownCommand = app.get_subcommands().empty() && !unknown.empty();
    const std::string reason = unknownCommand ? fmt::format("there is no command '{}'", unknown.front()) : error.what();
    printMessage(fmt::format("torvik: {}\n  next:    torvik --help, or torvik COMMAND --help\n", reason));
    return ExitCode::usage;
}

ExitCode parseAndRun(Session& session, int argumentCount, char** arguments) {
    CommandLine commandLine;
    setUpParser(commandLine);
    try {
        commandLine.app.parse(argumentCount, arguments);
    } catch (const CLI::ParseError& error) {
        return reportParsing(session, commandLine.app, error);
    }
    return commandLine.action(session);
}

ExitCode run(int argumentCount, char** arguments) {
    platform::Interruption interruption;
    platform::StandardOutput output;
    Session session{output, interruption};
    try {
        return parseAndRun(session, argumentCount, arguments);
    } catch (const Failure& failure) {
        printMessage(describe(failure));
        return failure.exitCode;
    } catch (const OutputClosed&) {
        return ExitCode::success;
    } catch (const Interrupted&) {
        return ExitCode::interrupted;
    }
}

}  // namespace

}  // namespace torvik::tool

int main(int argumentCount, char** arguments) {
    try {
        return static_cast<int>(torvik::tool::run(argumentCount, arguments));
    } catch (const std::exception& error) {
        torvik::tool::printMessage(fmt::format("torvik: stopped: {}\n", error.what()));
        return static_cast<int>(torvik::tool::ExitCode::deviceFailed);
    }
}
