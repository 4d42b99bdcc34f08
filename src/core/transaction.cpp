#include "core/transaction.h"

#include <algorithm>
#include <array>

#include "can/pcan_api.h"
#include "core/device_table.h"
#include "core/error_codes.h"
#include "core/wire.h"

namespace torvik {

namespace {

constexpr std::uint8_t busyLockRefused = 66;
constexpr std::uint8_t answerDataLength = 6;

bool needsBusyLock(Command command) {
    return command != Command::requestValues && command != Command::resetDevice;
}

// 0 or the error code. After the time limit the lock is broken: whatever transaction held it has failed to end.
std::uint32_t takeBusyLock(DeviceRecord& record) {
    const platform::TimePoint deadline = platform::clock().now() + busyLimit;
    platform::LockGuard lock(record.busyLock);
    for (bool inTime = true;; inTime = record.busyFreed.waitUntil(record.busyLock, deadline)) {
        if (record.gate.closing()) return error::notActive;
        if (!record.busy.exchange(true)) return error::none;
        if (!inTime) return error::busyTimeout;
    }
}

// 0 once an answer is there, or the error code.
std::uint32_t waitForAnswer(DeviceRecord& record, platform::TimePoint deadline) {
    if (record.answerCount > 0) return error::none;
    platform::LockGuard lock(record.busyLock);
    for (bool inTime = true;; inTime = record.answerArrived.waitUntil(record.busyLock, deadline)) {
        if (record.answerCount > 0) return error::none;
        if (record.gate.closing()) return error::notActive;
        if (!inTime) return error::answerTimeout;
    }
}

// False: another caller has taken the answer meanwhile.
bool takeAnswer(DeviceRecord& record, std::uint8_t* answer) REQUIRES(answerMutex) {
    if (record.answerCount == 0) return false;
    if (record.answerReadIndex >= answerSlots) record.answerReadIndex = 0;
    std::ranges::copy(record.answerRing[record.answerReadIndex].data, answer);
    ++record.answerReadIndex;
    --record.answerCount;
    record.answersTaken.add();
    return true;
}

// 0 with the answer copied, or the error code. After a broken busy lock two callers can wait for the same answer: the
// one who finds it gone waits on to the same deadline.
std::uint32_t obtainAnswer(DeviceRecord& record, std::uint8_t* answer, const std::uint8_t* dataLength) {
    const platform::TimePoint deadline = platform::clock().now() + answerLimit;
    for (;;) {
        if (const std::uint32_t code = waitForAnswer(record, deadline); code != error::none) return code;
        if (answer == nullptr || dataLength == nullptr) return error::noResponse;
        if (!answerMutex.lockFor(mutexLimit)) return error::answerMutexTimeout;
        platform::TimedLock lock(answerMutex);
        if (takeAnswer(record, answer)) return error::none;
    }
}

void freeBusyLock(DeviceRecord& record) {
    {
        platform::LockGuard lock(record.busyLock);
        record.busy.exchange(false);
    }
    record.busyFreed.notifyOne();
}

std::int32_t resultOf(std::uint32_t code) {
    switch (code) {
        case error::noResponse:
        case error::answerMutexTimeout:
            return static_cast<std::int32_t>(code);
        default:
            return -1;
    }
}

}  // namespace

void freeTransaction(DeviceRecord& record) {
    record.keepLock = false;
    freeBusyLock(record);
}

std::uint8_t sendCommand(std::uint8_t deviceNo, Command command, std::span<const std::uint8_t> parameters) {
    if (deviceNo >= deviceLimit || parameters.size() > Parameters::limit) {
        setError(deviceNo, error::wrongFrameArguments);
        return static_cast<std::uint8_t>(error::wrongFrameArguments);
    }
    DeviceRecord& record = deviceRecord(deviceNo);
    if (needsBusyLock(command)) {
        if (const std::uint32_t code = takeBusyLock(record); code != error::none) {
            if (code == error::busyTimeout) freeTransaction(record);
            setError(record, code);
            return busyLockRefused;
        }
    } else if (record.gate.closing()) {
        setError(record, error::notActive);
        return busyLockRefused;
    }
    PcanMessage message;
    message.id = record.commandCanId;
    message.length = static_cast<std::uint8_t>(parameters.size() + 2);
    message.data[0] = static_cast<std::uint8_t>(0x80 | parameters.size());
    message.data[1] = static_cast<std::uint8_t>(command);
    std::ranges::copy(parameters, message.data.begin() + 2);
    const std::uint32_t status = pcanWrite(record.channelHandle, message);
    if (status == pcan::ok) return 0;
    if (libraryState.debugOutput) printPcanError(status);
    // Kept: requestValues and resetDevice free the lock too, although they never took it.
    freeBusyLock(record);
    setError(record, error::deviceWrite);
    return static_cast<std::uint8_t>(error::deviceWrite);
}

std::int32_t receiveAnswer(std::uint8_t deviceNo, std::uint8_t* answer, std::uint8_t* dataLength) {
    DeviceRecord& record = deviceRecord(deviceNo);
    const std::uint32_t code = obtainAnswer(record, answer, dataLength);
    if (code == error::none) {
        *dataLength = answerDataLength;
        if (!record.keepLock) freeBusyLock(record);
        return 0;
    }
    setError(record, code);
    freeTransaction(record);
    return resultOf(code);
}

std::int32_t expectAck(std::uint8_t deviceNo) {
    std::array<std::uint8_t, 8> bytes{};
    std::uint8_t dataLength = 0;
    if (receiveAnswer(deviceNo, bytes.data(), &dataLength) != 0) {
        // Kept: the more precise code is replaced.
        setError(deviceNo, error::internalCallFailed);
        return -1;
    }
    const AnswerView answer(bytes);
    if (answer.refused()) {
        setError(deviceNo, answer.status());
        return -1;
    }
    return 0;
}

bool pauseCall(DeviceRecord& record, std::chrono::milliseconds duration) {
    const platform::TimePoint deadline = platform::clock().now() + duration;
    platform::LockGuard lock(record.busyLock);
    while (!record.gate.closing()) {
        if (!record.pauseCutShort.waitUntil(record.busyLock, deadline)) return true;
    }
    return false;
}

void wakeCalls(DeviceRecord& record) {
    { platform::LockGuard lock(record.busyLock); }
    record.pauseCutShort.notifyAll();
    record.filterFreed.notifyAll();
    record.busyFreed.notifyAll();
    record.answerArrived.notifyAll();
}

bool storeAnswer(DeviceRecord& record, std::uint32_t setUpCount, const AnswerSlot& answer) {
    if (!answerMutex.lockFor(mutexLimit)) return false;
    {
        platform::TimedLock lock(answerMutex);
        if (record.setUpCount != setUpCount) return false;
        if (record.answerWriteIndex >= answerSlots) record.answerWriteIndex = 0;
        record.answerRing[record.answerWriteIndex] = answer;
        ++record.answerWriteIndex;
        record.frames.endAnswer(record.answerCount >= answerSlots);
        ++record.answerCount;
    }
    { platform::LockGuard lock(record.busyLock); }
    record.answerArrived.notifyOne();
    return true;
}

}  // namespace torvik
