#include "parameters/parameter.h"

#include <fmt/format.h>

#include <algorithm>

#include "number_text.h"

namespace torvik::tool {

namespace {

std::vector<const Parameter*> collectParameters() {
    std::vector<const Parameter*> all;
    for (const auto& family : {identityParameters(), inputParameters(), scalingParameters(), unitParameters(),
                               outputParameters(), rateParameters(), canParameters()}) {
        for (const Parameter& parameter : family)
            all.push_back(&parameter);
    }
    return all;
}

std::vector<std::string_view> words(std::string_view name) {
    std::vector<std::string_view> found;
    while (!name.empty()) {
        const std::size_t end = std::min(name.find_first_of("-_ "), name.size());
        if (end > 0) found.push_back(name.substr(0, end));
        name.remove_prefix(std::min(end + 1, name.size()));
    }
    return found;
}

bool isIn(std::optional<std::uint32_t> number, std::uint32_t first, std::uint32_t last) {
    return number && *number >= first && *number <= last;
}

}  // namespace

std::span<const Parameter* const> allParameters() {
    static const std::vector<const Parameter*> all = collectParameters();
    return all;
}

const Parameter* findParameter(std::string_view name) {
    const auto all = allParameters();
    const auto found = std::ranges::find(all, name, &Parameter::name);
    return found == all.end() ? nullptr : *found;
}

std::vector<std::string_view> similarNames(std::string_view name) {
    const std::vector<std::string_view> asked = words(name);
    std::vector<std::string_view> similar;
    for (const Parameter* const parameter : allParameters()) {
        const bool alike = std::ranges::any_of(asked, [parameter](std::string_view word) {
            constexpr std::size_t shortestWord = 3;
            return word.size() >= shortestWord && parameter->name.find(word) != std::string_view::npos;
        });
        if (alike) similar.push_back(parameter->name);
    }
    return similar;
}

std::string_view groupName(Group group) {
    switch (group) {
        case Group::identity:
            return "identity";
        case Group::mode:
            return "mode";
        case Group::input:
            return "input";
        case Group::scaling:
            return "scaling";
        case Group::unit:
            return "unit";
        case Group::output:
            return "output";
        case Group::rate:
            return "rate";
        case Group::can:
            return "can";
    }
    return "";
}

std::string placeText(const PlaceRange& range, Place place) {
    if (range.single()) return {};
    return range.paired() ? fmt::format("{}.{}", place.major, place.minor) : fmt::format("{}", place.major);
}

std::optional<Place> parsePlace(const PlaceRange& range, std::string_view text) {
    std::optional<std::uint32_t> minor = 0U;
    if (range.paired()) {
        const std::size_t point = text.find('.');
        if (point == std::string_view::npos) return std::nullopt;
        minor = parseNumber(text.substr(point + 1));
        text = text.substr(0, point);
    }
    const auto major = parseNumber(text);
    if (!isIn(major, range.first, range.last) || !isIn(minor, range.minorFirst, range.minorLast)) return std::nullopt;
    return Place{*major, *minor};
}

std::vector<Place> placesOf(const PlaceRange& range, std::uint32_t channels) {
    const std::uint32_t last = range.channels() ? std::min(channels, range.lastShown) : range.lastShown;
    std::vector<Place> places;
    for (std::uint32_t major = range.first; major <= last; ++major) {
        for (std::uint32_t minor = range.minorFirst; minor <= range.minorLast; ++minor)
            places.push_back({major, minor});
    }
    return places;
}

std::string describePlace(const Parameter& parameter, Place place) {
    const PlaceRange& range = parameter.places;
    if (range.single()) return std::string(parameter.name);
    if (!range.paired()) return fmt::format("{} of {} {}", parameter.name, range.what, place.major);
    return fmt::format("{} of {} {}, {} {}", parameter.name, range.what, place.major, range.minorWhat, place.minor);
}

std::string allowedPlaces(const PlaceRange& range) {
    if (range.single()) return {};
    std::string majors = fmt::format("{} {}..{}", range.what, range.first, range.last);
    if (!range.paired()) return majors;
    return fmt::format("{}, a point and {} {}..{}", majors, range.minorWhat, range.minorFirst, range.minorLast);
}

}  // namespace torvik::tool
