#include "core/buffer_bound.h"

#include <algorithm>
#include <span>

#include "core/device_table.h"

namespace torvik {

namespace {

// Nothing has wrapped, and every position is valid in a ring of this length, too.
bool fits(const ValueBuffer& buffer, std::int32_t length) {
    return buffer.readIndex + buffer.count == buffer.writeIndex && buffer.writeIndex <= length;
}

// Brings the unread values to the end of a ring, the newest last. Result: how many there are, at most `count`.
std::int32_t gatherUnread(ValueBuffer& buffer, std::int32_t length) {
    const auto slots = std::span(buffer.entries.get(), static_cast<std::size_t>(length));
    const bool inStep = buffer.inStep(length);
    // From the write position on the slots are in order of arrival.
    std::rotate(slots.begin(), slots.begin() + buffer.writeIndex % length, slots.end());
    if (inStep) return buffer.count;
    const auto end = std::remove_if(slots.rbegin(), slots.rend(), [](const ValueEntry& entry) { return entry.read; });
    return std::min(buffer.count, static_cast<std::int32_t>(end - slots.rbegin()));
}

// The unread values that fit end at the end of the shorter length, in every channel.
void rebase(ValueBuffer& buffer, std::int32_t oldLength, std::int32_t newLength) {
    const std::int32_t end = std::min(oldLength, newLength);
    std::int32_t kept = std::min(buffer.count, end);
    if (buffer.entries && buffer.count > 0) {
        kept = std::min(gatherUnread(buffer, oldLength), end);
        const ValueEntry* const last = buffer.entries.get() + oldLength;
        std::copy(last - kept, last, buffer.entries.get() + end - kept);
    }
    buffer.writeIndex = end;
    buffer.readIndex = end - kept;
    buffer.count = kept;
}

// All buffers of a record are equally long and move together, so that a set keeps one slot.
void applyBound(DeviceRecord& record, std::int32_t oldBound, std::int32_t newBound) REQUIRES(valueMutex) {
    const std::int32_t oldLength = record.valueBuffer[0].lengthWithin(oldBound);
    const std::int32_t newLength = record.valueBuffer[0].lengthWithin(newBound);
    const auto fitsNow = [newLength](const ValueBuffer& buffer) { return fits(buffer, newLength); };
    if (oldLength == newLength || std::ranges::all_of(record.valueBuffer, fitsNow)) return;
    for (ValueBuffer& buffer : record.valueBuffer) {
        const std::int32_t waiting = buffer.count;
        rebase(buffer, oldLength, newLength);
        record.valuesCleared.add(static_cast<std::uint64_t>(waiting - buffer.count));
    }
}

}  // namespace

bool setValueBufferLength(std::int32_t length) {
    return exclusively(valueMutex, [length]() NO_THREAD_SAFETY_ANALYSIS {
        const std::int32_t oldBound = libraryState.valueBufferLength;
        for (DeviceRecord& record : deviceTable())
            applyBound(record, oldBound, length);
        libraryState.valueBufferLength = length;
    });
}

}  // namespace torvik
