#include <fmt/format.h>

#include <iterator>
#include <memory>
#include <string>

#include "command_line.h"
#include "connection.h"
#include "parameters/device_parameters.h"
#include "parameters/unit_names.h"
#include "params/unit_table.h"

namespace torvik::tool {

namespace {

/// A unit that is a blank is seen as one.
std::string visible(std::string_view text) {
    return text == " " ? "' '" : std::string(text);
}

std::string unitTable() {
    std::string table = fmt::format("{:<8}{:<8}{}\n", "number", "unit", "in ASCII");
    const auto line = [&table](std::uint32_t unitNo, std::string_view ascii) {
        fmt::format_to(std::back_inserter(table), "{:<8}{:<8}{}\n", unitNo, visible(unitName(unitNo)), visible(ascii));
    };
    for (std::uint32_t unitNo = 0; unitNo < unitCount; ++unitNo)
        line(unitNo, unitText(unitNo, charset::ascii).value());
    line(userUnit2, unitName(userUnit2));
    line(userUnit1, unitName(userUnit1));
    return table;
}

std::string channelUnits(const Connection& connection) {
    std::string lines;
    for (const std::string_view name : {"unit", "user-text"}) {
        const Parameter& parameter = *findParameter(name);
        const auto places = placesOf(parameter.places, channelsOf(connection));
        for (const PlaceReading& reading : readPlaces(connection, parameter, places).places) {
            if (!reading.value) continue;
            fmt::format_to(std::back_inserter(lines), "{} {} {}\n",
                           parameter.places.channels() ? "channel" : parameter.name, reading.place.major,
                           visible(shownText(parameter.kind, *reading.value)));
        }
    }
    return lines;
}

ExitCode runUnits(Session& session, const ConnectionOptions& options, bool channels) {
    writeData(session, channels ? channelUnits(Connection(options)) : unitTable());
    return ExitCode::success;
}

}  // namespace

void addUnitsCommand(CommandLine& commandLine) {
    CLI::App* const command = commandLine.app.add_subcommand(
        "units", "list the units that a channel can have, or tell those that the channels have");
    const auto channels = std::make_shared<bool>(false);
    command->add_flag("--channels", *channels, "the units of the device's channels, and its user texts");
    addConnectionOptions(*command, commandLine.connection);
    command->callback([&commandLine, channels] {
        commandLine.action = [&commandLine, channels](Session& session) {
            return runUnits(session, commandLine.connection, *channels);
        };
    });
}

}  // namespace torvik::tool
