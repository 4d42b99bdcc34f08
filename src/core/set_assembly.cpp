#include "core/set_assembly.h"

#include <algorithm>
#include <bit>
#include <span>

#include "core/wire.h"

namespace torvik {

namespace {

using StagedFrame = std::array<std::uint8_t, 5>;

constexpr std::uint64_t quietNan = 0x7FF8000000000000;

ValueType typeOf(std::uint8_t status) {
    switch (status >> 4 & 7) {
        case 1:
            return ValueType::int16;
        case 2:
            return ValueType::int24;
        case 3:
            return ValueType::float32;
        default:
            return ValueType::unknown;
    }
}

double decodeValue(ValueType type, const StagedFrame& frame) {
    const std::uint32_t bits = readBigEndian32(std::span(frame).subspan<1, 4>());
    switch (type) {
        case ValueType::int16:
            return static_cast<std::int32_t>(bits) >> 16;
        case ValueType::int24:
            return static_cast<std::int32_t>(bits) >> 8;
        case ValueType::float32:
            return widenFloat(bits);
        default:
            return std::bit_cast<double>(quietNan);
    }
}

// True: an unread value has been overwritten.
bool storeValue(ValueBuffer& buffer, const StagedFrame& frame, ValueType& type) {
    const std::int32_t length = buffer.length();
    if (buffer.writeIndex >= length) buffer.writeIndex = 0;
    if (buffer.entries) {
        type = typeOf(frame[0]);
        buffer.entries[static_cast<std::size_t>(buffer.writeIndex)] = {frame[0], false, decodeValue(type, frame)};
    }
    ++buffer.writeIndex;
    const bool overwritten = buffer.count >= length;
    if (!overwritten) ++buffer.count;
    // With many devices the next entry's cache line would otherwise be fetched only when the next set is stored.
    if (buffer.entries) __builtin_prefetch(buffer.entries.get() + buffer.writeIndex, 1);
    return overwritten;
}

void countStoredSet(DeviceRecord& record, std::uint32_t channels, std::uint64_t overwritten) {
    SetAssembly& assembly = record.assembly;
    record.frames.storeSet(record.staged, channels, overwritten);
    if (assembly.anyStored) {
        record.frames.countSequenceStep(static_cast<std::uint16_t>(assembly.setSequence - assembly.storedSequence));
    }
    assembly.anyStored = true;
    assembly.storedSequence = assembly.setSequence;
}

// A record that was taken down or set up again meanwhile has no use for the set.
void storeSet(DeviceRecord& record, SetAssembly& assembly) {
    // A set that cannot be stored stays as it is.
    if (!valueMutex.lockFor(mutexLimit)) return record.frames.abandon(record.staged, FrameEnd::lockedSet);
    platform::TimedLock lock(valueMutex);
    if (!record.active || assembly.setUpCount != record.setUpCount)
        return record.frames.abandon(record.staged, FrameEnd::releasedSet);
    const std::uint32_t channels = std::min<std::uint32_t>(record.activeChannels, channelLimit);
    std::uint64_t overwritten = 0;
    for (std::uint32_t channel = 0; channel < channels; ++channel) {
        overwritten += storeValue(record.valueBuffer[channel], assembly.stagingSlot[channel], record.lastValueType);
    }
    countStoredSet(record, channels, overwritten);
    record.newValues = true;
    assembly.setInProgress = false;
}

}  // namespace

void assembleValueFrame(DeviceRecord& record, const std::array<std::uint8_t, 8>& data) {
    SetAssembly& assembly = record.assembly;
    if (const std::uint32_t setUpCount = record.setUpCount; assembly.setUpCount != setUpCount) {
        record.frames.abandon(record.staged, FrameEnd::releasedSet);
        assembly = {};
        assembly.setUpCount = setUpCount;
    }
    const std::uint8_t channel = data[0] & 0x0F;
    if (channel >= channelLimit) return record.frames.end(FrameEnd::wrongChannel);
    const std::uint32_t sequence = readBigEndian16(std::span(data).subspan<2, 2>());
    if (channel == 0) {
        record.frames.abandon(record.staged, FrameEnd::incompleteSet);
        assembly.setInProgress = true;
        assembly.setSequence = sequence;
        assembly.setFramesReceived = 0;
    }
    const std::uint32_t channels = record.activeChannels;
    if (channels == 0) return record.frames.end(FrameEnd::noChannelCount);
    if (!assembly.setInProgress) return record.frames.end(FrameEnd::outsideSet);
    if (sequence != assembly.setSequence) {
        assembly.setInProgress = false;
        record.frames.abandon(record.staged, FrameEnd::brokenSet);
        return record.frames.end(FrameEnd::brokenSet);
    }
    assembly.stagingSlot[channel] = {data[1], data[4], data[5], data[6], data[7]};
    record.staged.stage(channel);
    ++assembly.setFramesReceived;
    if (assembly.setFramesReceived == channels) storeSet(record, assembly);
}

}  // namespace torvik
