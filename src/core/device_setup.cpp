#include "core/device_setup.h"

#include <algorithm>
#include <memory>
#include <new>
#include <optional>

#include "core/ask.h"
#include "core/call_control.h"
#include "core/device_table.h"
#include "core/error_codes.h"
#include "platform/faults.h"

namespace torvik {

namespace {

constexpr std::uint8_t valueIdentifierSetting = 2;
constexpr std::uint32_t firstFirmwareWithChannelCount = 0x0003000B;
constexpr std::uint32_t channelBitsOfMode = 7;

// Inactive records hold zeros, so that identifier 0 is always in use.
bool identifierInUse(std::uint32_t identifier) {
    const auto devices = std::span(deviceTable()).subspan(1);
    return std::ranges::any_of(devices, [identifier](const DeviceRecord& record) {
        return record.commandCanId == identifier || record.answerCanId == identifier || record.valueCanId == identifier;
    });
}

// 0 or the error code.
std::uint32_t allocateValueBuffers(DeviceRecord& record, platform::TimePoint deadline) try {
    const std::int32_t length = libraryState.valueBufferLength;
    std::array<ValueBuffer, channelLimit> buffers;
    for (ValueBuffer& buffer : buffers) {
        if (platform::injectedFault(platform::FaultPoint::allocation) != 0) return error::outOfMemory;
        buffer.entries = std::make_unique<ValueEntry[]>(static_cast<std::size_t>(length));
        buffer.allocated = length;
    }
    const bool stored =
        exclusively(valueMutex, deadline, [&]() NO_THREAD_SAFETY_ANALYSIS { record.valueBuffer = std::move(buffers); });
    return stored ? error::none : error::mutexTimeout;
} catch (const std::bad_alloc&) {
    return error::outOfMemory;
}

bool storeIdentifiers(DeviceRecord& record, std::uint32_t commandCanId, std::uint32_t answerCanId,
                      platform::TimePoint deadline) {
    if (!answerMutex.lockUntil(deadline)) return false;
    platform::TimedLock lock(answerMutex);
    record.commandCanId = commandCanId;
    record.answerCanId = answerCanId;
    record.active = true;
    updateRoutes();
    return true;
}

bool storeValueIdentifier(DeviceRecord& record, std::uint32_t identifier) {
    if (!answerMutex.lockFor(mutexLimit)) return false;
    platform::TimedLock lock(answerMutex);
    record.valueCanId = identifier;
    updateRoutes();
    return true;
}

bool askValueIdentifier(DeviceRecord& record, std::uint8_t deviceNo) {
    const auto answer = ask(deviceNo, Command::canSetting, Parameters().u8(valueIdentifierSetting));
    if (!answer) {
        // Kept: the reason is replaced, a refusal's status too.
        setError(deviceNo, error::noValueIdentifier);
        return false;
    }
    if (!storeValueIdentifier(record, answer->u32())) {
        setError(deviceNo, error::mutexTimeout);
        return false;
    }
    if (libraryState.debugOutput) debugPrint("Value ID %8X \n", answer->u32());
    return true;
}

std::optional<std::uint32_t> askChannelCount(const DeviceRecord& record, std::uint8_t deviceNo) {
    if (record.firmwareVersion < firstFirmwareWithChannelCount) {
        std::uint32_t mode = 0;
        if (readMode(deviceNo, mode) != 0) return std::nullopt;
        return mode & channelBitsOfMode;
    }
    const auto answer = ask(deviceNo, Command::channelCount, Parameters().u8(0));
    if (!answer) return std::nullopt;
    return answer->byte(3);
}

// Everything that needs the device's own answers. False: lastError is set.
bool questionDevice(DeviceRecord& record, std::uint8_t deviceNo) {
    if (!askValueIdentifier(record, deviceNo)) return false;
    const auto version = ask(deviceNo, Command::firmwareVersion, Parameters());
    if (!version) return false;
    record.firmwareVersion = version->u32();
    const std::optional<std::uint32_t> count = askChannelCount(record, deviceNo);
    if (!count) return false;
    record.activeChannels = *count <= channelLimit ? *count : 0;
    return true;
}

// When the values stay locked, the record stays active.
void freeValueBuffers(DeviceRecord& record, platform::TimePoint deadline) {
    exclusively(valueMutex, deadline, [&record]() NO_THREAD_SAFETY_ANALYSIS {
        record.active = false;
        for (ValueBuffer& buffer : record.valueBuffer)
            buffer.entries.reset();
    });
}

// Zeroes the record and prepares everything that needs no answer of the device. Result: 0 or the error code.
std::uint32_t prepareRecord(DeviceRecord& record, std::uint8_t deviceNo, std::uint32_t commandCanId,
                            std::uint32_t answerCanId) {
    const platform::TimePoint deadline = platform::deadlineAfter(mutexLimit);
    {
        const CallsExcluded excluded(record, deadline);
        if (!excluded.alone() || !zeroRecord(record, deadline)) return error::mutexTimeout;
    }
    record.channelHandle = libraryState.channelHandle.load();
    record.baudCode = libraryState.baudCode.load();
    record.ownDeviceNo = deviceNo;
    if (const std::uint32_t code = allocateValueBuffers(record, deadline); code != error::none) return code;
    if (storeIdentifiers(record, commandCanId, answerCanId, deadline)) return error::none;
    freeValueBuffers(record, deadline);
    return error::mutexTimeout;
}

}  // namespace

std::int32_t readMode(std::uint8_t deviceNo, std::uint32_t& mode) {
    const auto exchange = exchangeAnswer(deviceNo, Command::mode, Parameters());
    if (!exchange) return -1;
    if (exchange->refused()) {
        // Kept: the device's own code is replaced.
        setError(deviceNo, error::internalCallFailed);
        return -1;
    }
    mode = exchange->u32();
    return 0;
}

DeviceRecord* reserveRecord(std::uint8_t deviceNo, std::uint32_t commandCanId, std::uint32_t answerCanId) {
    if (deviceNo == 0 || libraryState.initialisedDevices >= deviceLimit) {
        setError(deviceNo, error::invalidDevice);
        return nullptr;
    }
    if (identifierInUse(commandCanId) || identifierInUse(answerCanId)) {
        setError(deviceNo, error::identifierInUse);
        return nullptr;
    }
    DeviceRecord& record = deviceRecord(deviceNo);
    if (const std::uint32_t code = prepareRecord(record, deviceNo, commandCanId, answerCanId); code != error::none) {
        setError(record, code);
        return nullptr;
    }
    return &record;
}

bool setUpDevice(DeviceRecord& record, std::uint8_t deviceNo) {
    if (!questionDevice(record, deviceNo)) {
        tearDownDevice(record, platform::deadlineAfter(mutexLimit));
        return false;
    }
    if (libraryState.debugOutput) {
        debugPrint("Aktive Kanaele %i \n", static_cast<int>(record.activeChannels));
        debugPrint("CANDEV-Handle %i initialisiert\n", record.ownDeviceNo.load());
    }
    ++libraryState.initialisedDevices;
    return true;
}

void tearDownDevice(DeviceRecord& record, platform::TimePoint deadline) {
    if (!record.active) return;
    const bool identifiersCleared = exclusively(answerMutex, deadline, [&record]() NO_THREAD_SAFETY_ANALYSIS {
        record.commandCanId = 0;
        record.answerCanId = 0;
        record.valueCanId = 0;
        updateRoutes();
    });
    if (valueMutex.exists() || identifiersCleared) freeValueBuffers(record, deadline);
}

}  // namespace torvik
