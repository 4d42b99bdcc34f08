#include "core/measured_values.h"

#include <algorithm>
#include <limits>

#include "core/device_table.h"
#include "core/error_codes.h"

namespace torvik {

namespace {

// The whole integer range spans 2.1 times the full scale.
constexpr double int16Scale = 2.1 / 65535;
constexpr double int24Scale = 2.1 / 16777215;

constexpr double noScale = 0.0;

// noScale: the format is unknown.
double scaleOf(ValueType type) {
    switch (type) {
        case ValueType::int16:
            return int16Scale;
        case ValueType::int24:
            return int24Scale;
        case ValueType::float32:
            return 1.0;
        default:
            return noScale;
    }
}

void markAsRead(std::span<ValueEntry> entries) {
    for (ValueEntry& entry : entries)
        entry.read = true;
}

const ValueEntry& takeEntry(ValueBuffer& buffer) {
    const std::int32_t length = buffer.length();
    if (buffer.readIndex >= length) buffer.readIndex = 0;
    ValueEntry& entry = buffer.entries[static_cast<std::size_t>(buffer.readIndex)];
    if (!buffer.inStep(length)) [[unlikely]]
        entry.read = true;
    ++buffer.readIndex;
    --buffer.count;
    return entry;
}

// The entries from the read position to the end of the ring, at most `wanted`, without wrapping.
std::span<const ValueEntry> takeRun(ValueBuffer& buffer, std::size_t wanted) {
    const std::int32_t length = buffer.length();
    if (buffer.readIndex >= length) buffer.readIndex = 0;
    const auto run = std::min(static_cast<std::size_t>(length - buffer.readIndex), wanted);
    const std::span entries(&buffer.entries[static_cast<std::size_t>(buffer.readIndex)], run);
    if (!buffer.inStep(length)) [[unlikely]]
        markAsRead(entries);
    buffer.readIndex += static_cast<std::int32_t>(run);
    buffer.count -= static_cast<std::int32_t>(run);
    return entries;
}

void copyScaled(std::span<const ValueEntry> entries, double scale, double* values) {
    std::size_t i = 0;
    // Four at a time, all read before the first is written: the compiler makes vector instructions of it.
    for (; i + 4 <= entries.size(); i += 4) {
        const double raw[] = {entries[i].value, entries[i + 1].value, entries[i + 2].value, entries[i + 3].value};
        values[i] = raw[0] * scale;
        values[i + 1] = raw[1] * scale;
        values[i + 2] = raw[2] * scale;
        values[i + 3] = raw[3] * scale;
    }
    for (; i < entries.size(); ++i)
        values[i] = entries[i].value * scale;
}

void copyStatus(std::span<const ValueEntry> entries, std::uint32_t* status) {
    for (std::size_t i = 0; i < entries.size(); ++i)
        status[i] = entries[i].status & 0x0F;
}

std::int32_t fail(DeviceRecord& record, std::uint32_t code) {
    setError(record, code);
    return -1;
}

std::span<ValueBuffer> activeBuffers(DeviceRecord& record) REQUIRES(valueMutex) {
    return std::span(record.valueBuffer).first(std::min<std::size_t>(record.activeChannels, channelLimit));
}

}  // namespace

std::int32_t readValue(DeviceRecord& record, std::uint32_t channel, double& value) {
    if (!valueMutex.lockFor(mutexLimit)) return fail(record, error::mutexTimeout);
    platform::TimedLock lock(valueMutex);
    ValueBuffer& buffer = record.valueBuffer[channel - 1];
    if (buffer.count == 0) {
        value = 0.0;
        return 0;
    }
    if (!buffer.entries) return fail(record, error::dataBuffer);
    const double raw = takeEntry(buffer).value;
    const double scale = scaleOf(record.lastValueType);
    if (scale == noScale) return fail(record, error::unknownValueFormat);
    value = raw * scale;
    return 1;
}

std::int32_t readChannel(DeviceRecord& record, std::uint32_t channel, std::span<double> values, std::int32_t& countRead,
                         std::uint32_t* status) {
    if (!valueMutex.lockFor(mutexLimit)) return fail(record, error::mutexTimeout);
    platform::TimedLock lock(valueMutex);
    ValueBuffer& buffer = record.valueBuffer[channel - 1];
    if (buffer.count == 0) return 0;
    if (!buffer.entries) return fail(record, error::dataBuffer);
    const double scale = scaleOf(record.lastValueType);
    if (scale == noScale) {
        takeEntry(buffer);
        return fail(record, error::unknownValueFormat);
    }
    const std::size_t wanted = std::min(values.size(), static_cast<std::size_t>(buffer.count));
    for (std::size_t done = 0; done < wanted;) {
        const std::span<const ValueEntry> run = takeRun(buffer, wanted - done);
        copyScaled(run, scale, values.data() + done);
        if (status != nullptr) copyStatus(run, status + done);
        done += run.size();
    }
    countRead = static_cast<std::int32_t>(wanted);
    return 1;
}

std::int32_t readSets(DeviceRecord& record, std::span<double> values, std::int32_t& countRead, std::uint32_t* status) {
    std::int32_t waiting = 0;
    if (!countValues(record, 0, waiting)) return -1;
    // Kept: no code is stored for this one.
    if (!valueMutex.lockFor(mutexLimit)) return -1;
    platform::TimedLock lock(valueMutex);
    const std::span<ValueBuffer> buffers = activeBuffers(record);
    // Another reader may have taken values since they were counted.
    for (const ValueBuffer& buffer : buffers)
        waiting = std::min(waiting, buffer.count);
    if (waiting == 0 || buffers.empty()) return 0;
    const std::size_t wanted = std::min(static_cast<std::size_t>(waiting) * buffers.size(), values.size());
    const double scale = scaleOf(record.lastValueType);
    for (std::size_t i = 0; i < wanted; ++i) {
        ValueBuffer& buffer = buffers[i % buffers.size()];
        if (!buffer.entries) return fail(record, error::dataBuffer);
        const ValueEntry& entry = takeEntry(buffer);
        if (scale == noScale) return fail(record, error::unknownValueFormat);
        values[i] = entry.value * scale;
        if (status != nullptr) status[i] = entry.status & 0x0F;
    }
    countRead = static_cast<std::int32_t>(wanted);
    return 1;
}

bool countValues(DeviceRecord& record, std::uint32_t channel, std::int32_t& count) {
    if (!valueMutex.lockFor(mutexLimit)) {
        setError(record, error::mutexTimeout);
        return false;
    }
    platform::TimedLock lock(valueMutex);
    const std::span<ValueBuffer> buffers = activeBuffers(record);
    if (channel == 0) {
        count = std::numeric_limits<std::int32_t>::max();
        for (const ValueBuffer& buffer : buffers)
            count = std::min(count, buffer.count);
    } else if (channel > buffers.size()) {
        count = 0;
        for (const ValueBuffer& buffer : buffers)
            count = std::max(count, buffer.count);
    } else {
        count = buffers[channel - 1].count;
    }
    return true;
}

bool clearValueBuffers(DeviceRecord& record) {
    if (!record.active || !valueMutex.lockFor(mutexLimit)) return false;
    platform::TimedLock lock(valueMutex);
    for (ValueBuffer& buffer : record.valueBuffer) {
        const auto length = buffer.entries ? static_cast<std::size_t>(buffer.length()) : 0;
        // The status bytes stay.
        for (ValueEntry& entry : std::span(buffer.entries.get(), length))
            entry.value = 0.0;
        record.valuesCleared.add(static_cast<std::uint64_t>(buffer.count));
        buffer.writeIndex = 0;
        buffer.readIndex = 0;
        buffer.count = 0;
    }
    return true;
}

}  // namespace torvik
