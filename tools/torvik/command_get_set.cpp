#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "command_line.h"
#include "connection.h"
#include "parameters/device_parameters.h"

namespace torvik::tool {

namespace {

constexpr std::string_view allChannels = "all";
constexpr Place everyChannelAtOnce{};

[[noreturn]] void failUsage(std::string tried, std::string reason, std::string advice) {
    throw Failure{.exitCode = ExitCode::usage,
                  .tried = std::move(tried),
                  .reason = std::move(reason),
                  .advice = std::move(advice)};
}

const Parameter& parameterNamed(std::string_view verb, const std::string& name) {
    if (const Parameter* const parameter = findParameter(name)) return *parameter;
    const auto similar = similarNames(name);
    failUsage(fmt::format("{} '{}'", verb, name), "there is no parameter of this name",
              similar.empty() ? "'torvik list' names them all"
                              : fmt::format("'torvik list' names them all; like it: {}", fmt::join(similar, ", ")));
}

Place placeNamed(std::string_view verb, const Parameter& parameter, const std::string& text, std::string_view more) {
    if (const auto place = parsePlace(parameter.places, text)) return *place;
    failUsage(fmt::format("{} {}", verb, parameter.name), fmt::format("'{}' is not one of its places", text),
              fmt::format("give {}{}", allowedPlaces(parameter.places), more));
}

struct GetRequest {
    std::string name;
    std::string place;
};

std::string linesOf(const ParameterReading& reading) {
    std::string lines;
    for (const PlaceReading& place : reading.places) {
        if (!place.value) continue;
        fmt::format_to(std::back_inserter(lines), "{} {}\n", placeText(reading.parameter->places, place.place),
                       shownText(reading.parameter->kind, *place.value));
    }
    return lines;
}

[[noreturn]] void failReading(const Parameter& parameter, const PlaceReading& reading) {
    const std::string tried = fmt::format("reading {}", describePlace(parameter, reading.place));
    if (reading.refusal) throw refusalFailure(tried, *reading.refusal);
    throw Failure{.exitCode = ExitCode::deviceFailed,
                  .tried = tried,
                  .reason = "the device keeps no value there",
                  .advice = fmt::format("'torvik get {}' tells all that there are", parameter.name)};
}

void getOne(Session& session, const Connection& connection, const Parameter& parameter, Place place) {
    const PlaceReading reading = readPlace(connection, parameter, place);
    if (!reading.value) failReading(parameter, reading);
    writeData(session, shownText(parameter.kind, *reading.value) + "\n");
}

/// Those that the device refuses are told on standard error; that it refuses all is a failure.
void getAll(Session& session, const Connection& connection, const Parameter& parameter) {
    const ParameterReading reading =
        readPlaces(connection, parameter, placesOf(parameter.places, channelsOf(connection)));
    const std::string lines = linesOf(reading);
    if (lines.empty() && !reading.places.empty()) failReading(parameter, reading.places.front());
    for (const PlaceReading& place : reading.places) {
        if (!place.refusal) continue;
        printMessage(fmt::format("torvik: {} is not told: {} (code {}, 0x{:X})\n",
                                 describePlace(parameter, place.place), place.refusal->text, place.refusal->code,
                                 place.refusal->code));
    }
    writeData(session, lines);
}

std::string_view orAll(const Parameter& parameter) {
    return parameter.places.oneForEachChannel() ? ", or 'all'" : "";
}

/// How the parameter is set: "torvik set mode VALUE".
std::string usageOfSet(const Parameter& parameter) {
    if (parameter.places.single()) return fmt::format("torvik set {} VALUE", parameter.name);
    return fmt::format("torvik set {} PLACE VALUE, where the place is {}{}", parameter.name,
                       allowedPlaces(parameter.places), orAll(parameter));
}

ExitCode runGet(Session& session, const ConnectionOptions& options, const GetRequest& request) {
    const Parameter& parameter = parameterNamed("reading", request.name);
    if (parameter.read == nullptr) {
        failUsage(fmt::format("reading {}", request.name), "it can only be written",
                  fmt::format("to write it: {}", usageOfSet(parameter)));
    }
    const bool all = request.place.empty() && !parameter.places.single();
    if (!request.place.empty() && parameter.places.single()) {
        failUsage(fmt::format("reading {}", request.name), "it has no channels or places",
                  fmt::format("torvik get {}", request.name));
    }
    const Place place = all || parameter.places.single()
                            ? Place{}
                            : placeNamed("reading", parameter, request.place, ", or leave it out: all of them");
    const Connection connection(options);
    if (all) {
        getAll(session, connection, parameter);
    } else {
        getOne(session, connection, parameter, place);
    }
    return ExitCode::success;
}

struct SetRequest {
    const Parameter* parameter;
    Place place;
    Value value;
};

void checkWordCount(const Parameter& parameter, std::size_t count) {
    const bool single = parameter.places.single();
    if (count == (single ? 2U : 3U)) return;
    failUsage(fmt::format("setting {}", parameter.name),
              single ? "it takes a value and no place" : "it takes a place and a value", usageOfSet(parameter));
}

Place placeToSet(const Parameter& parameter, const std::string& text) {
    if (parameter.places.single()) return {};
    if (parameter.places.oneForEachChannel() && text == allChannels) return everyChannelAtOnce;
    return placeNamed("setting", parameter, text, orAll(parameter));
}

SetRequest parseSet(const std::vector<std::string>& words) {
    const Parameter& parameter = parameterNamed("setting", words.front());
    const std::string tried = fmt::format("setting {}", parameter.name);
    if (parameter.write == nullptr) {
        failUsage(tried, "it can only be read", fmt::format("torvik get {}", parameter.name));
    }
    checkWordCount(parameter, words.size());
    const Place place = placeToSet(parameter, words[1]);
    const auto value = parseValue(parameter.kind, parameter.limits, words.back());
    if (!value) {
        failUsage(tried, fmt::format("'{}' is no value for it", words.back()),
                  fmt::format("give {}", allowedValues(parameter.kind, parameter.limits)));
    }
    return {&parameter, place, *value};
}

/// A place that cannot be read is told; one that reads differently is a failure.
void verifySet(const Connection& connection, const SetRequest& request) {
    const Parameter& parameter = *request.parameter;
    const bool all = parameter.places.oneForEachChannel() && request.place == everyChannelAtOnce;
    const auto places = all ? placesOf(parameter.places, channelsOf(connection)) : std::vector<Place>{request.place};
    for (const PlaceReading& reading : readPlaces(connection, parameter, places).places) {
        if (!reading.value) {
            printMessage(
                fmt::format("torvik: {} was set, but cannot be read back\n", describePlace(parameter, reading.place)));
        } else if (!sameValue(parameter.kind, request.value, *reading.value)) {
            throw Failure{.exitCode = ExitCode::differs,
                          .tried = fmt::format("setting {} to {}", describePlace(parameter, reading.place),
                                               shownText(parameter.kind, request.value)),
                          .reason = fmt::format("the device took it, but now tells {}",
                                                shownText(parameter.kind, *reading.value)),
                          .advice = "give a value that the device can keep, see its manual"};
        }
    }
}

ExitCode runSet(const ConnectionOptions& options, const std::vector<std::string>& words) {
    const SetRequest request = parseSet(words);
    const Connection connection(options);
    if (const auto refusal = writePlace(connection, *request.parameter, request.place, request.value)) {
        throw refusalFailure(fmt::format("setting {} to {}", describePlace(*request.parameter, request.place),
                                         shownText(request.parameter->kind, request.value)),
                             *refusal);
    }
    if (request.parameter->read != nullptr) verifySet(connection, request);
    return ExitCode::success;
}

/// The parser takes the words of `set` together, because the place is the one in the middle that may be missing.
class SetHelp : public CLI::Formatter {
  public:
    std::string make_option_usage(const CLI::Option* /*words*/) const override { return "PARAMETER [PLACE] VALUE"; }

    std::string make_positionals(const CLI::App* /*command*/) const override {
        std::ostringstream help;
        help << "\n" << get_label("Positionals") << ":\n";
        const auto line = [&](const std::string& word, const std::string& meaning) {
            CLI::detail::format_help(help, word, meaning, get_column_width());
        };
        line("PARAMETER REQUIRED", "the parameter: 'torvik list' names them");
        line("PLACE", "the channel, index or pair; or 'all' channels; none where 'torvik list' tells no place");
        line("VALUE REQUIRED", "what it is set to: 'torvik list' tells what may be written");
        return help.str();
    }
};

}  // namespace

void addGetCommand(CommandLine& commandLine) {
    CLI::App* const command =
        commandLine.app.add_subcommand("get", "read one of the parameters that 'torvik list' names");
    const auto request = std::make_shared<GetRequest>();
    command->add_option("PARAMETER", request->name, "the parameter: 'torvik list' names them")
        ->required()
        ->type_name("");
    command->add_option("PLACE", request->place, "the channel, index or pair; none: all of them")->type_name("");
    addConnectionOptions(*command, commandLine.connection);
    command->callback([&commandLine, request] {
        commandLine.action = [&commandLine, request](Session& session) {
            return runGet(session, commandLine.connection, *request);
        };
    });
}

void addSetCommand(CommandLine& commandLine) {
    CLI::App* const command =
        commandLine.app.add_subcommand("set", "write one of the parameters that 'torvik list' names, and read it back");
    const auto words = std::make_shared<std::vector<std::string>>();
    const auto help = std::make_shared<SetHelp>();
    help->column_width(command->get_formatter()->get_column_width());
    command->formatter(help);
    command->add_option("PARAMETER", *words)->required()->type_name("");
    addConnectionOptions(*command, commandLine.connection);
    command->callback([&commandLine, words] {
        commandLine.action = [&commandLine, words](Session&) { return runSet(commandLine.connection, *words); };
    });
}

}  // namespace torvik::tool
