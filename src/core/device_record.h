// Everything the library keeps of one device.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "core/call_gate.h"
#include "core/filter_object.h"
#include "core/frame_counters.h"
#include "core/library_state.h"
#include "platform/sync.h"

namespace torvik {

inline constexpr std::size_t channelLimit = 8;
inline constexpr std::uint32_t answerSlots = 64;

// One measured value as it stands in a channel's buffer: raw counts (or the device's float) as a double.
struct ValueEntry {
    std::uint8_t status = 0;
    bool read = false;  // since it was stored; maintained only while the ring is out of step
    double value = 0.0;
};

// How the values of a device are encoded; decides their scale on reading.
enum class ValueType : std::uint8_t { unknown = 0, int16 = 0x90, int24 = 0xA0, float32 = 0xB0 };

// The ring of one channel's values. Its effective length is the smaller of its own allocation and the library-wide
// valueBufferLength, which a later activation may change (buffer_bound.h).
struct ValueBuffer {
    std::unique_ptr<ValueEntry[]> entries;
    std::int32_t allocated = 0;
    std::int32_t writeIndex = 0;
    std::int32_t readIndex = 0;
    std::int32_t count = 0;

    std::int32_t length() const { return lengthWithin(libraryState.valueBufferLength.load(std::memory_order_relaxed)); }
    std::int32_t lengthWithin(std::int32_t bound) const { return entries ? std::min(bound, allocated) : bound; }

    // False after an overflow: the unread values are not those from the read to the write position of this ring.
    bool inStep(std::int32_t ring) const {
        const std::int32_t lead = readIndex + count - writeIndex;
        return lead == 0 || lead == ring || lead == -ring || lead == 2 * ring;
    }
};

struct AnswerSlot {
    std::array<std::uint8_t, 8> data{};
    std::uint64_t timestamp = 0;  // as the adapter gives it
};

// The value frames of the set being assembled. Only the receive thread touches it.
struct SetAssembly {
    std::uint32_t setUpCount = 0;  // of the record, when this assembly began
    bool setInProgress = false;
    std::uint8_t setFramesReceived = 0;
    bool anyStored = false;
    std::uint32_t setSequence = 0;
    std::uint32_t storedSequence = 0;                                     // of the last stored set
    std::array<std::array<std::uint8_t, 5>, channelLimit> stagingSlot{};  // status/type byte, four value bytes
};

// What the receive thread touches with every frame or set stands close together: with many devices it would not fit
// into the processor's nearest cache otherwise.
struct alignas(64) DeviceRecord {
    // Identifiers and the ring are written under answerMutex, and so is active when it is set. A release clears active
    // under valueMutex, together with the buffers, and in the end without a lock.
    std::atomic<std::uint32_t> commandCanId = 0;
    std::atomic<std::uint32_t> answerCanId = 0;
    std::atomic<std::uint32_t> valueCanId = 0;
    std::atomic<bool> active = false;
    std::atomic<bool> newValues = false;
    std::atomic<std::uint32_t> activeChannels = 0;
    std::atomic<std::uint32_t> setUpCount = 0;  // rises with every zeroing; tells the receive thread to start afresh
    FrameCounters frames;
    std::array<AnswerSlot, answerSlots> answerRing GUARDED_BY(answerMutex);
    std::uint32_t answerWriteIndex GUARDED_BY(answerMutex) = 0;
    std::uint32_t answerReadIndex GUARDED_BY(answerMutex) = 0;
    std::atomic<std::uint32_t> answerCount = 0;
    Counter answersTaken;      // written under answerMutex
    Counter answersDiscarded;  // waited when the record was zeroed; written under answerMutex

    std::atomic<std::uint8_t> channelHandle = 0;
    std::atomic<std::uint8_t> ownDeviceNo = 0;
    std::atomic<std::uint16_t> baudCode = 0;
    std::atomic<std::uint32_t> firmwareVersion = 0;
    std::atomic<bool> transmitting = false;
    std::atomic<std::uint32_t> lastError = 0;
    std::unique_ptr<FilterObject> filterObject;

    ValueType lastValueType GUARDED_BY(valueMutex) = ValueType::unknown;
    std::array<ValueBuffer, channelLimit> valueBuffer GUARDED_BY(valueMutex);

    Counter valuesCleared;  // thrown away unread with the buffers, or by a changed bound; written under valueMutex

    alignas(64) SetAssembly assembly;
    StagedFrames staged;

    // The transaction lock. busyLock is held only to look at busy, answerCount or filterInUse and to wait for a change
    // of them.
    platform::Mutex busyLock;
    platform::Condition busyFreed;
    platform::Condition answerArrived;
    platform::Condition pauseCutShort;
    platform::Condition filterFreed;
    bool filterInUse GUARDED_BY(busyLock) = false;
    std::atomic<bool> busy = false;
    std::atomic<bool> keepLock = false;

    // Protects the record against being taken down under a call; all three survive zeroing.
    CallGate gate;
    std::atomic<bool> releaseDue = false;    // a release did not get the lifecycle
                                             // lock: its owner carries it out
    std::atomic<bool> callCutShort = false;  // a call met the release that is going on
};

}  // namespace torvik
