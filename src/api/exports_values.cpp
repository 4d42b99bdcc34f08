#include <span>

#include "api/TORVIK.h"
#include "api/device_call.h"
#include "core/measured_values.h"

using namespace torvik;

namespace {

constexpr std::uint32_t lastBlockChannel = 7;  // channel 8 cannot be read in blocks: kept
constexpr std::uint32_t lastCountedChannel = 9;

}  // namespace

int32_t TORVIKread(int32_t deviceNo, uint32_t channel, double* value) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.numberValid() || !call.active()) return failure;
        if (!call.argumentsValid(channel >= 1 && channel <= lastChannel && value != nullptr)) return failure;
        return readValue(call.record(), channel, *value);
    });
}

int32_t TORVIKreadMultiple(int32_t deviceNo, uint32_t channel, double* values, int32_t count, int32_t* countRead,
                           uint32_t* status) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.numberValid() || !call.argumentsValid(channel <= lastBlockChannel) || !call.active()) return failure;
        const auto channels = static_cast<std::int32_t>(call.record().activeChannels);
        if (channels < 1) return call.fail(error::notActive);
        if (!call.argumentsValid(channel != 0 || count % channels == 0)) return failure;
        if (!call.argumentsValid(count >= 1 && values != nullptr && countRead != nullptr)) return failure;
        *countRead = 0;
        const std::span<double> wanted(values, static_cast<std::size_t>(count));
        if (channel == 0) return readSets(call.record(), wanted, *countRead, status);
        return readChannel(call.record(), channel, wanted, *countRead, status);
    });
}

int32_t TORVIKreceived(int32_t deviceNo, uint32_t channel, int32_t* count) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        // Kept: a number above 39 stores no code.
        if (call.deviceNo() >= deviceLimit) return failure;
        if (!call.argumentsValid(channel <= lastCountedChannel) || !call.active()) return failure;
        std::int32_t waiting = 0;
        if (!countValues(call.record(), channel, waiting)) return failure;
        if (count != nullptr) *count = waiting;
        return success;
    });
}

int32_t TORVIKclearDLLbuffer(int32_t deviceNo) {
    constexpr auto notCleared = static_cast<std::int32_t>(error::clearBuffer);
    return deviceCall(deviceNo, notCleared, [&](const DeviceCall& call) {
        if (call.deviceNo() >= deviceLimit) return notCleared;
        return clearValueBuffers(call.record()) ? success : notCleared;
    });
}

int32_t TORVIKgetValue(int32_t deviceNo) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(true)) return failure;
        return sendCommand(call.deviceNo(), Command::requestValues, {}) == 0 ? success : failure;
    });
}

int32_t TORVIKgetRawValue(int32_t deviceNo, uint32_t channel, uint32_t* value) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(channel >= 1 && channel <= lastChannel && value != nullptr)) return failure;
        const auto answer = call.ask(Command::rawValue, Parameters().u8(static_cast<std::uint8_t>(channel)));
        if (!answer) return failure;
        *value = answer->u32();
        return success;
    });
}

int32_t TORVIKstartTX(int32_t deviceNo) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        // A number above 39 is left to the command transaction to refuse, with its own code.
        if (call.deviceNo() < deviceLimit && !call.active()) return failure;
        const std::int32_t result = call.acknowledge(Command::startTransmitting);
        if (result == success) call.record().transmitting = true;
        return result;
    });
}

int32_t TORVIKstopTX(int32_t deviceNo) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        // Kept: a number above 39 gives a result of its own and stores no code.
        if (call.deviceNo() >= deviceLimit) return static_cast<std::int32_t>(error::stopTransmitting);
        if (!call.active()) return failure;
        const std::int32_t result = call.acknowledge(Command::stopTransmitting);
        if (result == success) call.record().transmitting = false;
        return result;
    });
}

int32_t TORVIKclearDeviceBuf(int32_t deviceNo) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(true)) return failure;
        return call.acknowledge(Command::clearDeviceBuffer);
    });
}

int32_t TORVIKclearMaximumValue(int32_t deviceNo, uint32_t channel) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(channel <= lastChannel)) return failure;
        return call.acknowledge(Command::clearMaximum, Parameters().u8(static_cast<std::uint8_t>(channel)));
    });
}
