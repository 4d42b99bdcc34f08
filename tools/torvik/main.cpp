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

/// The parser takes whatever begins with a minus and no digit for an option.
std::string unknownOptionText(const std::string& word) {
    const bool begunWithPoint = word.size() > 1 && word[1] == '.';
    return begunWithPoint ? fmt::format("'{}' is no number: one below 0 has a digit behind its minus, as -0.5", word)
                          : fmt::format("there is no option '{}' here", word);
}

/// The parser misses a command or a word before it minds one that it does not know.
std::string wrongUseText(const CLI::App& app, const CLI::ParseError& error) {
    const int kind = error.get_exit_code();
    if (kind != static_cast<int>(CLI::ExitCodes::ExtrasError) &&
        kind != static_cast<int>(CLI::ExitCodes::RequiredError))
        return error.what();
    const CLI::App* command = &app;
    while (!command->get_subcommands().empty())
        command = command->get_subcommands().front();
    const std::vector<std::string> unknown = app.remaining(true);
    if (unknown.empty()) return error.what();
    if (unknown.front().starts_with('-')) return unknownOptionText(unknown.front());
    if (command->get_require_subcommand_min() > 0) return fmt::format("there is no command '{}'", unknown.front());
    return fmt::format("'{}' is one word too many", unknown.front());
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
    printMessage(
        fmt::format("torvik: {}\n  next:    torvik --help, or torvik COMMAND --help\n", wrongUseText(app, error)));
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
