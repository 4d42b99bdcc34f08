#include "core/activation.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <optional>

#include "can/adapter_channel.h"
#include "can/pcan_api.h"
#include "can/receive_thread.h"
#include "core/ask.h"
#include "core/buffer_bound.h"
#include "core/call_control.h"
#include "core/device_setup.h"
#include "core/device_table.h"
#include "core/error_codes.h"
#include "core/measured_values.h"
#include "core/transaction.h"
#include "platform/thread.h"

namespace torvik {

namespace {

constexpr std::uint32_t debugOutputFlag = 0x02;
constexpr std::uint32_t pcanLogFlag = 0x04;
constexpr std::uint32_t protocolKind16Flag = 0x10;
constexpr std::uint32_t protocolKind32Flag = 0x20;
constexpr std::uint32_t standardIdentifierLimit = 2048;

// Generous: nobody can tell when a busy machine lets a thread run its last few instructions.
constexpr std::chrono::milliseconds returnTime(100);

struct BaudRate {
    std::uint32_t bitsPerSecond;
    std::uint16_t code;
};

constexpr std::array<BaudRate, 16> baudRates = {{
    {1000000, 0x0014},
    {800000, 0x0016},
    {500000, 0x001C},
    {250000, 0x011C},
    {125000, 0x031C},
    {100000, 0x432F},
    {95000, 0xC34E},
    {83000, 0x852B},
    {50000, 0x472F},
    {47000, 0x1414},
    {33000, 0x8B2F},
    {25000, 0x4F2F},
    {20000, 0x532F},
    {12500, 0x5F2F},
    {10000, 0x672F},
    {5000, 0x7F7F},
}};

constinit std::atomic<std::uint64_t> openedBy = 0;  // process
constinit std::atomic<bool> endsWithProcess = false;

// Those that have taken a record and still wait for their device: the adapter stays open for them.
constinit std::atomic<std::uint32_t> activationsInProgress = 0;

std::optional<std::uint16_t> baudCodeOf(std::uint32_t bitsPerSecond) {
    const auto* const found = std::ranges::find(baudRates, bitsPerSecond, &BaudRate::bitsPerSecond);
    if (found == baudRates.end()) return std::nullopt;
    return found->code;
}

// Opens the adapter as the settings say. Result: the baud code; nothing with lastError set.
std::optional<std::uint16_t> openAdapter(std::uint8_t deviceNo, const ActivationSettings& settings)
    REQUIRES(lifecycleMutex) {
    libraryState.debugOutput = (settings.flags & debugOutputFlag) != 0;
    libraryState.pcanLogging = (settings.flags & pcanLogFlag) != 0;
    if ((settings.flags & protocolKind16Flag) != 0) {
        libraryState.protocolKind = 16;
    } else if ((settings.flags & protocolKind32Flag) != 0) {
        libraryState.protocolKind = 32;
    } else {
        setError(deviceNo, error::unknownDeviceKind);
        return std::nullopt;
    }
    const std::optional<std::uint16_t> code = baudCodeOf(settings.baudRate);
    if (!code) {
        setError(deviceNo, error::wrongBaudRate);
        return std::nullopt;
    }
    openedBy = platform::processId();
    const AllCallsExcluded excluded(&deviceRecord(deviceNo));
    const bool opened = initAdapter(deviceNo, settings.adapterType, *code) == 0;
    // Once the adapter library is there, so that this library ends before it does.
    if (pcanLoaded() && !endsWithProcess.exchange(true)) platform::runBeforeLoadedLibrariesEnd(shutDown);
    return opened ? code : std::nullopt;
}

// Whether the device streams already. A failure is not reported and leaves `transmitting` as it is.
void readTransmitting(DeviceRecord& record, std::uint8_t deviceNo) {
    const auto answer = ask(deviceNo, Command::transmitMode, Parameters().u8(0));
    if (answer) record.transmitting = (answer->byte(3) & 1) == 0;
}

}  // namespace

std::int32_t Activation::begin() {
    libraryState.lastProtocolErrorDevice = deviceNo_;
    const std::uint32_t bufferSize = std::clamp<std::uint32_t>(settings_.bufferSize, 1, largestBufferLength);
    if (!setValueBufferLength(static_cast<std::int32_t>(bufferSize))) {
        setError(deviceNo_, error::mutexTimeout);
        return -1;
    }
    if (settings_.commandCanId >= standardIdentifierLimit || settings_.answerCanId >= standardIdentifierLimit ||
        settings_.commandCanId == settings_.answerCanId) {
        setError(deviceNo_, error::wrongIdentifiers);
        return -1;
    }
    if (!libraryState.adapterOpen) {
        const std::optional<std::uint16_t> code = openAdapter(deviceNo_, settings_);
        if (!code) return -1;
        openedWith_ = *code;
    }
    ++activationsInProgress;
    counted_ = true;
    setUpFailed_ = true;
    const DeviceRecord* const record = reserveRecord(deviceNo_, settings_.commandCanId, settings_.answerCanId);
    if (record == nullptr) return -1;
    setUpCount_ = record->setUpCount;
    return 0;
}

std::int32_t Activation::complete(std::uint32_t& channelCount) {
    DeviceRecord& record = deviceRecord(deviceNo_);
    if (!record.active || record.setUpCount != setUpCount_) {
        setError(record, error::notActive);
        return -1;
    }
    if (!setUpDevice(record, deviceNo_)) return -1;
    setUpFailed_ = false;
    if (!libraryState.receiveEventSet) pcanEventOn();
    record.baudCode = openedWith_;
    channelCount = record.activeChannels;
    if (channelCount == 0) {
        setError(record, error::noActiveChannels);
        return -1;
    }
    readTransmitting(record, deviceNo_);
    clearValueBuffers(record);
    setError(record, error::none);
    return 0;
}

void Activation::finish() {
    if (!counted_) return;
    --activationsInProgress;
    if (!setUpFailed_) return;
    const platform::LockGuard lock(lifecycleMutex);
    // initialisedDevices does not say it: releases count it down for devices that were not active, too.
    const bool inUse = activationsInProgress != 0 || std::ranges::any_of(deviceTable(), [](const DeviceRecord& record) {
                           return record.active.load();
                       });
    if (!inUse && libraryState.adapterOpen) releaseAdapter(true);
}

void releaseDevice(std::uint8_t deviceNo) {
    if (deviceNo < deviceLimit) beginExclusion(deviceRecord(deviceNo));
    const platform::LockGuard lock(lifecycleMutex);
    if (deviceNo < deviceLimit) {
        DeviceRecord& record = deviceRecord(deviceNo);
        record.gate.waitUntilLeft(0);
        tearDownDevice(record);
        destroyFilterObject(record);
        record.active = false;
        endExclusion(record);
    }
    // Kept: counted down for a device that was not active, too.
    if (libraryState.initialisedDevices > 0) --libraryState.initialisedDevices;
}

void releaseAll() {
    for (DeviceRecord& record : deviceTable())
        record.callCutShort = false;
    for (DeviceRecord& record : deviceTable())
        beginExclusion(record);
    {
        const platform::LockGuard lock(lifecycleMutex);
        for (DeviceRecord& record : deviceTable())
            record.gate.waitUntilLeft(0);
        closeAdapter();
        for (DeviceRecord& record : deviceTable()) {
            // A call that this release cut short finds its reason, although the table is zero otherwise.
            if (record.callCutShort.exchange(false)) setError(record, error::notActive);
        }
    }
    for (DeviceRecord& record : deviceTable())
        endExclusion(record);
}

namespace {

bool anyCallInside() {
    return libraryGate.occupied() ||
           std::ranges::any_of(deviceTable(), [](const DeviceRecord& record) { return record.gate.occupied(); });
}

// False: the limit was over first.
bool allCallsLeft(std::chrono::milliseconds limit) {
    const platform::TimePoint deadline = platform::clock().now() + limit;
    const auto left = [&](CallGate& gate) {
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(deadline - platform::clock().now());
        return gate.waitUntilLeft(0, std::max(rest, std::chrono::milliseconds(0)));
    };
    return left(libraryGate) &&
           std::ranges::all_of(deviceTable(), [&](DeviceRecord& record) { return left(record.gate); });
}

}  // namespace

void shutDown() {
    // A forked child has none of its parent's threads: nothing of the parent's is its to end.
    if (openedBy != 0 && openedBy != platform::processId()) return;
    libraryGate.close();
    for (DeviceRecord& record : deviceTable())
        record.gate.close();
    const bool anyoneInside = anyCallInside();
    for (DeviceRecord& record : deviceTable())
        wakeCalls(record);
    // A call that the adapter library does not let go cannot be waited for without end, and not again at the second of
    // two ends: Linux has one of the library and one before the adapter library's.
    const bool left = allCallsLeft(libraryState.callsGivenUp ? std::chrono::milliseconds(0) : mutexLimit);
    libraryState.callsGivenUp = !left;
    if (left) {
        const platform::LockGuard lock(lifecycleMutex);
        releaseAdapter(false);
    } else {
        endReceiving(mutexLimit);
    }
    // A call that is no longer counted still has to return from the library's code, which is unmapped next; so has the
    // receive thread that has been ended during a call.
    if (anyoneInside) platform::sleepFor(returnTime);
    for (DeviceRecord& record : deviceTable())
        endExclusion(record);
    libraryGate.open();
}

}  // namespace torvik
