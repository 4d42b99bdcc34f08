#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <limits>
#include <memory>
#include <string>

#include "command_line.h"
#include "connection.h"
#include "loss_report.h"
#include "number_option.h"
#include "set_reader.h"
#include "stopwatch.h"
#include "stream_sinks.h"
#include "stream_watch.h"

namespace torvik::tool {

namespace {

using Clock = std::chrono::steady_clock;

struct StreamOptions {
    std::uint32_t count = 0;  ///< 0: no limit
    double seconds = 0.0;     ///< 0: no limit
    double timeout = 5.0;     ///< 0: no limit
    bool csv = false;
    bool status = false;
};

std::unique_ptr<SetSink> makeSink(Session& session, const StreamOptions& options,
                                  const ConnectionOptions& connectionOptions, std::size_t channels) {
    // Debug lines on the same terminal would tear the table.
    const bool disturbed = connectionOptions.debug && platform::StandardOutput::errorsGoToTerminal();
    if (options.csv || disturbed || !session.output.isTerminal()) {
        return std::make_unique<CsvSink>(session, channels, options.status);
    }
    std::string title =
        fmt::format("device {} on {}{}, {} bit/s, {} channels; Ctrl-C ends", connectionOptions.deviceNo,
                    adapterName(connectionOptions.adapterType), connectionOptions.simulate ? " (simulated)" : "",
                    connectionOptions.baudRate, channels);
    return std::make_unique<TableSink>(
        session, LiveTable(std::move(title), channels, connectionOptions.bufferSize, session.output.showsUtf8()));
}

struct Passed {
    ExitCode exitCode;
    std::uint64_t sets;
};

/// Passes sets on until the number or the time asked for is reached (success) or the end is requested (interrupted).
Passed passSets(Session& session, const StreamOptions& options, SetReader& reader, SetSink& sink, StreamWatch& watch,
                LossCounter& losses) {
    const auto start = Clock::now();
    const std::uint64_t wanted = options.count > 0 ? options.count : std::numeric_limits<std::uint64_t>::max();
    std::uint64_t left = wanted;
    bool anyValues = false;
    while (true) {
        const SetBatch batch = reader.read(static_cast<std::size_t>(left));
        const double now = secondsSince(start);
        sink.take(batch, now);
        left -= batch.sets;
        if (!anyValues && batch.sets > 0) losses.streamBegan();
        anyValues = anyValues || batch.sets > 0;
        const bool timeOver = options.seconds > 0.0 && now >= options.seconds;
        const bool interrupted = session.interruption.requested();
        if (left == 0 || timeOver || interrupted) {
            sink.finish(now);
            if (left > 0 && interrupted) return {ExitCode::interrupted, wanted - left};
            if (!anyValues) watch.failWithoutValues(now);
            return {ExitCode::success, wanted - left};
        }
        watch.check(batch, now);
        if (batch.sets < SetReader::mostSets) {
            session.interruption.waitFor(reader.pollInterval());
        }
    }
}

ExitCode runStream(Session& session, const StreamOptions& options, const ConnectionOptions& connectionOptions) {
    const Connection connection(connectionOptions);
    LossCounter counter(connection, connectionOptions.bufferSize == 1);
    SetReader reader(connection, connectionOptions.bufferSize);
    auto sink = makeSink(session, options, connectionOptions, connection.channelCount());
    StreamWatch watch(connection, *sink, options.timeout);
    const Passed passed = passSets(session, options, reader, *sink, watch, counter);
    const Losses losses = counter.losses();
    // The report comes below the table.
    sink.reset();
    printMessage(describe(losses, passed.sets));
    return passed.exitCode == ExitCode::success && losses.any() ? ExitCode::valuesLost : passed.exitCode;
}

void addSecondsOption(CLI::App& command, const std::string& name, double& seconds, bool zeroAllowed,
                      const std::string& description) {
    const auto take = [&seconds, name, zeroAllowed](const std::string& text) {
        constexpr double longest = 1e9;
        double parsed = 0.0;
        const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), parsed);
        const bool whole = error == std::errc{} && stop == text.data() + text.size();
        if (!whole || !(parsed >= 0.0 && parsed <= longest) || (parsed == 0.0 && !zeroAllowed)) {
            throw CLI::ValidationError(name, fmt::format("'{}' is not a number of seconds", text));
        }
        seconds = parsed;
    };
    command.add_option_function<std::string>(name, take, description)->type_name("SECONDS");
}

}  // namespace

void addStreamCommand(CommandLine& commandLine) {
    CLI::App* const command = commandLine.app.add_subcommand(
        "stream", "show measured values: a live table on a terminal, CSV when the output goes elsewhere");
    const auto options = std::make_shared<StreamOptions>();
    addNumberOption(*command, "-n,--count", options->count, {1, std::numeric_limits<std::uint32_t>::max()},
                    "end after so many sets (one value of each channel)");
    addSecondsOption(*command, "-s,--seconds", options->seconds, false, "end after so many seconds");
    addSecondsOption(*command, "--timeout", options->timeout, true,
                     "fail when no values come for so long; 0: wait for ever [5]");
    command->add_flag("--csv", options->csv, "CSV on a terminal, too");
    command->add_flag("--status", options->status, "add a status column for each channel to the CSV");
    addConnectionOptions(*command, commandLine.connection);
    command->callback([&commandLine, options] {
        commandLine.action = [&commandLine, options](Session& session) {
            return runStream(session, *options, commandLine.connection);
        };
    });
}

}  // namespace torvik::tool
