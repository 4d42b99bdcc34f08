// The channels' units and the user texts.
#include <array>

#include "TORVIK.h"
#include "parameters/library_call.h"
#include "parameters/unit_names.h"

namespace torvik::tool {

namespace {

/// The library reads the units of no other channels, though it writes that of channel 8.
constexpr std::uint32_t readableUnits = 7;
constexpr PlaceRange unitChannel{.what = "channel", .first = 1, .last = mostChannels, .lastShown = readableUnits};
constexpr PlaceRange userTextNumber{.what = "number", .first = 1, .last = 2, .lastShown = 2};
constexpr std::int32_t windows1252 = 0;
constexpr std::size_t longestUserText = 8;

std::uint32_t readUnitNumber(std::int32_t deviceNo, std::uint32_t channel) {
    std::uint32_t unitNo = 0;
    callLibrary(deviceNo, [&] { return TORVIKgetUnitNo(deviceNo, static_cast<std::int32_t>(channel), &unitNo); });
    return unitNo;
}

void writeUnitNumber(std::int32_t deviceNo, std::uint32_t channel, std::uint32_t unitNo) {
    callLibrary(deviceNo, [&] { return TORVIKsetUnitNo(deviceNo, channel, unitNo); });
}

std::optional<Value> readUnit(std::int32_t deviceNo, Place place) {
    return Value(unitName(readUnitNumber(deviceNo, place.major)));
}

WriteResult writeUnit(std::int32_t deviceNo, Place place, const Value& value) {
    writeUnitNumber(deviceNo, place.major, unitNumber(std::get<std::string>(value)).value());
    return WriteResult::done;
}

std::int32_t textRequest(Place place) {
    return windows1252 | static_cast<std::int32_t>(place.major);
}

std::optional<Value> readUserText(std::int32_t deviceNo, Place place) {
    constexpr std::uint32_t anyChannel = 1;
    std::array<char, 10> text{};
    callLibrary(deviceNo, [&] { return TORVIKgetUnitText(deviceNo, anyChannel, textRequest(place), text.data()); });
    return Value(utf8FromDevice(text.data()));
}

/// Writing a text gives the channel that text as its unit: it gets its own unit back.
WriteResult writeUserText(std::int32_t deviceNo, Place place, const Value& value) {
    constexpr std::uint32_t lentChannel = 1;
    const std::string text = deviceFromUtf8(std::get<std::string>(value)).value();
    const std::uint32_t unitNo = readUnitNumber(deviceNo, lentChannel);
    callLibrary(deviceNo, [&] { return TORVIKsetUnitText(deviceNo, lentChannel, textRequest(place), text.c_str()); });
    writeUnitNumber(deviceNo, lentChannel, unitNo);
    return WriteResult::done;
}

constexpr Parameter unitRows[] = {
    {.name = "user-text",
     .group = Group::unit,
     .text = "text that stands for the units user1 and user2; setting it brings 7 characters to the device",
     .unit = "",
     .places = userTextNumber,
     .kind = ValueKind::text,
     .limits = {0, longestUserText},
     .read = readUserText,
     .write = writeUserText,
     .inConfiguration = InConfiguration::yes},
    {.name = "unit",
     .group = Group::unit,
     .text = "unit of the channel; that of channel 8 can only be set",
     .unit = "",
     .places = unitChannel,
     .kind = ValueKind::unit,
     .read = readUnit,
     .write = writeUnit,
     .inConfiguration = InConfiguration::yes},
};

}  // namespace

std::span<const Parameter> unitParameters() {
    return unitRows;
}

}  // namespace torvik::tool
