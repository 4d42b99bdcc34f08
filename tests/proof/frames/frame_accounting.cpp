#include "frame_accounting.h"

#include <fmt/format.h>

#include "proof_adapter.h"

namespace torvik::proof {

using test::endsOf;
using test::statisticsOf;

FrameAccounting::FrameAccounting() : handedOutBefore_(ProofAdapter::instance().framesRead()) {
    for (std::uint8_t deviceNo = 0; deviceNo <= lastDevice; ++deviceNo)
        before_.push_back(statisticsOf(deviceNo));
}

TORVIKstatistics FrameAccounting::since(std::uint8_t deviceNo) const {
    return test::countsBetween(before_[deviceNo], statisticsOf(deviceNo));
}

std::vector<std::string> FrameAccounting::violations() const {
    std::vector<std::string> faults;
    for (std::uint8_t deviceNo = 0; deviceNo <= lastDevice; ++deviceNo) {
        const TORVIKstatistics counts = statisticsOf(deviceNo);
        if (counts.framesRouted != endsOf(counts)) {
            faults.push_back(fmt::format("device {}: {} frames routed, but {} ended", deviceNo, counts.framesRouted,
                                         endsOf(counts)));
        }
    }
    const TORVIKstatistics all = since(0);
    const std::uint64_t handedOut = ProofAdapter::instance().framesRead() - handedOutBefore_;
    const std::uint64_t counted = all.framesRouted + all.framesWithoutDevice + all.framesNotRouted;
    if (all.framesReceived != handedOut || counted != handedOut) {
        faults.push_back(fmt::format("{} frames handed out, {} received, {} routed or dropped before", handedOut,
                                     all.framesReceived, counted));
    }
    return faults;
}

std::vector<std::string> FrameAccounting::differences(std::uint8_t deviceNo, const TORVIKstatistics& expected) const {
    std::vector<std::string> lines;
    for (const std::string& line : test::differences(expected, since(deviceNo)))
        lines.push_back(fmt::format("device {}, {}", deviceNo, line));
    return lines;
}

}  // namespace torvik::proof
