// Zero signal, user scaling, noise threshold, extreme values.
#include "TORVIK.h"
#include "parameters/library_call.h"

namespace torvik::tool {

namespace {

constexpr Limits signed32{-2147483648.0, 2147483647.0};

/// The export gives a signed number as an unsigned one.
std::optional<Value> readZeroSignal(std::int32_t deviceNo, Place place) {
    std::uint32_t zero = 0;
    callLibrary(deviceNo, [&] { return TORVIKreadZero(deviceNo, place.major, &zero); });
    return Value(std::int64_t{static_cast<std::int32_t>(zero)});
}

WriteResult writeZeroSignal(std::int32_t deviceNo, Place place, const Value& value) {
    callLibrary(deviceNo, [&] { return TORVIKwriteZero(deviceNo, place.major, wholeOf<std::int32_t>(value)); });
    return WriteResult::done;
}

/// Reading and writing give 0 when they refuse their arguments.
std::optional<Value> readUserScale(std::int32_t deviceNo, Place place) {
    double scale = 0;
    callCheckingLastError(
        deviceNo, [&] { return TORVIKreadUserScale(deviceNo, static_cast<std::int32_t>(place.major), &scale); });
    return Value(scale);
}

WriteResult writeUserScale(std::int32_t deviceNo, Place place, const Value& value) {
    callCheckingLastError(deviceNo,
                          [&] { return TORVIKwriteUserScale(deviceNo, place.major, std::get<double>(value)); });
    return WriteResult::done;
}

/// The second number that the export gives is always 0.
std::optional<Value> readExtremeValue(std::int32_t deviceNo, Place place) {
    double extreme = 0;
    double unused = 0;
    callLibrary(deviceNo, [&] { return TORVIKreadMaxMinVal(deviceNo, place.major, &extreme, &unused); });
    return Value(extreme);
}

constexpr Parameter scalingRows[] = {
    {.name = "zero-signal",
     .group = Group::scaling,
     .text = "signal that counts as zero, in raw counts",
     .unit = "counts",
     .places = everyChannel,
     .kind = ValueKind::whole,
     .limits = signed32,
     .read = readZeroSignal,
     .write = writeZeroSignal,
     .inConfiguration = InConfiguration::yes},
    {.name = "user-offset",
     .group = Group::scaling,
     .text = "number added to the scaled value",
     .unit = "of the channel",
     .places = everyChannel,
     .kind = ValueKind::single,
     .read = readChannelReal<TORVIKreadUserOffset>,
     .write = writeChannelReal<TORVIKwriteUserOffset>,
     .inConfiguration = InConfiguration::yes},
    {.name = "user-scale",
     .group = Group::scaling,
     .text = "factor that the value is multiplied with",
     .unit = "",
     .places = everyChannel,
     .kind = ValueKind::single,
     .read = readUserScale,
     .write = writeUserScale,
     .inConfiguration = InConfiguration::yes},
    {.name = "noise-cut",
     .group = Group::scaling,
     .text = "threshold below which values count as zero",
     .unit = "of the channel",
     .places = everyChannel,
     .kind = ValueKind::single,
     .read = readChannelReal<TORVIKgetNoiseCutThreshold>,
     .write = writeChannelReal<TORVIKsetNoiseCutThreshold>,
     .inConfiguration = InConfiguration::yes},
    {.name = "extreme-value",
     .group = Group::scaling,
     .text = "stored maximum or minimum value",
     .unit = "of the channel",
     .places = everyChannel,
     .kind = ValueKind::single,
     .read = readExtremeValue},
};

}  // namespace

std::span<const Parameter> scalingParameters() {
    return scalingRows;
}

}  // namespace torvik::tool
