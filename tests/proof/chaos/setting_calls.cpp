#include "TORVIK.h"
#include "random_call.h"

namespace torvik::proof {

namespace {

using u32 = std::uint32_t;
using u8 = std::uint8_t;

template <class Signature>
using C = Caller<Signature>;

// Slow enough for 39 devices on one bus, or refused by the device.
const auto samplingFrequency = [](Arguments& any) { return any.onceIn(2) ? 1.0 + any.below(50) : 1e6; };

// Writes beyond what identifiers can be: a device that goes by another identifier answers nobody.
std::int32_t setCanSettings(decltype(TORVIKsetCANSettings)* function, Arguments& any, std::int32_t deviceNo) {
    return function(deviceNo, any.byte(), static_cast<std::int32_t>(any.number() | 0x800U));
}

std::int32_t readTeds(decltype(TORVIKreadTEDSrawData)* function, Arguments& any, std::int32_t deviceNo) {
    constexpr std::uint32_t room = 64;
    const auto length = any.onceIn(8) ? 0 : static_cast<std::int32_t>(1 + any.below(room));
    return function(deviceNo, any.number(), any.array<u8>(room), length,
                    any.onceIn(8) ? any.number() : 4 * any.below(64));
}

std::vector<RandomCall> deviceCalls() {
    return {
        C<decltype(TORVIKgetSerialNo)>::make("TORVIKgetSerialNo", 1, one<u32>),
        C<decltype(TORVIKsetSerialNo)>::make("TORVIKsetSerialNo", 1, number),
        C<decltype(TORVIKgetTXmode)>::make("TORVIKgetTXmode", 1, byte, one<u32>),
        C<decltype(TORVIKsetTXmode)>::make("TORVIKsetTXmode", 1, number, number),
        C<decltype(TORVIKgetMode)>::make("TORVIKgetMode", 1, one<u32>),
        restarting(C<decltype(TORVIKsetMode)>(), "TORVIKsetMode", 1, number),
        // Asks a device that is not active, too, and then waits for the answer that does not come.
        C<decltype(TORVIKgetFirmwareVersion)>::make("TORVIKgetFirmwareVersion", 1, one<u32>).weighing(1),
        C<decltype(TORVIKgetHardwareVersion)>::make("TORVIKgetHardwareVersion", 1, one<u32>),
        C<decltype(TORVIKgetSoftwareConfiguration)>::make("TORVIKgetSoftwareConfiguration", 1, one<u32>),
        C<decltype(TORVIKgetCommandAvailable)>::make("TORVIKgetCommandAvailable", 1, many<u8, 2>),
        C<decltype(TORVIKswitchBlocking)>::make("TORVIKswitchBlocking", 1, many<u8, 4>),
        restarting(C<decltype(TORVIKloadSettings)>(), "TORVIKloadSettings", 2, number).pausing(1000),
        C<decltype(TORVIKstoreSettings)>::make("TORVIKstoreSettings", 1, byte),
        restarting(C<decltype(TORVIKresetDevice)>(), "TORVIKresetDevice", 0),
        C<decltype(TORVIKreadDeviceHours)>::make("TORVIKreadDeviceHours", 1, byte, one<double>),
        C<decltype(TORVIKwriteDeviceHours)>::make("TORVIKwriteDeviceHours", 1, real),
        C<decltype(TORVIKgetTEDSactive)>::make("TORVIKgetTEDSactive", 1, number, one<u32>),
        callWith<decltype(TORVIKreadTEDSrawData)>("TORVIKreadTEDSrawData", 16, readTeds).weighing(10),
    };
}

std::vector<RandomCall> scalingCalls() {
    return {
        C<decltype(TORVIKsetZero)>::make("TORVIKsetZero", 1, channel),
        C<decltype(TORVIKwriteZero)>::make("TORVIKwriteZero", 1, channel, number),
        C<decltype(TORVIKreadZero)>::make("TORVIKreadZero", 1, channel, one<u32>),
        C<decltype(TORVIKreadAoutOffset)>::make("TORVIKreadAoutOffset", 1, channel, one<double>),
        restarting(C<decltype(TORVIKwriteAoutOffset)>(), "TORVIKwriteAoutOffset", 1, channel, real),
        C<decltype(TORVIKreadAoutScale)>::make("TORVIKreadAoutScale", 1, channel, one<double>),
        C<decltype(TORVIKwriteAoutScale)>::make("TORVIKwriteAoutScale", 1, channel, real),
        C<decltype(TORVIKwriteAoutDirect)>::make("TORVIKwriteAoutDirect", 1, channel, number),
        C<decltype(TORVIKgetAoutType)>::make("TORVIKgetAoutType", 1, channel, one<u8>, one<u8>),
        restarting(C<decltype(TORVIKsetAoutType)>(), "TORVIKsetAoutType", 1, channel, byte, byte),
        C<decltype(TORVIKreadUserOffset)>::make("TORVIKreadUserOffset", 1, channel, one<double>),
        C<decltype(TORVIKwriteUserOffset)>::make("TORVIKwriteUserOffset", 1, channel, real),
        // As TORVIKgetFirmwareVersion.
        C<decltype(TORVIKreadUserScale)>::make("TORVIKreadUserScale", 1, channel, one<double>).weighing(1),
        C<decltype(TORVIKwriteUserScale)>::make("TORVIKwriteUserScale", 1, channel, real),
        C<decltype(TORVIKgetNoiseCutThreshold)>::make("TORVIKgetNoiseCutThreshold", 1, channel, one<double>),
        C<decltype(TORVIKsetNoiseCutThreshold)>::make("TORVIKsetNoiseCutThreshold", 1, channel, real),
        C<decltype(TORVIKreadMaxMinVal)>::make("TORVIKreadMaxMinVal", 2, channel, one<double>, one<double>),
    };
}

std::vector<RandomCall> inputCalls() {
    return {
        C<decltype(TORVIKgetInTypeRange)>::make("TORVIKgetInTypeRange", 1, channel, one<u32>, one<double>),
        C<decltype(TORVIKgetAllInTypesRanges)>::make("TORVIKgetAllInTypesRanges", 10, channel, one<u32>, many<u32, 10>,
                                                     many<double, 10>)
            .weighing(20),
        restarting(C<decltype(TORVIKsetInType)>(), "TORVIKsetInType", 8, channel, byte),
        restarting(C<decltype(TORVIKFABwriteInputRange)>(), "TORVIKFABwriteInputRange", 1, channel, number, real),
        C<decltype(TORVIKreadInputSensitivity)>::make("TORVIKreadInputSensitivity", 2, channel, one<double>),
        restarting(
            C<decltype(TORVIKwriteInputSensitivity)>(), "TORVIKwriteInputSensitivity", 12, channel,
            [](Arguments& any) { return any.onceIn(4) ? any.number() : 0; }, real),
        C<decltype(TORVIKreadCal)>::make("TORVIKreadCal", 1, number, channel, one<double>),
        C<decltype(TORVIKFABwriteCal)>::make("TORVIKFABwriteCal", 1, number, channel, real),
        C<decltype(TORVIKgetUnitNo)>::make("TORVIKgetUnitNo", 1, channel, one<u32>),
        C<decltype(TORVIKsetUnitNo)>::make("TORVIKsetUnitNo", 1, channel, number),
        C<decltype(TORVIKgetUnitText)>::make("TORVIKgetUnitText", 2, channel, number, many<char, 10>),
        C<decltype(TORVIKsetUnitText)>::make("TORVIKsetUnitText", 3, channel, number, text<12>),
    };
}

std::vector<RandomCall> busCalls() {
    return {
        C<decltype(TORVIKgetFrequency)>::make("TORVIKgetFrequency", 1, one<double>),
        restarting(C<decltype(TORVIKsetFrequency)>(), "TORVIKsetFrequency", 1, samplingFrequency),
        C<decltype(TORVIKgetDataRateRange)>::make("TORVIKgetDataRateRange", 2, one<double>, one<double>),
        // As TORVIKgetFirmwareVersion.
        C<decltype(TORVIKgetCounterFreqMode)>::make("TORVIKgetCounterFreqMode", 1, number, number, one<u32>)
            .weighing(1),
        C<decltype(TORVIKsetCounterFreqMode)>::make("TORVIKsetCounterFreqMode", 2, number, number, number),
        C<decltype(TORVIKreadAnalogueFilter)>::make("TORVIKreadAnalogueFilter", 1, one<u32>),
        C<decltype(TORVIKwriteAnalogueFilter)>::make("TORVIKwriteAnalogueFilter", 1, number),
        C<decltype(TORVIKgetCANSettings)>::make("TORVIKgetCANSettings", 1, byte, one<u32>),
        callWith<decltype(TORVIKsetCANSettings)>("TORVIKsetCANSettings", 1, setCanSettings).onlyInStorms(),
        C<decltype(TORVIKsetID)>::make("TORVIKsetID", 1, many<u8, 4>),
        C<decltype(TORVIKgetIDState)>::make("TORVIKgetIDState", 1, one<u8>),
        C<decltype(TORVIKgetTXMapping)>::make("TORVIKgetTXMapping", 1, byte, one<u32>),
        C<decltype(TORVIKsetTXMapping)>::make("TORVIKsetTXMapping", 1, byte, number),
    };
}

}  // namespace

std::vector<RandomCall> settingCalls() {
    std::vector<RandomCall> calls;
    for (const auto& family : {deviceCalls(), scalingCalls(), inputCalls(), busCalls()})
        calls.insert(calls.end(), family.begin(), family.end());
    return calls;
}

}  // namespace torvik::proof
