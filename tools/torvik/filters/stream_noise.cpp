#include "filters/stream_noise.h"

#include <fmt/format.h>

#include <cmath>
#include <iterator>

#include "stream_statistics.h"

namespace torvik::tool {

std::vector<double> measureNoise(Session& session, const Connection& connection, std::size_t bufferSize, double seconds,
                                 std::size_t left) {
    std::vector<double> deviations;
    for (const ChannelStatistics& channel :
         measureStream(session, connection, bufferSize, seconds, left, "measuring the noise of the stream"))
        deviations.push_back(channel.deviation);
    return deviations;
}

std::string noiseTable(const std::vector<double>& before, const std::vector<double>& after) {
    std::string table = fmt::format("{:<10}{:<16}{:<16}{}\n", "channel", "noise before", "noise after", "drop");
    for (std::size_t channel = 0; channel < before.size(); ++channel) {
        const bool known = before[channel] > 0 && after[channel] > 0;
        fmt::format_to(std::back_inserter(table), "{:<10}{:<16.6g}{:<16.6g}{}\n", channel + 1, before[channel],
                       after[channel],
                       known ? fmt::format("{:.1f} dB", 20.0 * std::log10(before[channel] / after[channel])) : "-");
    }
    return table;
}

}  // namespace torvik::tool
