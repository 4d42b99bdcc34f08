// Settings with random arguments, and what the device says of them afterwards.
#include "TORVIKcommand.h"
#include "transcript/bench.h"

namespace torvik::proof {

namespace {

using Doubles = std::vector<double>;
using Words = std::vector<std::uint32_t>;
using Bytes = std::vector<std::uint8_t>;
using Text = std::vector<char>;

// Settings that restart the device are in the tables; those of older firmware do not.
constexpr const char* withoutRestart = "firmware = 0x00030008";

void recordScaling(Run& run, std::uint32_t channel) {
    Transcript& t = run.transcript;
    RandomNumbers& random = run.random;
    Doubles number(1, -77.25);
    Words word(1);
    t.call("TORVIKwriteUserOffset", TORVIKwriteUserOffset, 1, channel, random.any());
    t.call("TORVIKreadUserOffset", TORVIKreadUserOffset, 1, channel, number);
    t.call("TORVIKwriteUserScale", TORVIKwriteUserScale, 1, channel, random.any());
    t.call("TORVIKreadUserScale", TORVIKreadUserScale, 1, channel, number);
    t.call("TORVIKwriteAoutOffset", TORVIKwriteAoutOffset, 1, channel, random.any());
    t.call("TORVIKreadAoutOffset", TORVIKreadAoutOffset, 1, channel, number);
    t.call("TORVIKwriteAoutScale", TORVIKwriteAoutScale, 1, channel, random.any());
    t.call("TORVIKreadAoutScale", TORVIKreadAoutScale, 1, channel, number);
    t.call("TORVIKsetNoiseCutThreshold", TORVIKsetNoiseCutThreshold, 1, channel, random.any());
    t.call("TORVIKgetNoiseCutThreshold", TORVIKgetNoiseCutThreshold, 1, channel, number);
    t.call("TORVIKwriteZero", TORVIKwriteZero, 1, channel, random.word());
    t.call("TORVIKreadZero", TORVIKreadZero, 1, channel, word);
    t.call("TORVIKwriteAoutDirect", TORVIKwriteAoutDirect, 1, channel, random.word());
    Doubles extremes(2);
    t.call("TORVIKreadMaxMinVal", TORVIKreadMaxMinVal, 1, channel, number, extremes);
}

void recordInputs(Run& run, std::uint32_t channel) {
    Transcript& t = run.transcript;
    RandomNumbers& random = run.random;
    Doubles number(1, -77.25);
    const std::uint32_t index = random.below(49);
    t.call("TORVIKFABwriteCal", TORVIKFABwriteCal, 1, index, channel - 1, random.any());
    t.call("TORVIKreadCal", TORVIKreadCal, 1, index, channel - 1, number);
    // As many hundredths as a device keeps, and some it refuses.
    t.call("TORVIKFABwriteInputRange", TORVIKFABwriteInputRange, 1, channel, 0, random.between(-10, 200000));
    Words type(1);
    t.call("TORVIKgetInTypeRange", TORVIKgetInTypeRange, 1, channel, type, number);
    t.call("TORVIKwriteInputSensitivity", TORVIKwriteInputSensitivity, 1, channel, 0, random.between(0, 12));
    t.call("TORVIKreadInputSensitivity", TORVIKreadInputSensitivity, 1, channel, number);
    Words types(10, 7);
    Doubles ranges(10, -77.25);
    Words count(1);
    t.call("TORVIKgetAllInTypesRanges", TORVIKgetAllInTypesRanges, 1, channel, count, types, ranges);
}

void recordRatesAndNumbers(Run& run) {
    Transcript& t = run.transcript;
    RandomNumbers& random = run.random;
    Doubles number(1, -77.25);
    Words word(1);
    t.call("TORVIKsetFrequency", TORVIKsetFrequency, 1,
           random.below(2) == 0 ? random.any() : random.between(0.1, 20000));
    t.call("TORVIKgetFrequency", TORVIKgetFrequency, 1, number);
    t.call("TORVIKwriteDeviceHours", TORVIKwriteDeviceHours, 1, random.any());
    t.call("TORVIKreadDeviceHours", TORVIKreadDeviceHours, 1, 0, number);
    t.call("TORVIKsetSerialNo", TORVIKsetSerialNo, 1, random.word());
    t.call("TORVIKgetSerialNo", TORVIKgetSerialNo, 1, word);
    t.call("TORVIKwriteAnalogueFilter", TORVIKwriteAnalogueFilter, 1, random.word());
    t.call("TORVIKreadAnalogueFilter", TORVIKreadAnalogueFilter, 1, word);
}

void recordUnitTexts(Run& run, std::uint32_t channel) {
    Transcript& t = run.transcript;
    const std::uint32_t characterSet = run.random.below(3) * 1252 / 2;
    t.call("TORVIKsetUnitNo", TORVIKsetUnitNo, 1, channel, run.random.below(48));
    Text text(10, '~');
    t.call("TORVIKgetUnitText", TORVIKgetUnitText, 1, channel, characterSet << 8U, text);
    std::string own;
    for (std::uint32_t length = run.random.below(11); length > 0; --length)
        own += static_cast<char>(1 + run.random.below(255));
    t.call("TORVIKsetUnitText", TORVIKsetUnitText, 1, channel, 1 + run.random.below(2), own.c_str());
    t.call("TORVIKgetUnitText", TORVIKgetUnitText, 1, channel, 1 + run.random.below(2), text);
}

// Every code with one answer but those that change a device's identifiers, on which all further answers depend.
void recordCommands(Run& run) {
    Transcript& t = run.transcript;
    for (unsigned code = 0; code < 256; ++code) {
        if (code == 0x19 || code == 0x8D) continue;
        Bytes parameters(run.random.below(8));
        for (std::uint8_t& parameter : parameters)
            parameter = static_cast<std::uint8_t>(run.random.word());
        Bytes answer(8, 0xEE);
        t.call("TORVIKcommand", TORVIKcommand, 1, code, parameters, parameters.size(), answer);
    }
}

void recordErrors(Run& run) {
    Transcript& t = run.transcript;
    Words word(1);
    Bytes six(6);
    for (std::uint32_t index = 0; index < 4; ++index) {
        t.call("TORVIKgetLastProtocolError", TORVIKgetLastProtocolError, 1, 2, index, word);
        t.call("TORVIKgetLastValueError", TORVIKgetLastValueError, 1, index, six);
        t.call("TORVIKgetInterfaceIdent", TORVIKgetInterfaceIdent, 1, index, word);
    }
    t.call("TORVIKgetLastProtocolError", TORVIKgetLastProtocolError, 1, 1, 0, word);
    t.call("TORVIKresetStatus", TORVIKresetStatus, 1);
    Text text(128);
    t.call("TORVIKgetLastErrorText", TORVIKgetLastErrorText, 1, text, word);
    t.note("TORVIKDllVersion", 1, TORVIKDllVersion(word.data()), std::to_string(word[0]));
}

}  // namespace

void recordSettings(Run& run) {
    for (const char* const type : {"int16", "int24", "float32"}) {
        openBench(run, amplifier(std::string(withoutRestart) + "\nvalue_type = \"" + type + "\""));
        for (std::uint32_t i = 0; i < 25 * run.size; ++i) {
            const std::uint32_t channel = 1 + run.random.below(6);
            recordScaling(run, channel);
            recordInputs(run, channel);
            recordRatesAndNumbers(run);
            recordUnitTexts(run, channel);
        }
        recordErrors(run);
        recordCommands(run);
    }
}

}  // namespace torvik::proof
