#include "support/expected_counts.h"

#include <bit>
#include <cstddef>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace torvik::test {

namespace {

constexpr std::size_t fieldCount = sizeof(TORVIKstatistics) / sizeof(std::uint64_t);
using Fields = std::array<std::uint64_t, fieldCount>;

struct NamedCount {
    const char* name;
    std::uint64_t TORVIKstatistics::*count;
};

constexpr NamedCount deviceCounts[] = {
    {"framesRouted", &TORVIKstatistics::framesRouted},
    {"framesStored", &TORVIKstatistics::framesStored},
    {"answersStored", &TORVIKstatistics::answersStored},
    {"answersNotStored", &TORVIKstatistics::answersNotStored},
    {"commandFrames", &TORVIKstatistics::commandFrames},
    {"framesWrongChannel", &TORVIKstatistics::framesWrongChannel},
    {"framesNoChannelCount", &TORVIKstatistics::framesNoChannelCount},
    {"framesOutsideSet", &TORVIKstatistics::framesOutsideSet},
    {"framesOfIncompleteSets", &TORVIKstatistics::framesOfIncompleteSets},
    {"framesOfBrokenSets", &TORVIKstatistics::framesOfBrokenSets},
    {"framesOfLockedSets", &TORVIKstatistics::framesOfLockedSets},
    {"framesOfReleasedSets", &TORVIKstatistics::framesOfReleasedSets},
    {"framesReplaced", &TORVIKstatistics::framesReplaced},
    {"framesBeyondChannels", &TORVIKstatistics::framesBeyondChannels},
    {"setsStored", &TORVIKstatistics::setsStored},
    {"setsIncomplete", &TORVIKstatistics::setsIncomplete},
    {"setsBroken", &TORVIKstatistics::setsBroken},
    {"setsLocked", &TORVIKstatistics::setsLocked},
    {"setsReleased", &TORVIKstatistics::setsReleased},
    {"setsMissing", &TORVIKstatistics::setsMissing},
    {"sequenceJumps", &TORVIKstatistics::sequenceJumps},
    {"valuesStale", &TORVIKstatistics::valuesStale},
};

// By the bits: a signalling NaN must not be touched where floating-point exceptions are trapped.
double floatOf(std::uint32_t bits) {
    const bool isNan = (bits & 0x7FFFFFFF) > 0x7F800000;
    return isNan ? std::numeric_limits<double>::quiet_NaN() : static_cast<double>(std::bit_cast<float>(bits));
}

double numberOf(const std::array<std::uint8_t, 8>& frame) {
    const auto byte = [&frame](std::size_t index) { return std::uint32_t{frame[index]}; };
    switch (frame[1] & 0x70) {
        case 0x10:
            return static_cast<std::int16_t>(byte(4) * 0x100 + byte(5));
        case 0x20: {
            const auto number = static_cast<std::int32_t>(byte(4) * 0x10000 + byte(5) * 0x100 + byte(6));
            return number >= 0x800000 ? number - 0x1000000 : number;
        }
        case 0x30:
            return floatOf(byte(4) * 0x1000000 + byte(5) * 0x10000 + byte(6) * 0x100 + byte(7));
        default:
            return std::numeric_limits<double>::quiet_NaN();
    }
}

}  // namespace

bool ExpectedDevice::take(const std::array<std::uint8_t, 8>& data) {
    ++counts_.framesRouted;
    if (data[0] >= 0x80) return ++counts_.commandFrames, false;
    if (data[0] >= 0x40) return ++counts_.answersStored, false;
    const unsigned channel = data[0] % 16;
    const unsigned sequence = data[2] * 256U + data[3];
    if (channel >= 8) return ++counts_.framesWrongChannel, false;
    if (channel == 0) {
        drop(&TORVIKstatistics::framesOfIncompleteSets, &TORVIKstatistics::setsIncomplete);
        sequence_ = sequence;
    } else if (framesInSet_ == 0) {
        return ++counts_.framesOutsideSet, false;
    } else if (sequence != sequence_) {
        ++counts_.framesOfBrokenSets;
        drop(&TORVIKstatistics::framesOfBrokenSets, &TORVIKstatistics::setsBroken);
        return false;
    }
    latest_[channel] = data;
    ++framesOf_[channel];
    counts_.framesInAssembly = ++framesInSet_;
    if (framesInSet_ < channels_) return false;
    completeSet();
    return true;
}

void ExpectedDevice::drop(Counter frames, Counter sets) {
    if (framesInSet_ > 0) ++(counts_.*sets);
    counts_.*frames += framesInSet_;
    framesOf_ = {};
    counts_.framesInAssembly = framesInSet_ = 0;
}

void ExpectedDevice::completeSet() {
    for (unsigned channel = 0; channel < framesOf_.size(); ++channel) {
        const unsigned frames = framesOf_[channel];
        if (frames > 1) counts_.framesReplaced += frames - 1;
        if (frames > 0) ++(channel < channels_ ? counts_.framesStored : counts_.framesBeyondChannels);
        if (frames == 0 && channel < channels_) ++counts_.valuesStale;
    }
    ++counts_.setsStored;
    countStep();
    framesOf_ = {};
    counts_.framesInAssembly = framesInSet_ = 0;
}

void ExpectedDevice::countStep() {
    const unsigned ahead = (sequence_ - completedSequence_) % 0x10000;
    if (anyCompleted_ && ahead != 1) {
        ++counts_.sequenceJumps;
        if (ahead > 1 && ahead < 0x8000) counts_.setsMissing += ahead - 1;
    }
    anyCompleted_ = true;
    completedSequence_ = sequence_;
}

ExpectedValue ExpectedDevice::value(unsigned channel) const {
    return {latest_[channel][1], numberOf(latest_[channel])};
}

TORVIKstatistics statisticsOf(std::int32_t deviceNo) {
    TORVIKstatistics statistics{};
    statistics.size = sizeof statistics;
    if (TORVIKgetStatistics(deviceNo, &statistics) != 0) throw std::runtime_error("no statistics");
    return statistics;
}

TORVIKstatistics countsBetween(const TORVIKstatistics& earlier, const TORVIKstatistics& later) {
    const auto before = std::bit_cast<Fields>(earlier);
    auto counts = std::bit_cast<Fields>(later);
    // The first field is no count.
    for (std::size_t i = 1; i < fieldCount; ++i)
        counts[i] -= before[i];
    return std::bit_cast<TORVIKstatistics>(counts);
}

std::uint64_t endsOf(const TORVIKstatistics& counts) {
    return counts.framesInAssembly + counts.framesStored + counts.answersStored + counts.answersNotStored +
           counts.commandFrames + counts.framesWrongChannel + counts.framesNoChannelCount + counts.framesOutsideSet +
           counts.framesOfIncompleteSets + counts.framesOfBrokenSets + counts.framesOfLockedSets +
           counts.framesOfReleasedSets + counts.framesReplaced + counts.framesBeyondChannels;
}

std::vector<std::string> differences(const TORVIKstatistics& expected, const TORVIKstatistics& counted) {
    std::vector<std::string> lines;
    const auto compare = [&lines](const char* name, std::uint64_t wanted, std::uint64_t found) {
        if (wanted != found)
            lines.push_back(std::string(name) + ": " + std::to_string(found) + " in place of " +
                            std::to_string(wanted));
    };
    compare("framesInAssembly", expected.framesInAssembly, counted.framesInAssembly);
    for (const NamedCount& row : deviceCounts)
        compare(row.name, expected.*row.count, counted.*row.count);
    return lines;
}

}  // namespace torvik::test
