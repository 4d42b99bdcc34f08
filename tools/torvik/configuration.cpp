#include "configuration.h"

#include <fmt/format.h>

#include <array>

#include "parameters/device_parameters.h"

namespace torvik::tool {

namespace {

/// A restart may bring back what was stored, and so undo what was only set: the restarting ones come first.
enum class WritePass : std::uint8_t { restarting, others, identifiers };

WritePass passOf(const Parameter& parameter) {
    if (parameter.inConfiguration == InConfiguration::onRequest) return WritePass::identifiers;
    return parameter.restarts ? WritePass::restarting : WritePass::others;
}

PlaceReading readItem(Session& session, const Connection& connection, const ConfigurationItem& item) {
    if (session.interruption.requested()) throw Interrupted{};
    return readPlace(connection, *item.parameter, item.place);
}

bool isHeld(const ConfigurationItem& item, const PlaceReading& reading) {
    return reading.value && sameValue(item.parameter->kind, item.value, *reading.value);
}

void writeItem(const Connection& connection, const ConfigurationItem& item, WriteSummary& summary) {
    const auto refusal = writePlace(connection, *item.parameter, item.place, item.value);
    if (!refusal) {
        ++summary.written;
        return;
    }
    summary.refused.push_back(
        fmt::format("{} cannot be set to {}: {} (code {}, 0x{:X})", describePlace(*item.parameter, item.place),
                    shownText(item.parameter->kind, item.value), refusal->text, refusal->code, refusal->code));
}

}  // namespace

std::vector<ConfigurationItem> readConfiguration(Session& session, const Connection& connection, bool identifiers) {
    std::vector<ConfigurationItem> items;
    for (const Parameter* const parameter : allParameters()) {
        const InConfiguration in = parameter->inConfiguration;
        if (in == InConfiguration::no || (in == InConfiguration::onRequest && !identifiers)) continue;
        if (session.interruption.requested()) throw Interrupted{};
        const auto places = placesOf(parameter->places, channelsOf(connection));
        for (const PlaceReading& reading : readPlaces(connection, *parameter, places).places) {
            if (reading.value) items.push_back({parameter, reading.place, *reading.value});
        }
    }
    return items;
}

WriteSummary writeConfiguration(Session& session, const Connection& connection,
                                std::span<const ConfigurationItem> items) {
    WriteSummary summary;
    for (const WritePass pass : {WritePass::restarting, WritePass::others, WritePass::identifiers}) {
        for (const ConfigurationItem& item : items) {
            if (passOf(*item.parameter) != pass || isHeld(item, readItem(session, connection, item))) continue;
            writeItem(connection, item, summary);
        }
    }
    return summary;
}

std::vector<std::string> differencesOf(Session& session, const Connection& connection,
                                       std::span<const ConfigurationItem> items) {
    std::vector<std::string> differences;
    for (const ConfigurationItem& item : items) {
        const PlaceReading reading = readItem(session, connection, item);
        if (isHeld(item, reading)) continue;
        const std::string held = reading.value
                                     ? fmt::format("{} in the device", shownText(item.parameter->kind, *reading.value))
                                     : std::string("not told by the device");
        differences.push_back(fmt::format("{}: {} in the file, {}", describePlace(*item.parameter, item.place),
                                          shownText(item.parameter->kind, item.value), held));
    }
    return differences;
}

}  // namespace torvik::tool
