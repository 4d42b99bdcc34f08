// Sampling frequency, counter inputs, analogue filter.
#include "TORVIK.h"
#include "parameters/library_call.h"

namespace torvik::tool {

namespace {

constexpr Limits upTo16Bits{0, 0xFFFF};
constexpr PlaceRange counterSetting{
    .what = "input", .first = 0, .last = 2, .lastShown = 2, .minorWhat = "setting", .minorFirst = 0, .minorLast = 15};

std::optional<Value> readSamplingFrequency(std::int32_t deviceNo, Place) {
    double frequency = 0;
    callLibrary(deviceNo, [&] { return TORVIKgetFrequency(deviceNo, &frequency); });
    return Value(frequency);
}

WriteResult writeSamplingFrequency(std::int32_t deviceNo, Place, const Value& value) {
    return callWithRestart(deviceNo, [&] { return TORVIKsetFrequency(deviceNo, std::get<double>(value)); });
}

std::optional<Value> readLowestFrequency(std::int32_t deviceNo, Place) {
    double lowest = 0;
    callLibrary(deviceNo, [&] { return TORVIKgetDataRateRange(deviceNo, &lowest, nullptr); });
    return Value(lowest);
}

std::optional<Value> readHighestFrequency(std::int32_t deviceNo, Place) {
    double highest = 0;
    callLibrary(deviceNo, [&] { return TORVIKgetDataRateRange(deviceNo, nullptr, &highest); });
    return Value(highest);
}

/// The export gives 0 when it refuses.
WriteResult writeAnalogueFilter(std::int32_t deviceNo, Place, const Value& value) {
    callCheckingLastError(deviceNo, [&] { return TORVIKwriteAnalogueFilter(deviceNo, wholeOf<std::int32_t>(value)); });
    return WriteResult::done;
}

std::uint32_t readFilterMask(std::int32_t deviceNo) {
    std::uint32_t mask = 0;
    callLibrary(deviceNo, [&] { return TORVIKgetDfilterOnOff(deviceNo, &mask); });
    return mask;
}

std::optional<Value> readFiltersOn(std::int32_t deviceNo, Place) {
    return Value(std::int64_t{readFilterMask(deviceNo)});
}

/// The library switches one filter at a time, or a bank: only what differs is switched.
WriteResult writeFiltersOn(std::int32_t deviceNo, Place, const Value& value) {
    constexpr std::uint32_t filtersOfBank = 8;
    constexpr std::int32_t firBank = 0x80;
    const auto wanted = wholeOf<std::uint32_t>(value);
    const std::uint32_t differing = wanted ^ readFilterMask(deviceNo);
    for (std::uint32_t bit = 0; bit < 2 * filtersOfBank; ++bit) {
        if ((differing >> bit & 1U) == 0) continue;
        const std::int32_t bank = bit < filtersOfBank ? 0 : firBank;
        const std::int32_t on = (wanted >> bit & 1U) != 0 ? 1 : 0;
        callLibrary(deviceNo, [&] { return TORVIKsetDfilterOnOff(deviceNo, bit % filtersOfBank + 1, bank, on); });
    }
    return WriteResult::done;
}

std::optional<Value> readCounterSetting(std::int32_t deviceNo, Place place) {
    std::uint32_t setting = 0;
    callLibrary(deviceNo, [&] {
        return TORVIKgetCounterFreqMode(deviceNo, static_cast<std::int32_t>(place.major), place.minor, &setting);
    });
    return Value(std::int64_t{setting});
}

WriteResult writeCounterSetting(std::int32_t deviceNo, Place place, const Value& value) {
    callLibrary(deviceNo, [&] {
        return TORVIKsetCounterFreqMode(deviceNo, static_cast<std::int32_t>(place.major), place.minor,
                                        wholeOf<std::uint32_t>(value));
    });
    return WriteResult::done;
}

constexpr Parameter rateRows[] = {
    {.name = "sampling-frequency",
     .group = Group::rate,
     .text = "sets of values per second",
     .unit = "Hz",
     .places = onePlace,
     .kind = ValueKind::single,
     .read = readSamplingFrequency,
     .write = writeSamplingFrequency,
     .restarts = true,
     .inConfiguration = InConfiguration::yes},
    {.name = "lowest-frequency",
     .group = Group::rate,
     .text = "smallest sampling frequency that the device accepts",
     .unit = "Hz",
     .places = onePlace,
     .kind = ValueKind::single,
     .read = readLowestFrequency},
    {.name = "highest-frequency",
     .group = Group::rate,
     .text = "largest sampling frequency that the device accepts",
     .unit = "Hz",
     .places = onePlace,
     .kind = ValueKind::single,
     .read = readHighestFrequency},
    {.name = "analogue-filter",
     .group = Group::rate,
     .text = "setting of the analogue input filter",
     .unit = "",
     .places = onePlace,
     .kind = ValueKind::whole,
     .limits = upTo16Bits,
     .read = readDeviceNumber<TORVIKreadAnalogueFilter>,
     .write = writeAnalogueFilter,
     .inConfiguration = InConfiguration::yes},
    {.name = "filters-on",
     .group = Group::rate,
     .text = "digital filters that are on: bits 0..7 the IIR filters 1..8, bits 8..15 the FIR filters",
     .unit = "",
     .places = onePlace,
     .kind = ValueKind::word,
     .limits = upTo16Bits,
     .read = readFiltersOn,
     .write = writeFiltersOn,
     .inConfiguration = InConfiguration::yes},
    {.name = "counter-setting",
     .group = Group::rate,
     .text = "setting of a counter or frequency input; 0 is its mode, which can change the number of channels",
     .unit = "",
     .places = counterSetting,
     .kind = ValueKind::whole,
     .limits = {0, 0xFFFFFFFF},
     .read = readCounterSetting,
     .write = writeCounterSetting,
     .inConfiguration = InConfiguration::yes},
};

}  // namespace

std::span<const Parameter> rateParameters() {
    return rateRows;
}

}  // namespace torvik::tool
