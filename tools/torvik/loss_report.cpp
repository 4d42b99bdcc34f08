#include "loss_report.h"

#include <fmt/format.h>

#include <iterator>
#include <string_view>

namespace torvik::tool {

namespace {

TORVIKstatistics readStatistics(std::int32_t deviceNo) {
    TORVIKstatistics statistics{};
    statistics.size = sizeof statistics;
    TORVIKgetStatistics(deviceNo, &statistics);
    return statistics;
}

std::uint64_t unreadOf(const TORVIKstatistics& statistics) {
    return statistics.valuesOverwritten + statistics.valuesCleared;
}

std::uint64_t unfinishedOf(const TORVIKstatistics& statistics) {
    return statistics.setsIncomplete + statistics.setsBroken + statistics.setsLocked;
}

std::uint64_t otherFaultsOf(const TORVIKstatistics& statistics) {
    return statistics.faultsIllegalHardware + statistics.faultsOther;
}

// The library counts no missing sets for a jump back or of half the range of the numbers, which is 65536.
std::string_view describeJumps(const Losses& losses) {
    return losses.setsMissing == 0 ? "times the sets' numbers jumped; how many sets were lost is not known"
                                   : "times the sets' numbers jumped; losses by jumps back or over 32767 are not "
                                     "counted";
}

}  // namespace

bool Losses::any() const {
    return *this != Losses{};
}

std::string describe(const Losses& losses, std::uint64_t setsWritten) {
    if (!losses.any()) return fmt::format("torvik: {} sets, nothing lost\n", setsWritten);
    std::string report = fmt::format("torvik: {} sets, but there are losses\n", setsWritten);
    const auto tell = [&report](std::uint64_t count, std::string_view place, std::string_view what) {
        if (count > 0) fmt::format_to(std::back_inserter(report), "  {:9}{} {}\n", place, count, what);
    };
    tell(losses.valuesUnread, "output:", "values gone before they were read, because the output took them too slowly");
    tell(losses.setsMissing, "bus:", "sets missing by their numbers");
    tell(losses.sequenceJumps, "bus:", describeJumps(losses));
    tell(losses.setsUnfinished, "bus:", "sets begun that were never complete");
    tell(losses.framesOutsideSet, "bus:", "frames without the first frame of their set");
    tell(losses.valuesStale, "bus:", "values of the set before delivered in place of missing ones");
    tell(losses.queueOverruns, "adapter:", "times its receive queue was full and frames were lost");
    tell(losses.busLight, "adapter:", "times the bus was disturbed (light); frames may be lost");
    tell(losses.busHeavy, "adapter:", "times the bus was disturbed (heavy); frames may be lost");
    tell(losses.busOff, "adapter:", "times the bus was off; frames may be lost");
    tell(losses.readsFailed, "adapter:", "times reading from it failed otherwise; frames may be lost");
    tell(losses.framesNotRouted, "library:", "frames that could not be given to a device in time");
    return report;
}

LossCounter::LossCounter(const Connection& connection, bool newestOnly)
    : deviceNo_(connection.deviceNo()),
      channels_(connection.channelCount()),
      newestOnly_(newestOnly),
      before_(readStatistics(deviceNo_)) {}

void LossCounter::streamBegan() {
    const std::uint64_t frames = readStatistics(deviceNo_).framesOutsideSet - before_.framesOutsideSet;
    if (frames < channels_) before_.framesOutsideSet += frames;
}

Losses LossCounter::losses() const {
    const TORVIKstatistics now = readStatistics(deviceNo_);
    return {.valuesUnread = newestOnly_ ? 0 : unreadOf(now) - unreadOf(before_),
            .valuesStale = now.valuesStale - before_.valuesStale,
            .setsMissing = now.setsMissing - before_.setsMissing,
            .sequenceJumps = now.sequenceJumps - before_.sequenceJumps,
            .setsUnfinished = unfinishedOf(now) - unfinishedOf(before_),
            .framesOutsideSet = now.framesOutsideSet - before_.framesOutsideSet,
            .framesNotRouted = now.framesNotRouted - before_.framesNotRouted,
            .queueOverruns = now.faultsQueueOverrun - before_.faultsQueueOverrun,
            .busLight = now.faultsBusLight - before_.faultsBusLight,
            .busHeavy = now.faultsBusHeavy - before_.faultsBusHeavy,
            .busOff = now.faultsBusOff - before_.faultsBusOff,
            .readsFailed = otherFaultsOf(now) - otherFaultsOf(before_)};
}

}  // namespace torvik::tool
