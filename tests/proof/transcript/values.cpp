// Measured values of every type, through every way of reading them.
#include <array>
#include <string>

#include "transcript/bench.h"
#include "virtual_control.h"

namespace torvik::proof {

namespace {

using Doubles = std::vector<double>;
using Words = std::vector<std::uint32_t>;
using Numbers = std::vector<std::int32_t>;

constexpr const char* signals = R"(
[[amplifier.signal]]
wave = "noise"
amplitude = 1.04
[[amplifier.signal]]
wave = "sine"
amplitude = 0.7
offset = -0.1
frequency = 3.3
noise = 0.01
[[amplifier.signal]]
wave = "ramp"
amplitude = 1.2
frequency = 7.7
[[amplifier.signal]]
wave = "step"
amplitude = 0.5
offset = 0.25
frequency = 11
noise = 0.001
[[amplifier.signal]]
wave = "noise"
amplitude = 0.0001
[[amplifier.signal]]
wave = "sine"
amplitude = 0.9
frequency = 41
)";

constexpr std::int32_t channels = 6;

void readValues(Run& run) {
    constexpr std::uint32_t sets = 100;
    Transcript& t = run.transcript;
    Numbers count(1);
    sendSets(sets);
    t.call("TORVIKreceived", TORVIKreceived, 1, 0, count);
    Doubles all(sets * channels);
    Words status(all.size(), 0xEE);
    t.call("TORVIKreadMultiple", TORVIKreadMultiple, 1, 0, all, sets * channels, count, status);
    sendSets(sets);
    Doubles value(1);
    for (std::uint32_t channel = 1; channel <= channels; ++channel) {
        t.call("TORVIKread", TORVIKread, 1, channel, value);
        Doubles some(sets);
        Words someStatus(sets, 0xEE);
        t.call("TORVIKreadMultiple", TORVIKreadMultiple, 1, channel, some, sets, count, someStatus);
    }
    sendSets(1);
    t.call("TORVIKclearDLLbuffer", TORVIKclearDLLbuffer, 1);
    t.call("TORVIKread", TORVIKread, 1, 1, value);
    t.call("TORVIKgetValue", TORVIKgetValue, 1);
    awaitSets(1);
    for (std::uint32_t channel = 1; channel <= channels; ++channel)
        t.call("TORVIKread", TORVIKread, 1, channel, value);
}

void askDevice(Run& run) {
    Transcript& t = run.transcript;
    Words word(1);
    Doubles extremes(2);
    Doubles second(1);
    for (std::uint32_t channel = 1; channel <= channels; ++channel) {
        t.call("TORVIKgetRawValue", TORVIKgetRawValue, 1, channel, word);
        t.call("TORVIKreadMaxMinVal", TORVIKreadMaxMinVal, 1, channel, extremes, second);
        t.call("TORVIKclearMaximumValue", TORVIKclearMaximumValue, 1, channel);
    }
    t.call("TORVIKclearDeviceBuf", TORVIKclearDeviceBuf, 1);
    t.call("TORVIKstopTX", TORVIKstopTX, 1);
    t.call("TORVIKstartTX", TORVIKstartTX, 1);
}

void changeValues(Run& run) {
    Transcript& t = run.transcript;
    t.call("TORVIKsetZero", TORVIKsetZero, 1, 1);
    t.call("TORVIKwriteUserScale", TORVIKwriteUserScale, 1, 2, run.random.between(0.1, 3));
    t.call("TORVIKwriteUserOffset", TORVIKwriteUserOffset, 1, 3, run.random.between(-1, 1));
    t.call("TORVIKsetNoiseCutThreshold", TORVIKsetNoiseCutThreshold, 1, 4, 0.3);
    t.call("TORVIKcalcSetDfilterParams", TORVIKcalcSetDfilterParams, 1, 1, 0, 0, 2, 4, run.random.between(50, 300),
           0.0);
    t.call("TORVIKcalcSetDfilterParams", TORVIKcalcSetDfilterParams, 1, 2, 0, 3, 1, 4, 40.0,
           run.random.between(60, 90));
    t.call("TORVIKsetDfilterOnOff", TORVIKsetDfilterOnOff, 1, 1, 0, 1);
    t.call("TORVIKsetDfilterOnOff", TORVIKsetDfilterOnOff, 1, 2, 0, 1);
}

}  // namespace

void recordValues(Run& run) {
    const std::string seed = "seed = " + std::to_string(run.random.below(1'000'000));
    for (const char* const type : {"int16", "int24", "float32"}) {
        for (const char* const calibrated : {"false", "true"}) {
            openBench(run, amplifier(seed + "\nfrequency = 1000\nvalue_type = \"" + type +
                                     "\"\ncalibrated = " + calibrated + signals));
            for (std::uint32_t i = 0; i <= run.size; ++i) {
                readValues(run);
                askDevice(run);
                if (i == 0) changeValues(run);
            }
        }
    }
    std::vector<std::uint32_t> count(1);
    TORVIKrelease(0);
    virtualReset();
    virtualHoldStream(0, 1);
    run.transcript.call("TORVIKactivateStd", TORVIKactivateStd, 1, count);
    run.transcript.call("TORVIKrelease", TORVIKrelease, 1);
}

}  // namespace torvik::proof
