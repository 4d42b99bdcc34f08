// Input types, measuring ranges, sensitivity, factory calibration.
#include <fmt/format.h>

#include <array>
#include <cmath>
#include <iterator>

#include "TORVIK.h"
#include "parameters/library_call.h"

namespace torvik::tool {

namespace {

/// Ranges of this type are told in thousandths of the number that has to be written.
constexpr std::uint32_t typeInThousandths = 3;
constexpr double thousand = 1000;

constexpr std::uint32_t presentEntry = 0;
constexpr std::uint32_t writableEntries = 5;
constexpr Limits rangeLimits{0, 21474836.47};
constexpr PlaceRange offeredEntry{.what = "channel",
                                  .first = 1,
                                  .last = mostChannels,
                                  .lastShown = mostChannels,
                                  .minorWhat = "entry",
                                  .minorFirst = 1,
                                  .minorLast = writableEntries};
constexpr PlaceRange calibrationPlace{
    .what = "index", .first = 0, .last = 48, .lastShown = 48, .minorWhat = "channel", .minorFirst = 0, .minorLast = 7};

struct TypeAndRange {
    std::uint32_t type = 0;
    double range = 0;
};

struct OfferedRanges {
    std::uint32_t count = 0;
    std::array<std::uint32_t, 10> types{};
    std::array<double, 10> ranges{};
};

TypeAndRange readPresentInput(std::int32_t deviceNo, std::uint32_t channel) {
    TypeAndRange present;
    callLibrary(deviceNo, [&] { return TORVIKgetInTypeRange(deviceNo, channel, &present.type, &present.range); });
    return present;
}

/// The status with which the device ends its list stays as the last error: it is taken away.
OfferedRanges readOfferedRanges(std::int32_t deviceNo, std::uint32_t channel) {
    OfferedRanges offered;
    callLibrary(deviceNo, [&] {
        return TORVIKgetAllInTypesRanges(deviceNo, channel, &offered.count, offered.types.data(),
                                         offered.ranges.data());
    });
    takeLastError(static_cast<std::uint32_t>(deviceNo));
    return offered;
}

double writtenRange(std::uint32_t type, const Value& value) {
    const double range = std::get<double>(value);
    return type == typeInThousandths ? range * thousand : range;
}

std::optional<Value> readInputType(std::int32_t deviceNo, Place place) {
    return Value(std::int64_t{readPresentInput(deviceNo, place.major).type});
}

WriteResult writeInputType(std::int32_t deviceNo, Place place, const Value& value) {
    return callWithRestart(deviceNo,
                           [&] { return TORVIKsetInType(deviceNo, place.major, wholeOf<std::uint8_t>(value)); });
}

std::optional<Value> readMeasuringRange(std::int32_t deviceNo, Place place) {
    return Value(readPresentInput(deviceNo, place.major).range);
}

/// For all channels at once the type of the first one counts.
WriteResult writeMeasuringRange(std::int32_t deviceNo, Place place, const Value& value) {
    const double range = writtenRange(readPresentInput(deviceNo, place.major == 0 ? 1 : place.major).type, value);
    return callWithRestart(deviceNo,
                           [&] { return TORVIKFABwriteInputRange(deviceNo, place.major, presentEntry, range); });
}

std::optional<Value> readOfferedList(std::int32_t deviceNo, Place place) {
    const OfferedRanges offered = readOfferedRanges(deviceNo, place.major);
    std::string text;
    for (std::size_t entry = 0; entry < offered.count; ++entry) {
        fmt::format_to(std::back_inserter(text), "{}{}:{}", text.empty() ? "" : " ", offered.types.at(entry),
                       valueText(ValueKind::real, Value(offered.ranges.at(entry))));
    }
    return Value(text);
}

std::optional<Value> readOfferedRange(std::int32_t deviceNo, Place place) {
    const OfferedRanges offered = readOfferedRanges(deviceNo, place.major);
    if (place.minor > offered.count) return std::nullopt;
    return Value(offered.ranges.at(place.minor - 1));
}

WriteResult writeOfferedRange(std::int32_t deviceNo, Place place, const Value& value) {
    const OfferedRanges offered = readOfferedRanges(deviceNo, place.major);
    const std::uint32_t type = place.minor <= offered.count ? offered.types.at(place.minor - 1) : 0;
    const double range = writtenRange(type, value);
    return callWithRestart(deviceNo,
                           [&] { return TORVIKFABwriteInputRange(deviceNo, place.major, place.minor, range); });
}

/// The export's result is the input type.
std::optional<Value> readSensitivity(std::int32_t deviceNo, Place place) {
    double sensitivity = 0;
    callLibrary(deviceNo, [&] { return TORVIKreadInputSensitivity(deviceNo, place.major, &sensitivity) < 0 ? -1 : 0; });
    return Value(sensitivity);
}

WriteResult writeSensitivity(std::int32_t deviceNo, Place place, const Value& value) {
    constexpr std::int32_t onlyMode = 0;
    return callWithRestart(deviceNo, [&] {
        return TORVIKwriteInputSensitivity(deviceNo, place.major, onlyMode, std::get<double>(value));
    });
}

/// Some indices carry no value: the export leaves the number as it was.
std::optional<Value> readCalibrationValue(std::int32_t deviceNo, Place place) {
    double number = std::nan("");
    callLibrary(deviceNo,
                [&] { return TORVIKreadCal(deviceNo, static_cast<std::int32_t>(place.major), place.minor, &number); });
    return std::isnan(number) ? std::nullopt : std::optional<Value>(number);
}

WriteResult writeCalibrationValue(std::int32_t deviceNo, Place place, const Value& value) {
    callLibrary(deviceNo,
                [&] { return TORVIKFABwriteCal(deviceNo, place.major, place.minor, std::get<double>(value)); });
    return WriteResult::done;
}

constexpr Parameter inputRows[] = {
    {.name = "input-type",
     .group = Group::input,
     .text = "type of the input: one of those that offered-ranges tells",
     .unit = "",
     .places = everyChannel,
     .kind = ValueKind::whole,
     .limits = {0, 255},
     .read = readInputType,
     .write = writeInputType,
     .restarts = true,
     .inConfiguration = InConfiguration::yes},
    {.name = "input-range",
     .group = Group::input,
     .text = "measuring range, in the unit of the input type (mV/V, V, ...)",
     .unit = "of the input type",
     .places = everyChannel,
     .kind = ValueKind::real,
     .limits = rangeLimits,
     .read = readMeasuringRange,
     .write = writeMeasuringRange,
     .restarts = true,
     .inConfiguration = InConfiguration::yes},
    {.name = "offered-ranges",
     .group = Group::input,
     .text = "input types and measuring ranges that the channel offers, each as type:range",
     .unit = "of the input type",
     .places = everyChannel,
     .kind = ValueKind::text,
     .read = readOfferedList},
    {.name = "offered-range",
     .group = Group::input,
     .text = "one of the measuring ranges that the channel offers (set by the factory)",
     .unit = "of the input type",
     .places = offeredEntry,
     .kind = ValueKind::real,
     .limits = rangeLimits,
     .read = readOfferedRange,
     .write = writeOfferedRange,
     .restarts = true,
     .shown = false},
    {.name = "sensitivity",
     .group = Group::input,
     .text = "measuring range divided by output-scale; writing chooses range and output-scale to suit",
     .unit = "of the input type",
     .places = everyChannel,
     .kind = ValueKind::single,
     .limits = rangeLimits,
     .read = readSensitivity,
     .write = writeSensitivity,
     .restarts = true},
    {.name = "calibration",
     .group = Group::input,
     .text = "calibration value of the factory",
     .unit = "",
     .places = calibrationPlace,
     .kind = ValueKind::single,
     .read = readCalibrationValue,
     .write = writeCalibrationValue,
     .whenAllZero = "none: all values are 0"},
};

}  // namespace

std::span<const Parameter> inputParameters() {
    return inputRows;
}

}  // namespace torvik::tool
