// What the device sends, and its settings and identifiers on the bus.
#include "TORVIK.h"
#include "parameters/library_call.h"

namespace torvik::tool {

namespace {

constexpr Limits thirtyTwoBits{0, 0xFFFFFFFF};
constexpr PlaceRange mappingEntry{.what = "entry", .first = 1, .last = 16, .lastShown = 16};
constexpr PlaceRange canSettingIndex{.what = "index", .first = 0, .last = 255, .lastShown = 7};
constexpr std::uint8_t countEntry = 0;

std::uint32_t readMapping(std::int32_t deviceNo, std::uint32_t index) {
    std::uint32_t entry = 0;
    callLibrary(deviceNo, [&] { return TORVIKgetTXMapping(deviceNo, static_cast<std::uint8_t>(index), &entry); });
    return entry;
}

void writeMapping(std::int32_t deviceNo, std::uint32_t index, const Value& value) {
    callLibrary(deviceNo, [&] {
        return TORVIKsetTXMapping(deviceNo, static_cast<std::uint8_t>(index), wholeOf<std::int32_t>(value));
    });
}

std::optional<Value> readTransmittedChannels(std::int32_t deviceNo, Place) {
    return Value(std::int64_t{readMapping(deviceNo, countEntry)});
}

WriteResult writeTransmittedChannels(std::int32_t deviceNo, Place, const Value& value) {
    writeMapping(deviceNo, countEntry, value);
    return WriteResult::done;
}

/// An entry is told spread out; here it gets the form in which it is written.
std::optional<Value> readMappingEntry(std::int32_t deviceNo, Place place) {
    const std::uint32_t spread = readMapping(deviceNo, place.major);
    return Value(std::int64_t{(spread >> 16U & 0xFFU) << 8U | (spread >> 8U & 0xFU) << 4U | (spread & 0xFU)});
}

WriteResult writeMappingEntry(std::int32_t deviceNo, Place place, const Value& value) {
    writeMapping(deviceNo, place.major, value);
    return WriteResult::done;
}

WriteResult writeCanSetting(std::int32_t deviceNo, Place place, const Value& value) {
    callLibrary(deviceNo, [&] {
        return TORVIKsetCANSettings(deviceNo, static_cast<std::uint8_t>(place.major), wholeOf<std::int32_t>(value));
    });
    return WriteResult::done;
}

WriteResult writeIdentifierCommand(std::int32_t deviceNo, Place, const Value& value) {
    FourBytes code = FourBytes::highestFirst(wholeOf<std::uint32_t>(value));
    callLibrary(deviceNo, [&] { return TORVIKsetID(deviceNo, code.bytes.data()); });
    return WriteResult::done;
}

constexpr Parameter canRows[] = {
    {.name = "transmitted-channels",
     .group = Group::can,
     .text = "number of channels in a set of values",
     .unit = "",
     .places = onePlace,
     .kind = ValueKind::whole,
     .limits = {1, 0xFFFF},
     .read = readTransmittedChannels,
     .write = writeTransmittedChannels,
     .inConfiguration = InConfiguration::yes},
    {.name = "transmit-mapping",
     .group = Group::can,
     .text = "what the device sends as the channel of this number in a set",
     .unit = "",
     .places = mappingEntry,
     .kind = ValueKind::word,
     .limits = {0, 0xFFFF},
     .read = readMappingEntry,
     .write = writeMappingEntry,
     .inConfiguration = InConfiguration::yes},
    {.name = "can-setting",
     .group = Group::can,
     .text = "CAN setting, in use after a restart; 2 is the identifier of the value frames",
     .unit = "",
     .places = canSettingIndex,
     .kind = ValueKind::word,
     .limits = thirtyTwoBits,
     .read = readIndexedNumber<TORVIKgetCANSettings, std::uint8_t>,
     .write = writeCanSetting,
     .inConfiguration = InConfiguration::onRequest},
    {.name = "identifier-state",
     .group = Group::can,
     .text = "state of the identifier setting",
     .unit = "",
     .places = onePlace,
     .kind = ValueKind::word,
     .read = readDeviceNumber<TORVIKgetIDState, std::uint8_t>},
    {.name = "identifier-command",
     .group = Group::can,
     .text = "sends the identifier-setting command with these four bytes, the highest first",
     .unit = "",
     .places = onePlace,
     .kind = ValueKind::word,
     .limits = thirtyTwoBits,
     .write = writeIdentifierCommand},
};

}  // namespace

std::span<const Parameter> canParameters() {
    return canRows;
}

}  // namespace torvik::tool
