#include "parameters/device_parameters.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "parameters/library_call.h"

namespace torvik::tool {

namespace {

constexpr std::uint32_t ofArguments = 0x30000100;
constexpr std::uint32_t ofFirmware = 0x30000062;
constexpr std::uint32_t ofSensitivity = 0x30000065;
constexpr std::uint32_t replacedCode = 0x30000105;

/// The device answered, but does not offer what it was asked, or the library knows that it would not.
bool isAnswered(std::uint32_t code) {
    constexpr std::array codes{ofArguments, ofFirmware, ofSensitivity};
    return (code >= 0x40 && code <= 0x99) || std::ranges::find(codes, code) != codes.end();
}

}  // namespace

std::uint32_t channelsOf(const Connection& connection) {
    return std::min(connection.channelCount(), mostChannels);
}

PlaceReading readPlace(const Connection& connection, const Parameter& parameter, Place place) {
    try {
        return {place, parameter.read(connection.deviceNo(), place), {}};
    } catch (const Refused& refused) {
        // Reading the mode replaces the device's own code by this one.
        if (!isAnswered(refused.error.code) && refused.error.code != replacedCode) {
            throw refusalFailure(fmt::format("reading {}", describePlace(parameter, place)), refused.error);
        }
        return {place, {}, refused.error};
    }
}

ParameterReading readPlaces(const Connection& connection, const Parameter& parameter, std::span<const Place> places) {
    ParameterReading reading{&parameter, {}};
    for (const Place place : places)
        reading.places.push_back(readPlace(connection, parameter, place));
    return reading;
}

std::optional<LibraryError> writePlace(const Connection& connection, const Parameter& parameter, Place place,
                                       const Value& value) {
    try {
        tellRestart(parameter.write(connection.deviceNo(), place, value));
        return std::nullopt;
    } catch (const Refused& refused) {
        if (!isAnswered(refused.error.code)) {
            throw refusalFailure(
                fmt::format("setting {} to {}", describePlace(parameter, place), shownText(parameter.kind, value)),
                refused.error);
        }
        return refused.error;
    }
}

Failure refusalFailure(std::string tried, const LibraryError& error) {
    return {.exitCode = ExitCode::deviceFailed, .tried = std::move(tried), .error = error};
}

void tellRestart(WriteResult result) {
    if (result == WriteResult::restartUnknown) {
        printMessage("torvik: the device's firmware knows no restart: switch it off and on to bring this into use\n");
    } else if (result == WriteResult::buffersNotCleared) {
        printMessage("torvik: the device was restarted, but values from before may still be in the library's buffer\n");
    }
}

}  // namespace torvik::tool
