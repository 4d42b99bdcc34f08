#include <fmt/format.h>

#include <cmath>
#include <iterator>
#include <optional>

#include "json_text.h"
#include "show_page.h"

namespace torvik::tool {

namespace {

/// Words are plain numbers here; numbers that JSON has no form for are texts.
std::string jsonValue(ValueKind kind, const Value& value) {
    if (const auto* const text = std::get_if<std::string>(&value)) return quotedJson(*text);
    if (const auto* const whole = std::get_if<std::int64_t>(&value)) return fmt::format("{}", *whole);
    const std::string number = valueText(kind, value);
    return std::isfinite(std::get<double>(value)) ? number : quotedJson(number);
}

std::string jsonOfPlace(const Parameter& parameter, const PlaceReading& reading) {
    if (reading.value) return fmt::format("\"value\": {}", jsonValue(parameter.kind, *reading.value));
    if (!reading.refusal) return "\"value\": null";
    return fmt::format("\"error\": {{\"code\": {}, \"text\": {}}}", reading.refusal->code,
                       quotedJson(reading.refusal->text));
}

std::string jsonOfPlaces(const ParameterReading& reading) {
    std::string values;
    for (const PlaceReading& place : reading.places) {
        if (!place.value && !place.refusal) continue;
        fmt::format_to(std::back_inserter(values), "{}\"{}\": {{{}}}", values.empty() ? "" : ", ",
                       placeText(reading.parameter->places, place.place), jsonOfPlace(*reading.parameter, place));
    }
    return fmt::format("\"places\": {{{}}}", values);
}

std::string jsonOfParameter(const ParameterReading& reading) {
    const Parameter& parameter = *reading.parameter;
    std::string members;
    if (!parameter.unit.empty()) members = fmt::format("\"unit\": {}, ", quotedJson(parameter.unit));
    members += parameter.places.single() ? jsonOfPlace(parameter, reading.places.front()) : jsonOfPlaces(reading);
    return fmt::format("    {}: {{{}}}", quotedJson(parameter.name), members);
}

}  // namespace

std::string showJson(std::span<const ParameterReading> readings) {
    std::string json = "{";
    std::optional<Group> group;
    for (const ParameterReading& reading : readings) {
        if (group != reading.parameter->group) {
            fmt::format_to(std::back_inserter(json), "{}\n  {}: {{\n", group ? "\n  }," : "",
                           quotedJson(groupName(reading.parameter->group)));
            group = reading.parameter->group;
        } else {
            json += ",\n";
        }
        json += jsonOfParameter(reading);
    }
    return json + (group ? "\n  }\n}\n" : "}\n");
}

}  // namespace torvik::tool
