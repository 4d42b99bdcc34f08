#include "params/device_reset.h"

#include <chrono>

#include "core/ask.h"
#include "core/device_table.h"
#include "core/error_codes.h"
#include "core/measured_values.h"
#include "core/transaction.h"

namespace torvik {

namespace {

constexpr std::uint32_t firstFirmwareWithReset = 0x00030009;
constexpr std::chrono::milliseconds restartTime(700);
constexpr std::chrono::milliseconds loadTime(300);
constexpr std::uint32_t factorySet = 1;

// A failure is not reported.
void restoreStream(DeviceRecord& record, std::uint8_t deviceNo, bool transmitting) {
    const Command command = transmitting ? Command::startTransmitting : Command::stopTransmitting;
    if (acknowledge(deviceNo, command, {}) == 0) record.transmitting = transmitting;
}

}  // namespace

std::int32_t restartDevice(std::uint8_t deviceNo) {
    DeviceRecord& record = deviceRecord(deviceNo);
    if (record.firmwareVersion < firstFirmwareWithReset) {
        setError(record, error::firmwareUnsupported);
        return -1;
    }
    const bool transmitting = record.transmitting;
    if (sendCommand(deviceNo, Command::resetDevice, {}) != 0) return -1;
    const bool cleared = clearValueBuffers(record);
    if (!pauseCall(record, restartTime)) {
        setError(record, error::notActive);
        return -1;
    }
    restoreStream(record, deviceNo, transmitting);
    return cleared ? 0 : static_cast<std::int32_t>(error::clearBuffer);
}

std::int32_t restartAfterSetting(std::uint8_t deviceNo) {
    const std::int32_t result = restartDevice(deviceNo);
    const bool unsupported = result == -1 && deviceRecord(deviceNo).lastError == error::firmwareUnsupported;
    return unsupported ? 0 : result;
}

std::int32_t loadSettings(std::uint8_t deviceNo, std::uint32_t set) {
    if (const std::int32_t result =
            acknowledge(deviceNo, Command::loadSettings, Parameters().u8(static_cast<std::uint8_t>(set)));
        result != 0)
        return result;
    if (set == factorySet) {
        if (!pauseCall(deviceRecord(deviceNo), loadTime)) return -1;
        if (acknowledge(deviceNo, Command::storeSettings, Parameters().u8(0)) != 0) return -1;
    }
    return restartAfterSetting(deviceNo);
}

}  // namespace torvik
