#include "frame_law.h"

#include <fmt/format.h>

#include <array>
#include <cstring>
#include <stdexcept>

#include "proof_adapter.h"

namespace torvik::proof {

namespace {

constexpr std::size_t fieldCount = sizeof(TORVIKstatistics) / sizeof(std::uint64_t);
using Fields = std::array<std::uint64_t, fieldCount>;

TORVIKstatistics readStatistics(std::uint8_t deviceNo) {
    TORVIKstatistics statistics{};
    statistics.size = sizeof statistics;
    if (TORVIKgetStatistics(deviceNo, &statistics) != 0) throw std::runtime_error("no statistics");
    return statistics;
}

std::uint64_t endsOf(const TORVIKstatistics& s) {
    return s.framesInAssembly + s.framesStored + s.answersStored + s.answersNotStored + s.commandFrames +
           s.framesWrongChannel + s.framesNoChannelCount + s.framesOutsideSet + s.framesOfIncompleteSets +
           s.framesOfBrokenSets + s.framesOfLockedSets + s.framesOfReleasedSets + s.framesReplaced +
           s.framesBeyondChannels;
}

}  // namespace

FrameLaw::FrameLaw() : handedOutBefore_(ProofAdapter::instance().framesRead()) {
    for (std::uint8_t deviceNo = 0; deviceNo <= lastDevice; ++deviceNo)
        before_.push_back(readStatistics(deviceNo));
}

TORVIKstatistics FrameLaw::since(std::uint8_t deviceNo) const {
    const TORVIKstatistics now = readStatistics(deviceNo);
    Fields fields;
    Fields earlier;
    std::memcpy(fields.data(), &now, sizeof now);
    std::memcpy(earlier.data(), &before_[deviceNo], sizeof now);
    // The first field is no count.
    for (std::size_t i = 1; i < fieldCount; ++i)
        fields[i] -= earlier[i];
    TORVIKstatistics difference;
    std::memcpy(&difference, fields.data(), sizeof difference);
    return difference;
}

std::vector<std::string> FrameLaw::broken() const {
    std::vector<std::string> faults;
    for (std::uint8_t deviceNo = 0; deviceNo <= lastDevice; ++deviceNo) {
        const TORVIKstatistics counts = readStatistics(deviceNo);
        if (counts.framesRouted != endsOf(counts)) {
            faults.push_back(fmt::format("device {}: {} frames routed, but {} ended", deviceNo, counts.framesRouted,
                                         endsOf(counts)));
        }
    }
    const TORVIKstatistics all = since(0);
    const std::uint64_t handedOut = ProofAdapter::instance().framesRead() - handedOutBefore_;
    const std::uint64_t told = all.framesRouted + all.framesWithoutDevice + all.framesNotRouted;
    if (all.framesReceived != handedOut || told != handedOut) {
        faults.push_back(fmt::format("{} frames handed out, {} received, {} routed or dropped before", handedOut,
                                     all.framesReceived, told));
    }
    return faults;
}

}  // namespace torvik::proof
