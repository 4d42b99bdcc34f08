#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>

#include "api/TORVIKstatistics.h"
#include "api/device_call.h"
#include "core/frame_counters.h"

using namespace torvik;

namespace {

constexpr std::uint32_t fieldSize = sizeof(std::uint64_t);

static_assert(sizeof(TORVIKstatistics) % fieldSize == 0 && offsetof(TORVIKstatistics, framesRouted) == fieldSize);

void copyFrames(const FrameCounts& counts, TORVIKstatistics& statistics) {
    statistics.framesInAssembly = static_cast<std::uint32_t>(counts.inAssembly);
    statistics.framesRouted = counts.routed;
    statistics.framesStored = counts.of(FrameEnd::stored);
    statistics.answersStored = counts.of(FrameEnd::answerStored);
    statistics.answersNotStored = counts.of(FrameEnd::answerNotStored);
    statistics.commandFrames = counts.of(FrameEnd::command);
    statistics.framesWrongChannel = counts.of(FrameEnd::wrongChannel);
    statistics.framesNoChannelCount = counts.of(FrameEnd::noChannelCount);
    statistics.framesOutsideSet = counts.of(FrameEnd::outsideSet);
    statistics.framesOfIncompleteSets = counts.of(FrameEnd::incompleteSet);
    statistics.framesOfBrokenSets = counts.of(FrameEnd::brokenSet);
    statistics.framesOfLockedSets = counts.of(FrameEnd::lockedSet);
    statistics.framesOfReleasedSets = counts.of(FrameEnd::releasedSet);
    statistics.framesReplaced = counts.of(FrameEnd::replaced);
    statistics.framesBeyondChannels = counts.of(FrameEnd::beyondChannels);
    statistics.setsStored = counts.setsStored;
    statistics.setsIncomplete = counts.setsIncomplete;
    statistics.setsBroken = counts.setsBroken;
    statistics.setsLocked = counts.setsLocked;
    statistics.setsReleased = counts.setsReleased;
    statistics.setsMissing = counts.setsMissing;
    statistics.sequenceJumps = counts.sequenceJumps;
    statistics.valuesStale = counts.valuesStale;
    statistics.valuesOverwritten = counts.valuesOverwritten;
    statistics.answersOverwritten = counts.answersOverwritten;
}

// What calls have taken or thrown away is read before what has been stored: it never seems to be more.
void copyRecords(std::span<DeviceRecord> records, TORVIKstatistics& statistics) {
    FrameCounts counts;
    for (const DeviceRecord& record : records) {
        statistics.answersTaken += record.answersTaken.get();
        statistics.answersDiscarded += record.answersDiscarded.get();
        statistics.valuesCleared += record.valuesCleared.get();
        counts += record.frames.read(record.staged);
    }
    copyFrames(counts, statistics);
}

std::uint64_t faultsOf(AdapterFault fault) {
    return adapterCounters.faults[static_cast<std::size_t>(fault)].get();
}

void copyAdapter(TORVIKstatistics& statistics) {
    const std::uint64_t afterEnd = adapterCounters.afterEnd;
    statistics.framesWithoutDevice = adapterCounters.withoutDevice.get();
    statistics.framesNotRouted = adapterCounters.notRouted.get() + afterEnd;
    statistics.framesReceived = adapterCounters.received.get() + afterEnd;
    statistics.faultsBusLight = faultsOf(AdapterFault::busLight);
    statistics.faultsBusHeavy = faultsOf(AdapterFault::busHeavy);
    statistics.faultsBusOff = faultsOf(AdapterFault::busOff);
    statistics.faultsQueueOverrun = faultsOf(AdapterFault::queueOverrun);
    statistics.faultsIllegalHardware = faultsOf(AdapterFault::illegalHardware);
    statistics.faultsOther = faultsOf(AdapterFault::other);
    statistics.lastOtherFault = adapterCounters.lastOtherFault.get();
}

}  // namespace

int32_t TORVIKgetStatistics(int32_t deviceNo, TORVIKstatistics* statistics) {
    const Visit inLibrary(libraryGate);
    const DeviceCall call(deviceNumber(deviceNo));
    if (!inLibrary.inside()) return call.fail(error::notActive);
    // Not inside the record: the counts outlive every release.
    if (!call.numberValid() || !call.argumentsValid(statistics != nullptr && statistics->size >= fieldSize)) {
        return failure;
    }
    TORVIKstatistics counts{};
    const auto records = std::span(deviceTable());
    copyRecords(call.deviceNo() == 0 ? records : records.subspan(call.deviceNo(), 1), counts);
    copyAdapter(counts);
    counts.size = std::min<std::uint32_t>(statistics->size / fieldSize * fieldSize, sizeof counts);
    std::memcpy(statistics, &counts, counts.size);
    return success;
}
