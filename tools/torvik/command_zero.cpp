#include <fmt/format.h>

#include <iterator>
#include <memory>
#include <string>

#include "TORVIK.h"
#include "command_line.h"
#include "connection.h"
#include "number_option.h"
#include "parameters/device_parameters.h"

namespace torvik::tool {

namespace {

constexpr std::uint32_t zeroOfAll = 0;

/// Tells the zero signals that the device took.
ExitCode runZero(Session& session, const ConnectionOptions& options, std::uint32_t channel) {
    const Parameter& zeroSignal = *findParameter("zero-signal");
    const Connection connection(options);
    if (TORVIKsetZero(connection.deviceNo(), channel) != 0) {
        connection.fail(ExitCode::deviceFailed, channel == zeroOfAll
                                                    ? "making the present values zero"
                                                    : fmt::format("making channel {}'s present value zero", channel));
    }
    const auto places =
        channel == zeroOfAll ? placesOf(zeroSignal.places, channelsOf(connection)) : std::vector<Place>{{channel, 0}};
    std::string lines;
    for (const PlaceReading& reading : readPlaces(connection, zeroSignal, places).places) {
        if (!reading.value) continue;
        fmt::format_to(std::back_inserter(lines), "channel {} zero-signal {} counts\n", reading.place.major,
                       valueText(zeroSignal.kind, *reading.value));
    }
    writeData(session, lines);
    return ExitCode::success;
}

}  // namespace

void addZeroCommand(CommandLine& commandLine) {
    CLI::App* const command =
        commandLine.app.add_subcommand("zero", "make the present values zero, of one channel or of all");
    const auto channel = std::make_shared<std::uint32_t>(zeroOfAll);
    addNumberOption(*command, "CHANNEL", *channel, {1, mostChannels}, "the channel, 1..8; none: all of them")
        ->type_name("");
    addConnectionOptions(*command, commandLine.connection);
    command->callback([&commandLine, channel] {
        commandLine.action = [&commandLine, channel](Session& session) {
            return runZero(session, commandLine.connection, *channel);
        };
    });
}

}  // namespace torvik::tool
