#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "command_line.h"
#include "parameters/parameter.h"

namespace torvik::tool {

namespace {

std::string accessText(const Parameter& parameter) {
    if (parameter.read == nullptr) return "set";
    return parameter.write == nullptr ? "get" : "get, set";
}

std::string placeColumn(const PlaceRange& range) {
    if (range.single()) return "-";
    if (!range.paired()) return fmt::format("{} {}..{}", range.what, range.first, range.last);
    return fmt::format("{}.{} {}.{}..{}.{}", range.what, range.minorWhat, range.first, range.minorFirst, range.last,
                       range.minorLast);
}

std::string valueColumn(const Parameter& parameter) {
    return parameter.write == nullptr ? "-" : allowedValues(parameter.kind, parameter.limits);
}

std::string parameterList() {
    std::string list;
    const auto line = [&list](auto name, auto access, auto place, auto values, auto unit, auto text, auto more) {
        fmt::format_to(std::back_inserter(list), "{:<23}{:<10}{:<31}{:<41}{:<19}{}{}\n", name, access, place, values,
                       unit, text, more);
    };
    line("name", "access", "place", "values", "unit", "what it is", "");
    for (const Parameter* const parameter : allParameters()) {
        line(parameter->name, accessText(*parameter), placeColumn(parameter->places), valueColumn(*parameter),
             parameter->unit.empty() ? "-" : parameter->unit, parameter->text,
             parameter->restarts ? " (setting restarts the device)" : "");
    }
    return list;
}

}  // namespace

void addListCommand(CommandLine& commandLine) {
    CLI::App* const command = commandLine.app.add_subcommand(
        "list", "list the parameters that get and set know: name, place, values, unit, meaning");
    command->callback([&commandLine] {
        commandLine.action = [](Session& session) {
            writeData(session, parameterList());
            return ExitCode::success;
        };
    });
}

}  // namespace torvik::tool
