#include "stream_statistics.h"

#include <chrono>
#include <cmath>

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
    double mean() const { return mean_; }
    double deviation() const { return count_ > 1 ? std::sqrt(squares_ / static_cast<double>(count_ - 1)) : 0.0; }

  private:
    std::size_t count_ = 0;
    double mean_ = 0;
    double squares_ = 0;
};

[[noreturn]] void failWithoutValues(const std::string& what) {
    throw Failure{.exitCode = ExitCode::streamFailed,
                  .tried = what,
                  .reason = "the device sent too few values",
                  .advice = "check with 'torvik stream' that it sends, or measure for longer"};
}

}  // namespace

std::vector<ChannelStatistics> measureStream(Session& session, const Connection& connection, std::size_t bufferSize,
                                             double seconds, std::size_t left, const std::string& what) {
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
        if (Clock::now() - latest > patience) failWithoutValues(what);
        if (session.interruption.waitFor(reader.pollInterval())) throw Interrupted{};
    }
    if (sets < fewestSets) failWithoutValues(what);
    std::vector<ChannelStatistics> statistics;
    statistics.reserve(channels);
    for (const Spread& spread : spreads)
        statistics.push_back({.mean = spread.mean(), .deviation = spread.deviation()});
    return statistics;
}

}  // namespace torvik::tool
