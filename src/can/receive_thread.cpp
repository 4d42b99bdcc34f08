#include "can/receive_thread.h"

#include <atomic>
#include <bit>

#include "can/adapter_channel.h"
#include "can/adapter_event.h"
#include "can/pcan_api.h"
#include "core/device_table.h"
#include "core/error_codes.h"
#include "core/set_assembly.h"
#include "core/transaction.h"

namespace torvik {

namespace {

constexpr std::chrono::milliseconds receiveWait(200);

// What the current thread has reached, for those that wait for it. Its number tells a thread that was given up that it
// is not the current one any more.
enum class Phase : std::uint8_t { ended, starting, receiving };
constinit platform::Mutex phaseMutex;
constinit platform::Condition phaseChanged;
constinit Phase phase GUARDED_BY(phaseMutex) = Phase::ended;
constinit std::atomic<std::uint32_t> currentThread = 0;

struct FaultRow {
    const char* message;
    std::uint32_t status;
    AdapterFault fault;
    bool reset;
};

constexpr FaultRow faultRows[] = {
    {"Fehler: PCAN_ERROR_BUSLIGHT\n", pcan::busLight, AdapterFault::busLight, true},
    {"Fehler: PCAN_ERROR_BUSHEAVY\n", pcan::busHeavy, AdapterFault::busHeavy, true},
    {"Fehler: PCAN_ERROR_BUSOFF\n", pcan::busOff, AdapterFault::busOff, true},
    {"Fehler: PCAN_ERROR_QOVERRUN\n", pcan::queueOverrun, AdapterFault::queueOverrun, true},
    {"Fehler: PCAN_ERROR_ILLHW\n", pcan::illegalHardware, AdapterFault::illegalHardware, false},
};

const FaultRow* faultRowOf(std::uint32_t status) {
    for (const FaultRow& row : faultRows) {
        if (row.status == status) return &row;
    }
    return nullptr;
}

void countFault(const FaultRow* row, std::uint32_t status) {
    const AdapterFault fault = row != nullptr ? row->fault : AdapterFault::other;
    adapterCounters.faults[static_cast<std::size_t>(fault)].add();
    if (fault == AdapterFault::other) adapterCounters.lastOtherFault.set(status);
}

std::uint8_t reportFault(std::uint32_t status, DeviceRecord& record) {
    const FaultRow* const row = faultRowOf(status);
    if (libraryState.debugOutput) {
        printPcanError(status);
        if (row != nullptr) {
            debugPrint("%s", row->message);
        } else {
            debugPrint("Fehler: Status %i\n", static_cast<int>(status));
        }
    }
    countFault(row, status);
    setError(record, status);
    if (row != nullptr && row->reset) pcanReset(libraryState.channelHandle);
    return static_cast<std::uint8_t>(error::receiveLoopFault);
}

void printAnswer(const PcanMessage& message) {
    const auto& data = message.data;
    debugPrint("OnCAN: %02X - %02X %02X | %02X %02X %02X %02X %02X %02X\n", message.id, data[0], data[1], data[2],
               data[3], data[4], data[5], data[6], data[7]);
}

// A device and the set-up of it that a frame was meant for.
struct Receiver {
    DeviceRecord* record = nullptr;
    std::uint32_t setUpCount = 0;
};

void routeAnswer(const Receiver& receiver, const PcanMessage& message, const PcanTimestamp& timestamp) {
    DeviceRecord& record = *receiver.record;
    if (!storeAnswer(record, receiver.setUpCount, {message.data, std::bit_cast<std::uint64_t>(timestamp)})) {
        return record.frames.end(FrameEnd::answerNotStored);
    }
    if (libraryState.debugOutput) printAnswer(message);
}

// Without a record: the frame has been counted as one that belongs to no device.
Receiver receiverOf(const PcanMessage& message) {
    if (!answerMutex.lockFor(mutexLimit)) {
        adapterCounters.notRouted.add();
        return {};
    }
    platform::TimedLock lock(answerMutex);
    DeviceRecord* const record = findReceiver(message.id);
    if (record == nullptr) {
        adapterCounters.withoutDevice.add();
        return {};
    }
    return {record, record->setUpCount.load(std::memory_order_relaxed)};
}

void routeFrame(const Receiver& receiver, const PcanMessage& message, const PcanTimestamp& timestamp) {
    if (message.data[0] < 0x40) {
        assembleValueFrame(*receiver.record, message.data);
    } else if (message.data[0] < 0x80) {
        routeAnswer(receiver, message, timestamp);
    } else {
        receiver.record->frames.end(FrameEnd::command);
    }
}

struct PassResult {
    std::uint8_t code = 0;
    bool anyFrame = false;
};

PassResult drainPass(std::uint32_t thread) {
    PassResult result;
    DeviceRecord* lastReceiver = &deviceRecord(0);
    std::uint64_t received = adapterCounters.received.get();
    while (thread == currentThread.load(std::memory_order_relaxed)) {
        PcanMessage message;
        PcanTimestamp timestamp;
        const std::uint32_t status = pcanRead(libraryState.channelHandle, message, timestamp);
        if (status == pcan::queueEmpty) break;
        // Given up while it was reading: what it has read belongs to nobody any more.
        if (thread != currentThread.load(std::memory_order_relaxed)) {
            if (status == pcan::ok) ++adapterCounters.afterEnd;
            break;
        }
        if (status != pcan::ok) {
            result.code = reportFault(status, *lastReceiver);
            break;
        }
        adapterCounters.received.set(++received);
        result.anyFrame = true;
        const Receiver receiver = receiverOf(message);
        if (receiver.record == nullptr) continue;
        lastReceiver = receiver.record;
        routeFrame(receiver, message, timestamp);
    }
    return result;
}

void announce(std::uint32_t thread, Phase reached) {
    {
        platform::LockGuard lock(phaseMutex);
        if (thread == currentThread) phase = reached;
    }
    phaseChanged.notifyAll();
}

void giveUp() {
    platform::LockGuard lock(phaseMutex);
    ++currentThread;
    phase = Phase::ended;
}

bool endsBy(platform::TimePoint deadline) {
    platform::LockGuard lock(phaseMutex);
    while (phase != Phase::ended) {
        if (!phaseChanged.waitUntil(phaseMutex, deadline)) return phase == Phase::ended;
    }
    return true;
}

void receiveFrames(std::uint32_t thread) {
    std::uint32_t emptyFaults = 0;
    while (libraryState.threadRun && thread == currentThread) {
        libraryState.receiveEvent.wait(receiveWait, emptyFaults < 2);
        const PassResult pass = drainPass(thread);
        // An adapter that reports nothing but faults must not turn the wait into a busy loop.
        emptyFaults = pass.code == 0 || pass.anyFrame ? 0 : emptyFaults + 1;
    }
}

void takeEventBack(std::uint32_t thread) {
    if (thread != currentThread || !libraryState.receiveEventSet) return;
    if (const std::uint32_t status = pcanEventOff(); status == pcan::ok) {
        libraryState.receiveEventSet = false;
    } else if (libraryState.debugOutput) {
        debugPrint("Fehler beim Ruecksetzen des Events\n");
        printPcanError(status);
    }
}

void receiveThreadMain() {
    const std::uint32_t thread = currentThread;
    if (!libraryState.receiveEventSet) pcanEventOn();
    pcanReset(libraryState.channelHandle);
    announce(thread, Phase::receiving);
    receiveFrames(thread);
    takeEventBack(thread);
    announce(thread, Phase::ended);
}

}  // namespace

std::uint8_t drainReceiveQueue() {
    return drainPass(currentThread).code;
}

bool startReceiveThread() {
    {
        platform::LockGuard lock(phaseMutex);
        ++currentThread;
        phase = Phase::starting;
    }
    // Set before the thread starts: it looks at once.
    libraryState.threadRun = true;
    if (libraryState.receiveThread.start(receiveThreadMain) != 0) {
        libraryState.threadRun = false;
        giveUp();
        return false;
    }
    // The thread's own reset of the adapter would otherwise swallow the first answer.
    platform::LockGuard lock(phaseMutex);
    const platform::TimePoint deadline = platform::systemNow() + mutexLimit;
    while (phase == Phase::starting && platform::systemNow() < deadline) {
        phaseChanged.waitFor(phaseMutex, std::chrono::milliseconds(100));
    }
    return true;
}

void beginReceiveEnd() {
    libraryState.threadRun = false;
    libraryState.receiveEvent.wake();
}

void stopReceiveThread(std::optional<std::chrono::milliseconds> limit) {
    if (!libraryState.receiveThread.exists()) return;
    beginReceiveEnd();
    if (!libraryState.receiveThread.join(limit)) giveUp();
}

void endReceiving(std::chrono::milliseconds limit) {
    libraryState.threadRun = false;
    // The thread is not woken: the event is the lifecycle lock's. It looks up of its own accord.
    if (!endsBy(platform::clock().now() + limit)) giveUp();
}

}  // namespace torvik
