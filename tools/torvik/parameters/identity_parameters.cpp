// Identity, operating mode, sensor memory.
#include <fmt/format.h>

#include <array>
#include <iterator>

#include "TORVIK.h"
#include "parameters/library_call.h"

namespace torvik::tool {

namespace {

constexpr Limits any32{0, 0xFFFFFFFF};
constexpr Limits any16{0, 0xFFFF};
constexpr PlaceRange identIndex{.what = "index", .first = 0, .last = 255, .lastShown = 3};
constexpr PlaceRange hoursIndex{.what = "index", .first = 0, .last = 255, .lastShown = 1};
constexpr PlaceRange transmitModeIndex{.what = "index", .first = 0, .last = 1, .lastShown = 1};
constexpr PlaceRange commandCode{.what = "code", .first = 0, .last = 255, .lastShown = 255};
constexpr PlaceRange memorySelector{.what = "selector", .first = 0, .last = 255, .lastShown = 8};

WriteResult writeSerialNumber(std::int32_t deviceNo, Place, const Value& value) {
    callLibrary(deviceNo, [&] { return TORVIKsetSerialNo(deviceNo, wholeOf<std::int32_t>(value)); });
    return WriteResult::done;
}

std::optional<Value> readOperatingHours(std::int32_t deviceNo, Place place) {
    double hours = 0;
    callLibrary(deviceNo,
                [&] { return TORVIKreadDeviceHours(deviceNo, static_cast<std::uint8_t>(place.major), &hours); });
    return Value(hours);
}

WriteResult writeOperatingHours(std::int32_t deviceNo, Place, const Value& value) {
    callLibrary(deviceNo, [&] { return TORVIKwriteDeviceHours(deviceNo, std::get<double>(value)); });
    return WriteResult::done;
}

std::optional<Value> readActiveSensorMemories(std::int32_t deviceNo, Place) {
    constexpr std::uint32_t wholeWord = 0;
    std::uint32_t channels = 0;
    callLibrary(deviceNo, [&] { return TORVIKgetTEDSactive(deviceNo, wholeWord, &channels); });
    return Value(std::int64_t{channels});
}

/// The beginning of the memory. Word addresses that begin at 0 go up by 4 with each word, as byte addresses do.
std::optional<Value> readSensorMemory(std::int32_t deviceNo, Place place) {
    std::array<std::uint8_t, 64> data{};
    callLibrary(deviceNo, [&] {
        return TORVIKreadTEDSrawData(deviceNo, place.major, data.data(), static_cast<std::int32_t>(data.size()), 0);
    });
    std::string text;
    for (const std::uint8_t byte : data)
        fmt::format_to(std::back_inserter(text), "{}{:02X}", text.empty() ? "" : " ", byte);
    return Value(text);
}

/// 1 or 0: a refusal by the device is the answer, too.
std::optional<Value> readCommandKnown(std::int32_t deviceNo, Place place) {
    constexpr std::uint32_t firstDeviceStatus = 0x40;
    constexpr std::uint32_t lastDeviceStatus = 0x99;
    std::array<std::uint8_t, 2> query{static_cast<std::uint8_t>(place.major), 0};
    try {
        callLibrary(deviceNo, [&] { return TORVIKgetCommandAvailable(deviceNo, query.data()); });
    } catch (const Refused& refused) {
        if (refused.error.code < firstDeviceStatus || refused.error.code > lastDeviceStatus) throw;
        return Value(std::int64_t{0});
    }
    return Value(std::int64_t{1});
}

WriteResult writeMode(std::int32_t deviceNo, Place, const Value& value) {
    return callWithRestart(deviceNo, [&] { return TORVIKsetMode(deviceNo, wholeOf<std::int32_t>(value)); });
}

WriteResult writeTransmitMode(std::int32_t deviceNo, Place place, const Value& value) {
    callLibrary(deviceNo, [&] { return TORVIKsetTXmode(deviceNo, place.major, wholeOf<std::int32_t>(value)); });
    return WriteResult::done;
}

WriteResult writeBlocking(std::int32_t deviceNo, Place, const Value& value) {
    FourBytes number = FourBytes::lowestFirst(wholeOf<std::uint32_t>(value));
    callLibrary(deviceNo, [&] { return TORVIKswitchBlocking(deviceNo, number.bytes.data()); });
    return WriteResult::done;
}

constexpr Parameter identityRows[] = {
    {.name = "serial-number",
     .group = Group::identity,
     .text = "serial number",
     .unit = "",
     .places = onePlace,
     .kind = ValueKind::whole,
     .limits = {1, 0xFFFFFFFF},
     .read = readDeviceNumber<TORVIKgetSerialNo>,
     .write = writeSerialNumber},
    {.name = "firmware-version",
     .group = Group::identity,
     .text = "firmware version: 0x40000 is 4.0",
     .unit = "",
     .places = onePlace,
     .kind = ValueKind::word,
     .read = readDeviceNumber<TORVIKgetFirmwareVersion>},
    {.name = "hardware-version",
     .group = Group::identity,
     .text = "hardware version",
     .unit = "",
     .places = onePlace,
     .kind = ValueKind::word,
     .read = readDeviceNumber<TORVIKgetHardwareVersion>},
    {.name = "software-configuration",
     .group = Group::identity,
     .text = "what the firmware was configured with",
     .unit = "",
     .places = onePlace,
     .kind = ValueKind::word,
     .read = readDeviceNumber<TORVIKgetSoftwareConfiguration>},
    {.name = "interface-ident",
     .group = Group::identity,
     .text = "identity of the device's interface",
     .unit = "",
     .places = identIndex,
     .kind = ValueKind::word,
     .read = readIndexedNumber<TORVIKgetInterfaceIdent, std::uint8_t>},
    {.name = "operating-hours",
     .group = Group::identity,
     .text = "operating-hours counter",
     .unit = "h",
     .places = hoursIndex,
     .kind = ValueKind::single,
     .read = readOperatingHours},
    {.name = "new-operating-hours",
     .group = Group::identity,
     .text = "sets the operating-hours counter that the device lets be written",
     .unit = "h",
     .places = onePlace,
     .kind = ValueKind::single,
     .write = writeOperatingHours},
    {.name = "active-sensor-memories",
     .group = Group::identity,
     .text = "channels whose sensor memory (TEDS) is active, bit 0 for channel 1",
     .unit = "",
     .places = onePlace,
     .kind = ValueKind::word,
     .read = readActiveSensorMemories},
    {.name = "sensor-memory",
     .group = Group::identity,
     .text = "first 64 bytes of a sensor memory (TEDS)",
     .unit = "",
     .places = memorySelector,
     .kind = ValueKind::text,
     .read = readSensorMemory,
     .shown = false},
    {.name = "command-known",
     .group = Group::identity,
     .text = "1: the device knows the command of this code; 0: it does not",
     .unit = "",
     .places = commandCode,
     .kind = ValueKind::whole,
     .read = readCommandKnown,
     .shown = false},
    {.name = "mode",
     .group = Group::mode,
     .text = "mode word",
     .unit = "",
     .places = onePlace,
     .kind = ValueKind::word,
     .limits = any32,
     .read = readDeviceNumber<TORVIKgetMode>,
     .write = writeMode,
     .restarts = true},
    {.name = "transmit-mode",
     .group = Group::mode,
     .text = "transmit mode word",
     .unit = "",
     .places = transmitModeIndex,
     .kind = ValueKind::word,
     .limits = any16,
     .read = readIndexedNumber<TORVIKgetTXmode, std::uint8_t>,
     .write = writeTransmitMode},
    {.name = "blocking",
     .group = Group::mode,
     .text = "switches the blocking of settings",
     .unit = "",
     .places = onePlace,
     .kind = ValueKind::word,
     .limits = any32,
     .write = writeBlocking},
};

}  // namespace

std::span<const Parameter> identityParameters() {
    return identityRows;
}

}  // namespace torvik::tool
