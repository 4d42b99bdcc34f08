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

constinit std::atomic<std::uint64_t> openedBy = 0;  // process that opened the adapter last
constinit std::atomic<bool> adapterInUse = false;   // from the begin of its opening until it is closed
constinit std::atomic<bool> endsWithProcess = false;
constinit std::atomic<bool> forksAreNoticed = false;
// What the owner of the lifecycle lock does before it gives the lock back.
constinit std::atomic<bool> closingDue = false;       // of the adapter, if nobody uses it
constinit std::atomic<bool> releaseOfAllDue = false;  // as DeviceRecord::releaseDue

// Those that have taken a record and still wait for their device: the adapter stays open for them.
constinit std::atomic<std::uint32_t> activationsInProgress = 0;

std::optional<std::uint16_t> baudCodeOf(std::uint32_t bitsPerSecond) {
    const auto* const found = std::ranges::find(baudRates, bitsPerSecond, &BaudRate::bitsPerSecond);
    if (found == baudRates.end()) return std::nullopt;
    return found->code;
}

// Turns every call away for ever. Runs in the only thread of the child.
void startForkedChild() {
    CallGate::renewInForkedChild();
    if (!adapterInUse) return;
    libraryGate.close();
    for (DeviceRecord& record : deviceTable())
        record.gate.close();
}

// False: lastError is set. The adapter may be open all the same, when only a later step failed.
bool openChannel(std::uint8_t deviceNo, std::uint8_t adapterType, std::uint16_t baudCode, platform::TimePoint deadline)
    REQUIRES(lifecycleMutex) {
    const AllCallsExcluded excluded(deviceRecord(deviceNo), deadline);
    if (!excluded.alone()) {
        setError(deviceNo, error::mutexTimeout);
        return false;
    }
    openedBy = platform::processId();
    adapterInUse = true;
    if (!forksAreNoticed.exchange(true)) platform::runInForkedChild(startForkedChild);
    const bool opened = initAdapter(deviceNo, adapterType, baudCode) == 0;
    adapterInUse = libraryState.adapterOpen.load();
    return opened;
}

// Opens the adapter as the settings say.
// Result: the baud code; nothing with lastError set.
std::optional<std::uint16_t> openAdapter(std::uint8_t deviceNo, const ActivationSettings& settings,
                                         platform::TimePoint deadline) REQUIRES(lifecycleMutex) {
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
    const bool opened = openChannel(deviceNo, settings.adapterType, *code, deadline);
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
        const std::optional<std::uint16_t> code = openAdapter(deviceNo_, settings_, deadline_);
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

namespace {

void countDeviceOut() {
    std::uint8_t count = libraryState.initialisedDevices;
    while (count > 0 && !libraryState.initialisedDevices.compare_exchange_weak(count, count - 1)) {
    }
}

// Both ends of a release are called with new calls turned away, and let them in again.
void takeOutOfUse(DeviceRecord& record, platform::TimePoint deadline) REQUIRES(lifecycleMutex) {
    callsLeft(record, 0, deadline);
    tearDownDevice(record, deadline);
    record.active = false;
    endRelease(record);
}

void takeAllOutOfUse(platform::TimePoint deadline) REQUIRES(lifecycleMutex) {
    closeAdapter(deadline);
    adapterInUse = false;
    for (DeviceRecord& record : deviceTable()) {
        // A call that this release cut short finds its reason, although the table is zero otherwise.
        if (record.callCutShort.exchange(false)) setError(record, error::notActive);
        endRelease(record);
    }
}

void closeAdapterIfUnused(platform::TimePoint deadline) REQUIRES(lifecycleMutex) {
    // initialisedDevices does not say it: releases count it down for devices that were not active, too.
    const bool inUse = activationsInProgress != 0 || std::ranges::any_of(deviceTable(), [](const DeviceRecord& record) {
                           return record.active.load();
                       });
    if (inUse || !libraryState.adapterOpen) return;
    releaseAdapter(true, deadline);
    adapterInUse = false;
}

bool anythingDue() {
    return closingDue || releaseOfAllDue ||
           std::ranges::any_of(deviceTable(), [](const DeviceRecord& record) { return record.releaseDue.load(); });
}

void carryOutWhatIsDue(platform::TimePoint deadline) REQUIRES(lifecycleMutex) {
    for (DeviceRecord& record : deviceTable()) {
        if (!record.releaseDue.exchange(false)) continue;
        beginExclusion(record);
        takeOutOfUse(record, deadline);
    }
    if (releaseOfAllDue.exchange(false)) {
        for (DeviceRecord& record : deviceTable())
            beginExclusion(record);
        takeAllOutOfUse(deadline);
    }
    if (closingDue.exchange(false)) closeAdapterIfUnused(deadline);
}

// For something that has just become due. If nobody owns the lock, or its owner has looked too early, it is done here.
void leaveToLockOwner() {
    if (!lifecycleMutex.lockFor(std::chrono::milliseconds(0))) return;
    const LifecycleLock lock;
}

}  // namespace

void Activation::finish() {
    if (!counted_) return;
    --activationsInProgress;
    if (!setUpFailed_) return;
    closingDue = true;
    leaveToLockOwner();
}

LifecycleLock::~LifecycleLock() NO_THREAD_SAFETY_ANALYSIS {
    do {
        if (anythingDue()) carryOutWhatIsDue(deadline_.value_or(platform::deadlineAfter(mutexLimit)));
        lifecycleMutex.unlock(lifecycleMutex.generation());
    } while (anythingDue() && lifecycleMutex.lockFor(std::chrono::milliseconds(0)));
}

void releaseDevice(std::uint8_t deviceNo) {
    // Kept: counted down for a device that was not active, too.
    countDeviceOut();
    if (deviceNo >= deviceLimit) return;
    const platform::TimePoint deadline = platform::deadlineAfter(mutexLimit);
    DeviceRecord& record = deviceRecord(deviceNo);
    beginExclusion(record);
    if (lifecycleMutex.lockUntil(deadline)) {
        const LifecycleLock lock(deadline);
        takeOutOfUse(record, deadline);
    } else {
        record.releaseDue = true;
        endExclusion(record);
        leaveToLockOwner();
    }
}

void releaseAll() {
    const platform::TimePoint deadline = platform::deadlineAfter(mutexLimit);
    for (DeviceRecord& record : deviceTable())
        record.callCutShort = false;
    for (DeviceRecord& record : deviceTable())
        beginExclusion(record);
    if (lifecycleMutex.lockUntil(deadline)) {
        const LifecycleLock lock(deadline);
        takeAllOutOfUse(deadline);
    } else {
        releaseOfAllDue = true;
        for (DeviceRecord& record : deviceTable())
            endExclusion(record);
        leaveToLockOwner();
    }
}

bool adapterIsInherited() {
    return adapterInUse && openedBy != platform::processId();
}

namespace {

bool anyCallInside() {
    return libraryGate.occupied() ||
           std::ranges::any_of(deviceTable(), [](const DeviceRecord& record) { return record.gate.occupied(); });
}

// False: the limit was over first.
bool allCallsLeft(platform::TimePoint deadline) {
    return libraryGate.waitUntilLeft(0, deadline) && std::ranges::all_of(deviceTable(), [&](DeviceRecord& record) {
               return record.gate.waitUntilLeft(0, deadline);
           });
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
    const platform::TimePoint deadline =
        platform::deadlineAfter(libraryState.callsGivenUp ? std::chrono::milliseconds(0) : mutexLimit);
    const bool left = allCallsLeft(deadline);
    libraryState.callsGivenUp = !left;
    if (left && lifecycleMutex.lockUntil(deadline)) {
        const LifecycleLock lock;
        releaseAdapter(false, deadline);
        adapterInUse = false;
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
