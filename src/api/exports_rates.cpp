#include <cstdint>

#include "api/TORVIK.h"
#include "api/device_call.h"
#include "params/device_reset.h"

using namespace torvik;

namespace {

constexpr std::int32_t counterInputs = 3;
constexpr std::uint32_t counterSubs = 16;

// Kept: inputs are compared signed, so that negative ones go out as they are.
std::uint8_t counterSelector(std::int32_t input, std::uint32_t sub) {
    return static_cast<std::uint8_t>(static_cast<std::uint32_t>(input) << 4 | sub);
}

// False: lastError is set.
bool readDataRateLimit(const DeviceCall& call, std::uint8_t which, double* frequency) {
    if (frequency == nullptr) return true;
    const auto answer = call.ask(Command::dataRateLimit, Parameters().u8(which));
    if (answer) *frequency = answer->f32();
    return answer.has_value();
}

std::int32_t refreshChannelCount(const DeviceCall& call) {
    const auto answer = call.ask(Command::channelCount, Parameters().u8(0));
    if (!answer) return failure;
    if (answer->u16() <= channelLimit) call.record().activeChannels = answer->u16();
    return success;
}

}  // namespace

int32_t TORVIKgetFrequency(int32_t deviceNo, double* freq) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(freq != nullptr)) return failure;
        const auto answer = call.ask(Command::getFrequency);
        if (!answer) return failure;
        *freq = answer->f32();
        return success;
    });
}

int32_t TORVIKsetFrequency(int32_t deviceNo, double freq) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(true)) return failure;
        const std::int32_t result = call.acknowledge(Command::setFrequency, Parameters().f32(freq));
        return result == success ? restartAfterSetting(call.deviceNo()) : result;
    });
}

int32_t TORVIKgetDataRateRange(int32_t deviceNo, double* min, double* max) {
    constexpr std::uint8_t smallest = 0;
    constexpr std::uint8_t largest = 1;
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(true)) return failure;
        return readDataRateLimit(call, smallest, min) && readDataRateLimit(call, largest, max) ? success : failure;
    });
}

int32_t TORVIKgetCounterFreqMode(int32_t deviceNo, int32_t input, uint32_t sub, uint32_t* value) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        // Kept: a number above 39 stores no code, and an inactive device is not noticed.
        if (call.deviceNo() >= deviceLimit) return failure;
        if (!call.argumentsValid(input < counterInputs && sub < counterSubs && value != nullptr)) return failure;
        const auto answer = call.ask(Command::getCounterMode, Parameters().u8(counterSelector(input, sub)));
        if (!answer) return failure;
        *value = answer->u32();
        return success;
    });
}

int32_t TORVIKsetCounterFreqMode(int32_t deviceNo, int32_t input, uint32_t sub, uint32_t value) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(input < counterInputs && sub < counterSubs)) return failure;
        const std::int32_t result =
            call.acknowledge(Command::setCounterMode, Parameters().u8(counterSelector(input, sub)).u32(value));
        // The mode itself may change how many channels there are.
        return result == success && sub == 0 ? refreshChannelCount(call) : result;
    });
}

int32_t TORVIKreadAnalogueFilter(int32_t deviceNo, uint32_t* setting) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(setting != nullptr)) return failure;
        const auto answer = call.ask(Command::readAnalogueFilter, Parameters().u8(0));
        if (!answer) return failure;
        *setting = answer->u16();
        return success;
    });
}

int32_t TORVIKwriteAnalogueFilter(int32_t deviceNo, int32_t setting) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        // Kept: both refusals store their code, and the result is that of a success.
        if (!call.activeAnd(true)) return success;
        return call.acknowledge(Command::writeAnalogueFilter, Parameters().u16(static_cast<std::uint16_t>(setting)));
    });
}
