#include "csv_format.h"

#include <fmt/format.h>

#include <iterator>

namespace torvik::tool {

std::string CsvFormat::header() const {
    std::string line = "set,seconds";
    for (std::size_t channel = 1; channel <= channels_; ++channel) {
        fmt::format_to(std::back_inserter(line), ",channel{}", channel);
    }
    for (std::size_t channel = 1; withStatus_ && channel <= channels_; ++channel) {
        fmt::format_to(std::back_inserter(line), ",status{}", channel);
    }
    return line + "\n";
}

std::string CsvFormat::lines(const SetBatch& batch, double seconds) {
    std::string text;
    auto out = std::back_inserter(text);
    for (std::size_t set = 0; set < batch.sets; ++set) {
        fmt::format_to(out, "{},{:.3f}", ++setNumber_, seconds);
        for (const double value : batch.values.subspan(set * channels_, channels_))
            fmt::format_to(out, ",{}", value);
        if (withStatus_) {
            for (const std::uint32_t status : batch.statuses.subspan(set * channels_, channels_)) {
                fmt::format_to(out, ",{}", status);
            }
        }
        text += '\n';
    }
    return text;
}

}  // namespace torvik::tool
