#include "core/frame_counters.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <numeric>

#include "platform/thread.h"

namespace torvik {

namespace {

constexpr std::uint16_t nextSequence = 1;
constexpr std::uint16_t largestGap = 0x8000;  // a number further ahead is one behind: the device counts afresh

}  // namespace

constinit AdapterCounters adapterCounters;

std::uint64_t FrameCounts::sumOfEnds() const {
    return std::accumulate(ends.begin(), ends.end(), std::uint64_t{0});
}

FrameCounts& FrameCounts::operator+=(const FrameCounts& other) {
    routed += other.routed;
    inAssembly += other.inAssembly;
    std::ranges::transform(ends, other.ends, ends.begin(), std::plus<>());
    setsStored += other.setsStored;
    setsIncomplete += other.setsIncomplete;
    setsBroken += other.setsBroken;
    setsLocked += other.setsLocked;
    setsReleased += other.setsReleased;
    sequenceJumps += other.sequenceJumps;
    setsMissing += other.setsMissing;
    valuesStale += other.valuesStale;
    valuesOverwritten += other.valuesOverwritten;
    answersOverwritten += other.answersOverwritten;
    return *this;
}

Counter* FrameCounters::setsAbandonedFor(FrameEnd reason) {
    switch (reason) {
        case FrameEnd::incompleteSet:
            return &setsIncomplete_;
        case FrameEnd::brokenSet:
            return &setsBroken_;
        case FrameEnd::lockedSet:
            return &setsLocked_;
        case FrameEnd::releasedSet:
            return &setsReleased_;
        default:
            return nullptr;
    }
}

void FrameCounters::abandon(StagedFrames& staged, FrameEnd reason) {
    const std::uint32_t frames = staged.count();
    if (frames == 0) return;
    const bool firstFrameCame = (staged.channels() & 1) != 0;
    const Change change(*this);
    staged.clear();
    routed_.add(frames);
    of(firstFrameCame ? reason : FrameEnd::outsideSet).add(frames);
    if (Counter* const sets = setsAbandonedFor(reason); firstFrameCame && sets != nullptr) sets->add();
}

void FrameCounters::storeSet(StagedFrames& staged, std::uint32_t channels, std::uint64_t overwritten) {
    const std::uint32_t allChannels = (1U << channels) - 1;
    const std::uint32_t stagedChannels = staged.channels();
    const std::uint32_t frames = staged.count();
    const Change change(*this);
    staged.clear();
    routed_.add(frames);
    setsStored_.add();
    if (overwritten != 0) valuesOverwritten_.add(overwritten);
    if (stagedChannels == allChannels && frames == channels) [[likely]] {
        of(FrameEnd::stored).add(channels);
        return;
    }
    const auto stored = static_cast<std::uint32_t>(std::popcount(stagedChannels & allChannels));
    const auto beyond = static_cast<std::uint32_t>(std::popcount(stagedChannels & ~allChannels));
    of(FrameEnd::stored).add(stored);
    of(FrameEnd::beyondChannels).add(beyond);
    of(FrameEnd::replaced).add(frames - stored - beyond);
    valuesStale_.add(channels - stored);
}

void FrameCounters::countSequenceStep(std::uint16_t step) {
    if (step == nextSequence) [[likely]]
        return;
    const Change change(*this);
    sequenceJumps_.add();
    if (step > nextSequence && step < largestGap) setsMissing_.add(step - nextSequence);
}

FrameCounts FrameCounters::copy(const StagedFrames& staged) const {
    FrameCounts counts;
    counts.inAssembly = staged.count();
    counts.routed = routed_.get() + counts.inAssembly;
    std::ranges::transform(ends_, counts.ends.begin(), &Counter::get);
    counts.setsStored = setsStored_.get();
    counts.setsIncomplete = setsIncomplete_.get();
    counts.setsBroken = setsBroken_.get();
    counts.setsLocked = setsLocked_.get();
    counts.setsReleased = setsReleased_.get();
    counts.sequenceJumps = sequenceJumps_.get();
    counts.setsMissing = setsMissing_.get();
    counts.valuesStale = valuesStale_.get();
    counts.valuesOverwritten = valuesOverwritten_.get();
    counts.answersOverwritten = answersOverwritten_.get();
    return counts;
}

FrameCounts FrameCounters::read(const StagedFrames& staged) const {
    constexpr int triesAtOnce = 1000;
    constexpr int triesInAll = 1100;
    for (int tries = 0;; ++tries) {
        const std::uint64_t ended = ended_.get();
        const FrameCounts counts = copy(staged);
        // A thread that ended within a change, as at the end of the process, is not waited for without end.
        if (begun_.get() == ended || tries == triesInAll) return counts;
        // The receive thread has lost the processor within a change.
        if (tries >= triesAtOnce) platform::sleepFor(std::chrono::milliseconds(1));
    }
}

}  // namespace torvik
