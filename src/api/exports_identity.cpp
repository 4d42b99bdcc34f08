#include <cstdint>
#include <span>

#include "api/TORVIK.h"
#include "api/device_call.h"
#include "core/device_setup.h"
#include "params/device_reset.h"
#include "params/teds.h"

using namespace torvik;

int32_t TORVIKgetSerialNo(int32_t deviceNo, uint32_t* serial) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(serial != nullptr)) return failure;
        const auto answer = call.ask(Command::getSerialNumber);
        if (!answer) return failure;
        *serial = answer->u32();
        return success;
    });
}

int32_t TORVIKsetSerialNo(int32_t deviceNo, int32_t serial) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(serial != 0)) return failure;
        return call.acknowledge(Command::setSerialNumber, Parameters().u32(static_cast<std::uint32_t>(serial)));
    });
}

int32_t TORVIKgetTXmode(int32_t deviceNo, uint8_t index, uint32_t* mode) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(mode != nullptr)) return failure;
        // Kept: any index is passed on, although only 0 and 1 can be set.
        const auto answer = call.ask(Command::transmitMode, Parameters().u8(index));
        if (!answer) return failure;
        *mode = answer->u16();
        return success;
    });
}

int32_t TORVIKsetTXmode(int32_t deviceNo, uint32_t index, int32_t mode) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(index <= 1)) return failure;
        return call.acknowledge(
            Command::setTransmitMode,
            Parameters().u8(static_cast<std::uint8_t>(index)).u16(static_cast<std::uint16_t>(mode)));
    });
}

int32_t TORVIKgetMode(int32_t deviceNo, uint32_t* mode) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(mode != nullptr)) return failure;
        return readMode(call.deviceNo(), *mode);
    });
}

int32_t TORVIKsetMode(int32_t deviceNo, int32_t mode) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(true)) return failure;
        const auto result = call.acknowledge(Command::setMode, Parameters().u32(static_cast<std::uint32_t>(mode)));
        return result == success ? restartAfterSetting(call.deviceNo()) : result;
    });
}

int32_t TORVIKgetFirmwareVersion(int32_t deviceNo, uint32_t* version) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        // Kept: neither number nor activity is checked here; a number above 39 is refused when the command is sent.
        if (!call.argumentsValid(version != nullptr)) return failure;
        const auto answer = call.ask(Command::firmwareVersion);
        if (!answer) return failure;
        *version = answer->u32();
        return success;
    });
}

int32_t TORVIKgetHardwareVersion(int32_t deviceNo, uint32_t* version) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(version != nullptr)) return failure;
        const auto answer = call.ask(Command::hardwareVersion);
        if (!answer) return failure;
        *version = answer->u32();
        return success;
    });
}

int32_t TORVIKgetSoftwareConfiguration(int32_t deviceNo, uint32_t* config) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(config != nullptr)) return failure;
        const auto answer = call.ask(Command::softwareConfiguration);
        if (!answer) return failure;
        *config = answer->u32();
        return success;
    });
}

int32_t TORVIKgetCommandAvailable(int32_t deviceNo, uint8_t* query) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(query != nullptr)) return failure;
        return call.acknowledge(Command::commandAvailable, Parameters().u8(query[0]).u8(query[1]));
    });
}

int32_t TORVIKswitchBlocking(int32_t deviceNo, uint8_t* value) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(value != nullptr)) return failure;
        // The caller's bytes are a little-endian number.
        return call.acknowledge(Command::switchBlocking,
                                Parameters().u8(value[3]).u8(value[2]).u8(value[1]).u8(value[0]));
    });
}

int32_t TORVIKloadSettings(int32_t deviceNo, uint32_t set) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        // Kept: neither of these two refusals stores a code.
        if (call.deviceNo() >= deviceLimit || !call.record().active) return failure;
        return loadSettings(call.deviceNo(), set);
    });
}

int32_t TORVIKstoreSettings(int32_t deviceNo, uint8_t set) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(true)) return failure;
        return call.acknowledge(Command::storeSettings, Parameters().u8(set));
    });
}

int32_t TORVIKresetDevice(int32_t deviceNo) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(true)) return failure;
        return restartDevice(call.deviceNo());
    });
}

int32_t TORVIKreadDeviceHours(int32_t deviceNo, uint8_t index, double* hours) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(hours != nullptr)) return failure;
        const auto answer = call.ask(Command::readHours, Parameters().u8(index));
        if (!answer) return failure;
        *hours = answer->f32();
        return success;
    });
}

int32_t TORVIKwriteDeviceHours(int32_t deviceNo, double hours) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(true)) return failure;
        // Kept: no index, unlike reading.
        return call.acknowledge(Command::writeHours, Parameters().f32(hours));
    });
}

int32_t TORVIKgetTEDSactive(int32_t deviceNo, uint32_t bit, uint32_t* result) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(true)) return failure;
        // Kept: a null pointer stores its code, and the result is that of a success.
        if (!call.argumentsValid(result != nullptr)) return success;
        const auto answer = call.ask(Command::tedsActive);
        if (!answer) return failure;
        // Kept: the bit number wraps at 32.
        *result = bit == 0 ? answer->u32() : answer->u32() >> ((bit - 1) % 32) & 1;
        return success;
    });
}

int32_t TORVIKreadTEDSrawData(int32_t deviceNo, uint32_t selector, uint8_t* buffer, int32_t length, uint32_t offset) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        const auto signedOffset = static_cast<std::int32_t>(offset);
        if (!call.argumentsValid(buffer != nullptr && length >= 1 && signedOffset >= 0 && offset % 4 == 0))
            return failure;
        if (!call.activeAnd(true)) return failure;
        const std::span<std::uint8_t> bytes(buffer, static_cast<std::size_t>(length));
        return readTedsData(call.deviceNo(), static_cast<std::uint8_t>(selector), bytes, offset);
    });
}
