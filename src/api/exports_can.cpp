#include <cstdint>

#include "api/TORVIK.h"
#include "api/device_call.h"

using namespace torvik;

namespace {

constexpr std::uint8_t lastMappingIndex = 16;
constexpr std::uint8_t channelCountIndex = 0;

}  // namespace

int32_t TORVIKgetCANSettings(int32_t deviceNo, uint8_t index, uint32_t* value) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(value != nullptr)) return failure;
        const auto answer = call.ask(Command::canSetting, Parameters().u8(index));
        if (!answer) return failure;
        *value = answer->u32();
        return success;
    });
}

int32_t TORVIKsetCANSettings(int32_t deviceNo, uint8_t index, int32_t value) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(true)) return failure;
        return call.acknowledge(Command::setCanSetting, Parameters().u8(index).u32(static_cast<std::uint32_t>(value)));
    });
}

int32_t TORVIKsetID(int32_t deviceNo, uint8_t* code) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(code != nullptr)) return failure;
        return call.acknowledge(Command::setIdentifier, Parameters().u8(code[0]).u8(code[1]).u8(code[2]).u8(code[3]));
    });
}

int32_t TORVIKgetIDState(int32_t deviceNo, uint8_t* state) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(state != nullptr)) return failure;
        const auto answer = call.ask(Command::identifierState);
        if (!answer) return failure;
        *state = answer->byte(2);
        return success;
    });
}

int32_t TORVIKgetTXMapping(int32_t deviceNo, uint8_t index, uint32_t* value) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(index <= lastMappingIndex && value != nullptr)) return failure;
        const auto answer = call.ask(Command::channelCount, Parameters().u8(index));
        if (!answer) return failure;
        const std::uint32_t high = answer->byte(2);
        const std::uint32_t low = answer->byte(3);
        // Kept: an entry is packed in another way than it is written; callers repack it.
        *value = index == channelCountIndex ? answer->u16() : high << 16 | (low & 0xF0) << 4 | (low & 0x0F);
        return success;
    });
}

int32_t TORVIKsetTXMapping(int32_t deviceNo, uint8_t index, int32_t value) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(index <= lastMappingIndex && (index != channelCountIndex || value != 0))) return failure;
        const auto answer =
            call.ask(Command::setTransmitMapping, Parameters().u8(index).u16(static_cast<std::uint16_t>(value)));
        if (!answer) return failure;
        const auto channels = static_cast<std::uint8_t>(value);
        // A count that no set can have is left to the device.
        if (index == channelCountIndex && channels <= channelLimit) call.record().activeChannels = channels;
        return success;
    });
}
