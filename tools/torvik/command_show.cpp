#include <memory>
#include <vector>

#include "command_line.h"
#include "connection.h"
#include "parameters/device_parameters.h"
#include "show_page.h"

namespace torvik::tool {

namespace {

std::vector<ParameterReading> readEverything(Session& session, const Connection& connection) {
    std::vector<ParameterReading> readings;
    for (const Parameter* const parameter : allParameters()) {
        if (session.interruption.requested()) throw Interrupted{};
        if (parameter->read == nullptr || !parameter->shown) continue;
        readings.push_back(readPlaces(connection, *parameter, placesOf(parameter->places, channelsOf(connection))));
    }
    return readings;
}

ExitCode runShow(Session& session, const ConnectionOptions& options, bool json) {
    const Connection connection(options);
    const auto readings = readEverything(session, connection);
    writeData(session, json ? showJson(readings) : showPage(readings, channelsOf(connection)));
    return ExitCode::success;
}

}  // namespace

void addShowCommand(CommandLine& commandLine) {
    CLI::App* const command = commandLine.app.add_subcommand("show", "tell everything that the device tells");
    const auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "as JSON");
    addConnectionOptions(*command, commandLine.connection);
    command->callback([&commandLine, json] {
        commandLine.action = [&commandLine, json](Session& session) {
            return runShow(session, commandLine.connection, *json);
        };
    });
}

}  // namespace torvik::tool
