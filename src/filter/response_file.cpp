#include "filter/response_file.h"

#include <algorithm>
#include <iterator>

#include "filter/filter_options.h"
#include "filter/simulation.h"

namespace torvik {

namespace {

constexpr std::uint32_t responseFileMark = 0x31000000;

// The words of a heading up to the frequencies, by the design's kind. Kept: "4th order" whatever the order.
struct Heading {
    std::uint32_t option;
    std::string_view words;
};

constexpr Heading headings[] = {
    {option::lowPass, " response of IIR low pass 4th order. Cutoff freq: "},
    {option::highPass, " response of IIR high pass 4th order. Cutoff freq: "},
    {option::bandPass, " response of IIR band pass 4th order.\nLower cutoff freq: "},
    {option::bandStop, " response of IIR band stop 4th order.\nLower cutoff freq: "},
};

}  // namespace

void ResponseFile::writeHeading(std::string_view response, const Dfilter& filter, std::uint32_t kind, double fs) {
    if (kind == firKind) {
        line_.text(response).text(" response of FIR low pass ").integer(filter.order);
        line_.text("th order. Cutoff freq: ").fixed(filter.firCutoff, 3);
        finishHeading(fs);
        return;
    }
    const auto* const heading =
        std::ranges::find_if(headings, [&filter](const Heading& row) { return (filter.options & row.option) != 0; });
    if (heading == std::end(headings)) return;
    line_.text(response).text(heading->words).fixed(filter.alpha1 * fs, 3);
    if ((heading->option & option::bandKinds) != 0) line_.text(" Higher cutoff freq: ").fixed(filter.alpha2 * fs, 3);
    finishHeading(fs);
}

void ResponseFile::finishHeading(double fs) {
    line_.text(" Sampling freq: ").fixed(fs, 1).text("\n");
    flush();
}

std::uint32_t ResponseFile::close() {
    const std::uint32_t systemError = file_.close();
    return systemError == 0 ? 0 : systemError | responseFileMark;
}

}  // namespace torvik
