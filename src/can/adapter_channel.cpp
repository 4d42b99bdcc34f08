#include "can/adapter_channel.h"

#include <chrono>
#include <optional>

#include "can/adapter_event.h"
#include "can/pcan_api.h"
#include "can/receive_thread.h"
#include "core/call_control.h"
#include "core/device_setup.h"
#include "core/device_table.h"
#include "core/error_codes.h"

namespace torvik {

namespace {

constexpr std::uint8_t failed = 255;

std::optional<std::uint8_t> channelOf(std::uint8_t adapterType) {
    switch (adapterType) {
        case 1:
            return std::uint8_t{0x51};
        case 2:
            return std::uint8_t{0x41};
        case 3:
            return std::uint8_t{0x61};
        case 4:
            return std::uint8_t{0x01};
        default:
            return std::nullopt;
    }
}

std::uint8_t failWith(std::uint8_t deviceNo, std::uint32_t code) {
    setError(deviceNo, code);
    return failed;
}

// 0 or the status, which has been reported.
std::uint32_t setAdapterOption(std::uint16_t channel, std::uint8_t parameter, std::uint32_t value,
                               const char* message) {
    const std::uint32_t status = pcanSetValue(channel, parameter, value);
    if (status != pcan::ok && libraryState.debugOutput) debugPrint("%s [%u]\n", message, status);
    return status;
}

std::uint32_t setAdapterOptions() {
    if (libraryState.pcanLogging) {
        if (const std::uint32_t status = setAdapterOption(pcan::noChannel, pcan::logConfigure, pcan::logFunctionAll,
                                                          "Fehler PCAN_LOG_CONFIGURE - LOG_FUNCTION_ALL");
            status != pcan::ok) {
            return status;
        }
        if (const std::uint32_t status = setAdapterOption(pcan::noChannel, pcan::logStatus, pcan::parameterOn,
                                                          "Fehler PCAN_LOG_STATUS - PCAN_PARAMETER_ON");
            status != pcan::ok) {
            return status;
        }
    }
    return setAdapterOption(libraryState.channelHandle, pcan::busOffAutoReset, pcan::parameterOn,
                            "Fehler PCAN_BUSOFF_AUTORESET - PCAN_PARAMETER_ON");
}

bool createMutexes() {
    const std::uint32_t answerError = answerMutex.create();
    if (answerError != 0 && libraryState.debugOutput)
        debugPrint("CreateMutex error: %d\n", static_cast<int>(answerError));
    const std::uint32_t valueError = valueMutex.create();
    if (valueError != 0 && libraryState.debugOutput)
        debugPrint("CreateReadMutex error: %d\n", static_cast<int>(valueError));
    return answerError == 0 && valueError == 0;
}

void reportEventOffFailure(std::uint32_t status) {
    if (!libraryState.debugOutput) return;
    debugPrint("Fehler beim Ruecksetzen des Events\n");
    printPcanError(status);
}

// Takes the event from the adapter and closes it. Whatever the adapter says, the next event has to be registered anew.
// Result: the adapter's status, 0 when there is no event.
std::uint32_t closeReceiveEvent() {
    libraryState.receiveEventSet = false;
    if (!libraryState.receiveEvent.exists()) return pcan::ok;
    const std::uint32_t status = pcanEventOff();
    if (status != pcan::ok) reportEventOffFailure(status);
    libraryState.receiveEvent.close();
    return status;
}

void takeDownAllDevices(platform::TimePoint deadline) REQUIRES(lifecycleMutex) {
    for (DeviceRecord& record : deviceTable())
        tearDownDevice(record, deadline);
    libraryState.initialisedDevices = 0;
}

void closeMutexes() {
    answerMutex.close();
    valueMutex.close();
}

}  // namespace

std::uint8_t initAdapter(std::uint8_t deviceNo, std::uint8_t adapterType, std::uint16_t baudCode) {
    libraryState.initialisedDevices = 0;
    for (DeviceRecord& record : deviceTable()) {
        if (!record.gate.leftToLastCall()) zeroRecord(record);
    }
    libraryState.adapterOpen = false;
    libraryState.receiveEventSet = false;
    libraryState.callsGivenUp = false;
    libraryState.adapterType = adapterType;
    const std::optional<std::uint8_t> channel = channelOf(adapterType);
    if (!channel) {
        if (libraryState.debugOutput) debugPrint("Der CAN-Adapter wird nicht unterstuetzt\n");
        // Kept: no code is stored for this failure.
        return failWith(deviceNo, error::none);
    }
    libraryState.channelHandle = *channel;
    loadPcanApi();
    libraryState.baudCode = baudCode == 0 ? defaultBaudCode : baudCode;
    if (const std::uint32_t status = pcanInitialize(*channel, libraryState.baudCode); status != pcan::ok) {
        if (libraryState.debugOutput) {
            printPcanError(status);
            debugPrint("Fehler Aufruf PCANInitialize [%u]\n", status);
        }
        return failWith(deviceNo, status);
    }
    libraryState.adapterOpen = true;
    if (const std::uint32_t systemError = libraryState.receiveEvent.create(); systemError != 0) {
        if (libraryState.debugOutput) {
            debugPrint("Das EventHandle konnte nicht initialisert werden(%d)\n", static_cast<int>(systemError));
        }
        return failWith(deviceNo, error::eventCreation);
    }
    if (const std::uint32_t status = setAdapterOptions(); status != pcan::ok) return failWith(deviceNo, status);
    if (!createMutexes()) return failWith(deviceNo, error::mutexStart);
    if (!startReceiveThread()) {
        if (libraryState.debugOutput) debugPrint("Der LeseThread konnte nicht gestartet werden\n");
        // Kept: stored for device 0, whichever device is being activated.
        return failWith(0, error::threadStart);
    }
    if (libraryState.debugOutput) debugPrint("Der CAN-Adapter ist initialisiert\n");
    if (!libraryState.receiveEventSet) pcanEventOn();
    return 0;
}

std::uint8_t pcanEventOn() {
    const std::uint32_t status = registerReceiveEvent();
    if (status == pcan::ok) {
        libraryState.receiveEventSet = true;
    } else if (libraryState.debugOutput) {
        debugPrint("Fehler beim Setzen des Events\n");
        printPcanError(status);
    }
    return static_cast<std::uint8_t>(status);
}

std::uint8_t releaseAdapter(bool uninitialize, platform::TimePoint deadline) {
    for (DeviceRecord& record : deviceTable())
        beginExclusion(record);
    beginReceiveEnd();
    for (DeviceRecord& record : deviceTable())
        callsLeft(record, 0, deadline);
    stopReceiveThread(uninitialize ? std::optional(platform::timeUntil(deadline)) : std::nullopt);
    takeDownAllDevices(deadline);
    closeMutexes();
    if (libraryState.adapterOpen && libraryState.receiveEvent.exists()) pcanEventOff();
    std::uint32_t status = closeReceiveEvent();
    if (uninitialize)
        status = libraryState.adapterOpen ? pcanUninitialize(libraryState.channelHandle) : pcan::unknownError;
    libraryState.adapterOpen = false;
    for (DeviceRecord& record : deviceTable())
        endRelease(record);
    return static_cast<std::uint8_t>(status);
}

void closeAdapter(platform::TimePoint deadline) {
    // The thread ends while the calls are waited for.
    beginReceiveEnd();
    for (DeviceRecord& record : deviceTable())
        callsLeft(record, 0, deadline);
    stopReceiveThread(platform::timeUntil(deadline));
    takeDownAllDevices(deadline);
    for (DeviceRecord& record : deviceTable()) {
        record.active = false;
        if (!record.gate.leftToLastCall() && callsLeft(record, 0, deadline)) zeroRecord(record, deadline);
    }
    pcanSetValue(libraryState.channelHandle, pcan::receiveEvent, 0);
    pcanUninitialize(libraryState.channelHandle);
    libraryState.adapterOpen = false;
    closeReceiveEvent();
    closeMutexes();
}

}  // namespace torvik
