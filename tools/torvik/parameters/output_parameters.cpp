// The analogue output.
#include "TORVIK.h"
#include "parameters/library_call.h"

namespace torvik::tool {

namespace {

constexpr Limits bits16{0, 0xFFFF};

constexpr std::uint8_t highByte(std::int64_t number) {
    return static_cast<std::uint8_t>(number >> 8);
}

constexpr std::uint8_t lowByte(std::int64_t number) {
    return static_cast<std::uint8_t>(number);
}

WriteResult writeOutputOffset(std::int32_t deviceNo, Place place, const Value& value) {
    return callWithRestart(deviceNo,
                           [&] { return TORVIKwriteAoutOffset(deviceNo, place.major, std::get<double>(value)); });
}

/// The bytes come exchanged: the one that was sent first is told as the second.
std::optional<Value> readOutputType(std::int32_t deviceNo, Place place) {
    std::uint8_t sentSecond = 0;
    std::uint8_t sentFirst = 0;
    callLibrary(deviceNo, [&] { return TORVIKgetAoutType(deviceNo, place.major, &sentSecond, &sentFirst); });
    return Value(std::int64_t{sentFirst} << 8 | std::int64_t{sentSecond});
}

WriteResult writeOutputType(std::int32_t deviceNo, Place place, const Value& value) {
    const auto type = std::get<std::int64_t>(value);
    return callWithRestart(deviceNo,
                           [&] { return TORVIKsetAoutType(deviceNo, place.major, highByte(type), lowByte(type)); });
}

WriteResult writeOutputValue(std::int32_t deviceNo, Place place, const Value& value) {
    callLibrary(deviceNo, [&] { return TORVIKwriteAoutDirect(deviceNo, place.major, wholeOf<std::int32_t>(value)); });
    return WriteResult::done;
}

constexpr Parameter outputRows[] = {
    {.name = "output-type",
     .group = Group::output,
     .text = "type of the analogue output: two bytes, the first one in the high half",
     .unit = "",
     .places = everyChannel,
     .kind = ValueKind::word,
     .limits = bits16,
     .read = readOutputType,
     .write = writeOutputType,
     .restarts = true,
     .inConfiguration = InConfiguration::yes},
    {.name = "output-offset",
     .group = Group::output,
     .text = "offset of the analogue output",
     .unit = "of the output",
     .places = everyChannel,
     .kind = ValueKind::single,
     .read = readChannelReal<TORVIKreadAoutOffset>,
     .write = writeOutputOffset,
     .restarts = true,
     .inConfiguration = InConfiguration::yes},
    {.name = "output-scale",
     .group = Group::output,
     .text = "scale of the analogue output",
     .unit = "",
     .places = everyChannel,
     .kind = ValueKind::single,
     .read = readChannelReal<TORVIKreadAoutScale>,
     .write = writeChannelReal<TORVIKwriteAoutScale>,
     .inConfiguration = InConfiguration::yes},
    {.name = "output-value",
     .group = Group::output,
     .text = "puts a value on the analogue output directly",
     .unit = "",
     .places = everyChannel,
     .kind = ValueKind::whole,
     .limits = bits16,
     .write = writeOutputValue},
};

}  // namespace

std::span<const Parameter> outputParameters() {
    return outputRows;
}

}  // namespace torvik::tool
