#include "filters/stream_noise.h"

#include <fmt/format.h>

#include <chrono>
#include <cmath>
#include <iterator>

#include "TORVIK.h"
#include "set_reader.h"

namespace torvik::tool {

namespace {

/// Mean and spread of one channel, updated value by value.
class Spread {
  public:
    void add(double value) {
        ++count_;
        const double distance = value - mean_;
        mean_ += distance / static_cast<double>(count_);
        squares_ += distance * (value - mean_);
    }
    double deviation() const { return count_ > 1 ? std::sqrt(squares_ / static_cast<double>(count_ - 1)) : 0.0; }

  private:
    std::size_t count_ = 0;
    double mean_ = 0;
    double squares_ = 0;
};

[[noreturn]] void failWithoutValues() {
    throw Failure{.exitCode = ExitCode::streamFailed,
                  .tried = "measuring the noise of the stream",
                  .reason = "the device sent too few values",
                  .advice = "check with 'torvik stream' that it sends, or measure for longer"};
}

}  // namespace

std::vector<double> measureNoise(Session& session, const Connection& connection, std::size_t bufferSize, double seconds,
                                 std::size_t left) {
    using Clock = std::chrono::steady_clock;
    constexpr std::size_t fewestSets = 10;
    constexpr auto patience = std::chrono::seconds(5);
    const std::size_t channels = connection.channelCount();
    std::vector<Spread> spreads(channels);
    std::size_t sets = 0;
    SetReader reader(connection, bufferSize);
    TORVIKclearDLLbuffer(connection.deviceNo());
    auto latest = Clock::now();
    auto start = latest;
    while (sets == 0 || Clock::now() - start < std::chrono::duration<double>(seconds)) {
        const SetBatch batch = reader.read(SetReader::mostSets);
        for (std::size_t set = 0; set < batch.sets; ++set) {
            if (left > 0) {
                --left;
                continue;
            }
            if (sets++ == 0) start = Clock::now();
            for (std::size_t channel = 0; channel < channels; ++channel)
                spreads[channel].add(batch.values[set * channels + channel]);
        }
        if (batch.sets > 0) latest = Clock::now();
        if (Clock::now() - latest > patience) failWithoutValues();
        if (session.interruption.waitFor(reader.pollInterval())) throw Interrupted{};
    }
    if (sets < fewestSets) failWithoutValues();
    std::vector<double> deviations;
    deviations.reserve(channels);
    for (const Spread& spread : spreads)
        deviations.push_back(spread.deviation());
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
