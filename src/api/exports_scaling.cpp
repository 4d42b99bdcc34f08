#include <cstdint>

#include "api/TORVIK.h"
#include "api/device_call.h"
#include "params/device_reset.h"

using namespace torvik;

namespace {

Parameters selecting(std::uint32_t channel) {
    return Parameters().u8(static_cast<std::uint8_t>(channel));
}

}  // namespace

int32_t TORVIKsetZero(int32_t deviceNo, uint32_t channel) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(channel <= lastChannel)) return failure;
        return call.acknowledge(Command::setZero, selecting(channel));
    });
}

int32_t TORVIKwriteZero(int32_t deviceNo, uint32_t channel, int32_t zero) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(channel <= lastChannel)) return failure;
        return call.acknowledge(Command::writeZero, selecting(channel).u32(static_cast<std::uint32_t>(zero)));
    });
}

int32_t TORVIKreadZero(int32_t deviceNo, uint32_t channel, uint32_t* zero) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(isChannel(channel) && zero != nullptr)) return failure;
        const auto answer = call.ask(Command::readZero, selecting(channel));
        if (!answer) return failure;
        *zero = answer->u32();
        return success;
    });
}

int32_t TORVIKreadAoutOffset(int32_t deviceNo, uint32_t channel, double* offset) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(isChannel(channel) && offset != nullptr)) return failure;
        const auto answer = call.ask(Command::readAoutOffset, selecting(channel));
        if (!answer) return failure;
        *offset = answer->f32();
        return success;
    });
}

int32_t TORVIKwriteAoutOffset(int32_t deviceNo, uint32_t channel, double offset) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(channel <= lastChannel)) return failure;
        const std::int32_t result = call.acknowledge(Command::writeAoutOffset, selecting(channel).f32(offset));
        return result == success ? restartAfterSetting(call.deviceNo()) : result;
    });
}

int32_t TORVIKreadAoutScale(int32_t deviceNo, uint32_t channel, double* scale) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(isChannel(channel) && scale != nullptr)) return failure;
        const auto answer = call.ask(Command::readAoutScale, selecting(channel));
        if (!answer) return failure;
        *scale = answer->f32();
        return success;
    });
}

int32_t TORVIKwriteAoutScale(int32_t deviceNo, uint32_t channel, double scale) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(channel <= lastChannel)) return failure;
        return call.acknowledge(Command::writeAoutScale, selecting(channel).f32(scale));
    });
}

int32_t TORVIKwriteAoutDirect(int32_t deviceNo, uint32_t channel, int32_t value) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(channel <= lastChannel)) return failure;
        return call.acknowledge(Command::writeAoutDirect, selecting(channel).u16(static_cast<std::uint16_t>(value)));
    });
}

int32_t TORVIKgetAoutType(int32_t deviceNo, uint32_t channel, uint8_t* typeA, uint8_t* typeB) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(isChannel(channel) && typeA != nullptr && typeB != nullptr)) return failure;
        const auto answer = call.ask(Command::getAoutType, selecting(channel));
        if (!answer) return failure;
        // Kept: read crosswise to how they are written; callers rely on the exchanged bytes.
        *typeA = answer->byte(3);
        *typeB = answer->byte(2);
        return success;
    });
}

int32_t TORVIKsetAoutType(int32_t deviceNo, uint32_t channel, uint8_t typeA, uint8_t typeB) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(channel <= lastChannel)) return failure;
        const std::int32_t result = call.acknowledge(Command::setAoutType, selecting(channel).u8(typeA).u8(typeB));
        return result == success ? restartAfterSetting(call.deviceNo()) : result;
    });
}

int32_t TORVIKreadUserOffset(int32_t deviceNo, uint32_t channel, double* offset) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(isChannel(channel) && offset != nullptr)) return failure;
        const auto answer = call.ask(Command::readUserOffset, selecting(channel));
        if (!answer) return failure;
        *offset = answer->f32();
        return success;
    });
}

int32_t TORVIKwriteUserOffset(int32_t deviceNo, uint32_t channel, double offset) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(channel <= lastChannel)) return failure;
        return call.acknowledge(Command::writeUserOffset, selecting(channel).f32(offset));
    });
}

int32_t TORVIKreadUserScale(int32_t deviceNo, int32_t channel, double* scale) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        // Kept: a number above 39 is passed over in silence, an inactive device is not noticed, and refusals give 0.
        if (call.deviceNo() >= deviceLimit) return success;
        const auto number = static_cast<std::uint32_t>(channel);
        if (!call.argumentsValid(isChannel(number) && scale != nullptr)) return success;
        const auto answer = call.ask(Command::readUserScale, selecting(number));
        if (!answer) return failure;
        *scale = answer->f32();
        return success;
    });
}

int32_t TORVIKwriteUserScale(int32_t deviceNo, uint32_t channel, double scale) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(true)) return failure;
        // Kept: a wrong channel stores its code, and the result is that of a success.
        if (!call.argumentsValid(channel <= lastChannel)) return success;
        return call.acknowledge(Command::writeUserScale, selecting(channel).f32(scale));
    });
}

int32_t TORVIKgetNoiseCutThreshold(int32_t deviceNo, uint32_t channel, double* threshold) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(isChannel(channel) && threshold != nullptr)) return failure;
        const auto answer = call.ask(Command::getNoiseCut, selecting(channel));
        if (!answer) return failure;
        *threshold = answer->f32();
        return success;
    });
}

int32_t TORVIKsetNoiseCutThreshold(int32_t deviceNo, uint32_t channel, double threshold) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(channel <= lastChannel)) return failure;
        return call.acknowledge(Command::setNoiseCut, selecting(channel).f32(threshold));
    });
}

int32_t TORVIKreadMaxMinVal(int32_t deviceNo, uint32_t channel, double* value, double* second) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(isChannel(channel) && value != nullptr && second != nullptr)) return failure;
        if (sendCommand(call.deviceNo(), Command::maximumMinimum, selecting(channel).bytes()) != 0) return failure;
        const KeptTransaction kept(call.record());
        // Kept: nothing of the first answer is used; the second result is always 0.
        if (!nextAnswer(call.deviceNo())) return failure;
        *second = 0.0;
        const auto answer = takeAnswer(call.deviceNo());
        if (!answer) return call.fail(error::internalCallFailed);
        if (answer->refused()) return call.fail(answer->status());
        *value = answer->f32();
        return success;
    });
}
