#include "command_calibration.h"

#include <fmt/format.h>

#include <memory>
#include <optional>
#include <string>

#include "calibration/calibration_differences.h"
#include "calibration/calibration_page.h"
#include "calibration/device_calibration.h"
#include "connection.h"
#include "number_option.h"

namespace torvik::tool {

namespace {

constexpr std::uint32_t slotOfDevice = ~std::uint32_t{0};

struct CalibrationRequest {
    std::string file;
    std::uint32_t slot = slotOfDevice;
    bool json = false;
};

DeviceCalibration readRequested(const Connection& connection, std::uint32_t slot) {
    return readDeviceCalibration(connection, slot == slotOfDevice ? presentSlot(connection) : slot);
}

ExitCode runCheck(Session& session, const std::string& file) {
    const CheckedFile checked = checkFile(file);
    writeData(session, checkPage(checked.report));
    return problemLines(checked.report).empty() ? ExitCode::success : ExitCode::fileProblems;
}

ExitCode runShow(Session& session, const CalibrationRequest& request, const ConnectionOptions& options) {
    const Connection connection(options);
    const DeviceCalibration calibration = readRequested(connection, request.slot);
    writeData(session, request.json ? calibrationJson(calibration) : calibrationPage(calibration));
    return ExitCode::success;
}

ExitCode runCompare(Session& session, const CalibrationRequest& request, const ConnectionOptions& options) {
    const CalibrationFile file = usableCalibration(request.file, fmt::format("comparing '{}'", request.file));
    const Connection connection(options);
    const auto differences = calibrationDifferences(file, readRequested(connection, request.slot));
    std::string lines;
    for (const std::string& difference : differences)
        lines += difference + "\n";
    writeData(session, lines);
    return differences.empty() ? ExitCode::success : ExitCode::differs;
}

void addSlotOption(CLI::App& command, CalibrationRequest& request) {
    addNumberOption(command, "--slot", request.slot, {0, lastCalibrationSlot},
                    "the slot, 0..127; without it the one that the device uses")
        ->type_name("N");
}

void addFile(CLI::App& command, std::string& file) {
    command.add_option("FILE", file, "the calibration file; its matrix files stand beside it")
        ->required()
        ->type_name("");
}

void addCheckVerb(CLI::App& calibration, CommandLine& commandLine) {
    CLI::App* const command = calibration.add_subcommand(
        "check", "read a calibration file without a device: every value, every default, every problem with its line");
    const auto file = std::make_shared<std::string>();
    addFile(*command, *file);
    command->callback(
        [&commandLine, file] { commandLine.action = [file](Session& session) { return runCheck(session, *file); }; });
}

void addShowVerb(CLI::App& calibration, CommandLine& commandLine) {
    CLI::App* const command = calibration.add_subcommand("show", "tell a calibration that the device keeps");
    const auto request = std::make_shared<CalibrationRequest>();
    addSlotOption(*command, *request);
    command->add_flag("--json", request->json, "as JSON");
    addConnectionOptions(*command, commandLine.connection);
    command->callback([&commandLine, request] {
        commandLine.action = [&commandLine, request](Session& session) {
            return runShow(session, *request, commandLine.connection);
        };
    });
}

void addCompareVerb(CLI::App& calibration, CommandLine& commandLine) {
    CLI::App* const command =
        calibration.add_subcommand("compare", "tell what the device keeps otherwise than the calibration file says");
    const auto request = std::make_shared<CalibrationRequest>();
    addFile(*command, request->file);
    addSlotOption(*command, *request);
    addConnectionOptions(*command, commandLine.connection);
    command->callback([&commandLine, request] {
        commandLine.action = [&commandLine, request](Session& session) {
            return runCompare(session, *request, commandLine.connection);
        };
    });
}

}  // namespace

CalibrationFile usableCalibration(const std::string& path, const std::string& tried) {
    const CheckedFile checked = checkFile(path);
    std::string problems;
    for (const std::string& problem : problemLines(checked.report))
        problems += (problems.empty() ? "" : "\n           ") + problem;
    if (problems.empty()) return checked.calibration;
    throw Failure{
        .exitCode = ExitCode::fileProblems,
        .tried = tried,
        .reason = problems,
        .advice = fmt::format("correct the file; 'torvik calibration check {}' tells all that is read", path)};
}

void addCalibrationCommand(CommandLine& commandLine) {
    CLI::App* const command = commandLine.app.add_subcommand(
        "calibration", "load the calibration of a six-axis sensor, show, compare and check it");
    command->require_subcommand(1);
    addCalibrationLoadVerb(*command, commandLine);
    addShowVerb(*command, commandLine);
    addCompareVerb(*command, commandLine);
    addCheckVerb(*command, commandLine);
}

}  // namespace torvik::tool
