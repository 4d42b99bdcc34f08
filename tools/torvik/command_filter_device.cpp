#include <fmt/format.h>

#include <memory>
#include <string>

#include "TORVIK.h"
#include "command_filter.h"
#include "connection.h"
#include "filters/device_filter.h"
#include "filters/filter_analysis.h"
#include "filters/filter_page.h"
#include "filters/request_options.h"
#include "filters/stream_noise.h"
#include "number_option.h"

namespace torvik::tool {

namespace {

constexpr std::uint32_t everyFilter = 0;

struct LoadOptions {
    RequestOptions design;
    std::uint32_t number = 1;
    bool on = false;
    bool force = false;
    double noiseSeconds = 0;  ///< 0: the noise is not measured
};

struct FilterChoice {
    std::uint32_t number = everyFilter;
    bool fir = false;

    FilterBank bank() const { return fir ? FilterBank::fir : FilterBank::iir; }
};

void refuseUnstable(const FilterDesign& design, bool force) {
    for (const std::string& warning : designWarnings(design))
        printMessage(fmt::format("torvik: warning: {}\n", warning));
    if (force || (polesAreInside(design) && isStable(design.held))) return;
    throw Failure{.exitCode = ExitCode::usage,
                  .tried = fmt::format("loading a {}", requestText(design.request)),
                  .reason = "the filter is unstable: its output would grow without end",
                  .advice = "choose other cut-off frequencies, or load it nevertheless with --force"};
}

void loadDesign(const Connection& connection, const FilterDesign& design, std::uint32_t number) {
    const FilterRequest& request = design.request;
    if (TORVIKcalcSetDfilterParams(connection.deviceNo(), number, 0, static_cast<std::uint32_t>(request.kind),
                                   static_cast<std::uint32_t>(request.characteristic), filterOrder, request.f1,
                                   request.f2) != 0)
        connection.fail(ExitCode::deviceFailed, fmt::format("loading IIR filter {}", number));
}

/// Tells the filter as the device has it, and what differs from the design on standard error.
ExitCode tellLoaded(Session& session, const Connection& connection, const FilterDesign& design, std::uint32_t number) {
    DeviceFilter filter = readFilter(connection, filtersOn(connection), FilterBank::iir, number);
    readCoefficients(connection, filter);
    writeData(session, filterLine(filter) + coefficientLines(filter));
    const auto differences = filterDifferences(design, filter);
    for (const std::string& difference : differences)
        printMessage(fmt::format("torvik: IIR filter {}: {}\n", number, difference));
    return differences.empty() ? ExitCode::success : ExitCode::differs;
}

/// Until a filter has forgotten what was before it was switched on.
std::size_t setsUntilSettled(const FilterDesign& design) {
    constexpr std::size_t most = 100000;
    return 2 * settlingSamples(design.held, most);
}

ExitCode runLoad(Session& session, const LoadOptions& options, const ConnectionOptions& connectionOptions) {
    const FilterRequest request = options.design.checked();
    const Connection connection(connectionOptions);
    const FilterDesign design = designRequest(request, samplingFrequencyOf(connection), connectionOptions.protocolKind);
    refuseUnstable(design, options.force);
    const bool measuring = options.noiseSeconds > 0;
    std::vector<double> before;
    if (measuring) {
        switchFilter(connection, FilterBank::iir, options.number, false);
        before = measureNoise(session, connection, connectionOptions.bufferSize, options.noiseSeconds, 0);
    }
    loadDesign(connection, design, options.number);
    if (options.on || measuring) switchFilter(connection, FilterBank::iir, options.number, true);
    const ExitCode result = tellLoaded(session, connection, design, options.number);
    if (measuring) {
        const auto after = measureNoise(session, connection, connectionOptions.bufferSize, options.noiseSeconds,
                                        setsUntilSettled(design));
        writeData(session, "\n" + noiseTable(before, after));
    }
    return result;
}

ExitCode runShowFilters(Session& session, const FilterChoice& choice, const ConnectionOptions& connectionOptions) {
    const Connection connection(connectionOptions);
    const std::uint32_t mask = filtersOn(connection);
    if (choice.number != everyFilter) {
        DeviceFilter filter = readFilter(connection, mask, choice.bank(), choice.number);
        readCoefficients(connection, filter);
        writeData(session, filterLine(filter) + coefficientLines(filter));
        return ExitCode::success;
    }
    std::string lines;
    for (const FilterBank bank : {FilterBank::iir, FilterBank::fir}) {
        if (choice.fir && bank == FilterBank::iir) continue;
        for (std::uint32_t number = 1; number <= filtersOfBank; ++number)
            lines += filterLine(readFilter(connection, mask, bank, number));
    }
    writeData(session, lines);
    return ExitCode::success;
}

ExitCode runSwitch(Session& session, const FilterChoice& choice, bool on, const ConnectionOptions& connectionOptions) {
    const Connection connection(connectionOptions);
    const bool all = choice.number == everyFilter;
    const std::uint32_t first = all ? 1 : choice.number;
    const std::uint32_t last = all ? filtersOfBank : choice.number;
    for (std::uint32_t number = first; number <= last; ++number)
        switchFilter(connection, choice.bank(), number, on);
    const std::uint32_t mask = filtersOn(connection);
    std::string lines;
    for (std::uint32_t number = first; number <= last; ++number)
        lines += filterLine(readFilter(connection, mask, choice.bank(), number));
    writeData(session, lines);
    return ExitCode::success;
}

void addFilterNumber(CLI::App& command, FilterChoice& choice, const std::string& description) {
    addNumberOption(command, "N", choice.number, {1, filtersOfBank}, description)->type_name("");
    command.add_flag("--fir", choice.fir, "of the FIR filters, not of the IIR filters");
}

void addSwitchVerb(CLI::App& filter, CommandLine& commandLine, const std::string& verb, bool on) {
    CLI::App* const command = filter.add_subcommand(verb, fmt::format("switch a filter {}, or all of a bank", verb));
    const auto choice = std::make_shared<FilterChoice>();
    addFilterNumber(*command, *choice, "the filter, 1..8; none: all eight");
    addConnectionOptions(*command, commandLine.connection);
    command->callback([&commandLine, choice, on] {
        commandLine.action = [&commandLine, choice, on](Session& session) {
            return runSwitch(session, *choice, on, commandLine.connection);
        };
    });
}

void addLoadVerb(CLI::App& filter, CommandLine& commandLine) {
    CLI::App* const command = filter.add_subcommand("load", "design a filter for the device, load it and read it back");
    const auto options = std::make_shared<LoadOptions>();
    addNumberOption(*command, "N", options->number, {1, filtersOfBank}, "the IIR filter to be loaded, 1..8")
        ->required()
        ->type_name("");
    addRequestOptions(*command, options->design);
    command->add_flag("--on", options->on, "switch it on");
    command->add_flag("--force", options->force, "load it even though it is unstable");
    addPositiveOption(*command, "--noise", options->noiseSeconds, "SECONDS",
                      "switch it on, and measure the stream's noise for so long without it and with it");
    addConnectionOptions(*command, commandLine.connection);
    command->callback([&commandLine, options] {
        commandLine.action = [&commandLine, options](Session& session) {
            return runLoad(session, *options, commandLine.connection);
        };
    });
}

}  // namespace

void addFilterDeviceVerbs(CLI::App& filter, CommandLine& commandLine) {
    addLoadVerb(filter, commandLine);
    CLI::App* const show = filter.add_subcommand("show", "the device's filters; of one filter the coefficients, too");
    const auto choice = std::make_shared<FilterChoice>();
    addFilterNumber(*show, *choice, "the filter, 1..8; none: all of both banks");
    addConnectionOptions(*show, commandLine.connection);
    show->callback([&commandLine, choice] {
        commandLine.action = [&commandLine, choice](Session& session) {
            return runShowFilters(session, *choice, commandLine.connection);
        };
    });
    addSwitchVerb(filter, commandLine, "on", true);
    addSwitchVerb(filter, commandLine, "off", false);
}

}  // namespace torvik::tool
