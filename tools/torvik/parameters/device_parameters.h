// Reading and writing parameters of an open device.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "connection.h"
#include "parameters/parameter.h"

namespace torvik::tool {

/// What the device told about one place; neither: it keeps nothing there.
struct PlaceReading {
    Place place;
    std::optional<Value> value;
    std::optional<LibraryError> refusal;
};

struct ParameterReading {
    const Parameter* parameter;
    std::vector<PlaceReading> places;
};

/// The channels that are shown and configured: those that the device sends, at most eight.
std::uint32_t channelsOf(const Connection& connection);

/// Reads one place. A device that refuses is no failure; one that is silent is: throws Failure.
PlaceReading readPlace(const Connection& connection, const Parameter& parameter, Place place);

ParameterReading readPlaces(const Connection& connection, const Parameter& parameter, std::span<const Place> places);

/// Writes one place; place 0 of a channel parameter means all channels. Gives the device's refusal, or nothing. Says on
/// standard error when the restart that belongs to it went wrong. A silent device: throws Failure.
std::optional<LibraryError> writePlace(const Connection& connection, const Parameter& parameter, Place place,
                                       const Value& value);

/// The failure of something tried with a parameter that was refused.
Failure refusalFailure(std::string tried, const LibraryError& error);

/// What a write's result has to say about the restart, on standard error.
void tellRestart(WriteResult result);

}  // namespace torvik::tool
