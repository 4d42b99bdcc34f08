#include "calibration/progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <future>

#include "TORVIKstatistics.h"
#include "stopwatch.h"

namespace torvik::tool {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t barWidth = 30;
constexpr int lineWidth = 79;
constexpr auto redrawInterval = std::chrono::milliseconds(100);

/// Those that calls have waited for, since the library was loaded.
std::uint64_t answersTaken(const Connection& connection) {
    TORVIKstatistics statistics{};
    statistics.size = sizeof statistics;
    TORVIKgetStatistics(connection.deviceNo(), &statistics);
    return statistics.answersTaken;
}

/// Over what the line on standard error showed before.
void redrawLine(const std::string& line) {
    std::fputs(("\r" + line).c_str(), stderr);
    std::fflush(stderr);
}

}  // namespace

std::string progressLine(std::string_view what, const ProgressState& state) {
    const std::uint64_t whole = std::max<std::uint64_t>(state.expected, 1);
    const std::uint64_t cells = std::min<std::uint64_t>(state.answers * barWidth / whole, barWidth - 1);
    const std::size_t drawn = state.complete ? barWidth : static_cast<std::size_t>(cells);
    const std::string bar = std::string(drawn, '#') + std::string(barWidth - drawn, '.');
    const std::string count = state.complete ? fmt::format("{} answers", state.answers)
                                             : fmt::format("{} of about {} answers", state.answers, state.expected);
    return fmt::format("{:<12} [{}] {}, {:.1f} s", what, bar, count, state.elapsed);
}

std::int32_t Progress::run(std::string_view what, std::size_t expected, const std::function<std::int32_t()>& call) {
    const bool shown = platform::StandardOutput::errorsGoToTerminal();
    const std::uint64_t before = answersTaken(connection_);
    const auto start = Clock::now();
    const auto draw = [&](bool complete) {
        if (!shown) return;
        const ProgressState state{.answers = answersTaken(connection_) - before,
                                  .expected = expected,
                                  .elapsed = secondsSince(start),
                                  .complete = complete};
        redrawLine(fmt::format("{:<{}}{}", progressLine(what, state), lineWidth, complete ? "\n" : ""));
    };
    auto result = std::async(std::launch::async, call);
    bool told = false;
    while (result.wait_for(redrawInterval) != std::future_status::ready) {
        if (session_.interruption.requested() && !told) {
            printMessage(
                fmt::format("{}torvik: the end is requested: waiting until this is complete\n", shown ? "\n" : ""));
            told = true;
        }
        draw(false);
    }
    seconds_ = secondsSince(start);
    const std::int32_t code = result.get();
    draw(code == 0);
    if (shown && code != 0) printMessage("\n");
    return code;
}

}  // namespace torvik::tool
