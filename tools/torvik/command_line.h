#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string_view>

#include "connection_options.h"
#include "exit_code.h"
#include "platform/interruption.h"
#include "platform/standard_output.h"

namespace torvik::tool {

/// Thrown when the reader of the output has gone: the command ends, and that is no failure.
struct OutputClosed {};

/// Thrown when the end was requested while a command could not go on otherwise.
struct Interrupted {};

/// What a running command works with.
struct Session {
    platform::StandardOutput& output;
    platform::Interruption& interruption;
};

/// Writes lines of data to standard output, with what would control a terminal made visible. Throws OutputClosed,
/// Interrupted, or Failure when they cannot be written.
void writeData(Session& session, std::string_view lines);

/// The same with the bytes as they are.
void writeBytes(Session& session, std::string_view bytes);

/// The parser, and what the chosen command does once the whole line has been understood.
struct CommandLine {
    CLI::App app;
    ConnectionOptions connection;  ///< options common to all commands that open a device
    std::function<ExitCode(Session&)> action;
};

// Every command is one file that adds itself.
void addInfoCommand(CommandLine& commandLine);
void addStreamCommand(CommandLine& commandLine);
void addExplainCommand(CommandLine& commandLine);
void addListCommand(CommandLine& commandLine);
void addShowCommand(CommandLine& commandLine);
void addGetCommand(CommandLine& commandLine);
void addSetCommand(CommandLine& commandLine);
void addZeroCommand(CommandLine& commandLine);
void addUnitsCommand(CommandLine& commandLine);
void addSettingsCommand(CommandLine& commandLine);
void addConfigCommand(CommandLine& commandLine);
void addFilterCommand(CommandLine& commandLine);
void addCalibrationCommand(CommandLine& commandLine);

}  // namespace torvik::tool
