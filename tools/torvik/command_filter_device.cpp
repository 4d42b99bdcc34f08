#include <fmt/format.h>

#include <memory>
#include <string>

#include "TORVIK.h"
#include "command_filter.h"
#include "connection.h"
#include "filters/device_filter.h"
#include "filters/filter_analysis.h"
#include "filters/filter_loading.h"
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

/// Until a filter has forgotten what was before it was switched on.
std::size_t setsUntilSettled(const FilterDesign& design) {
    constexpr std::size_t most = 100000;
    return 2 * settlingSamples(design.held, most);
}

/// The filter as the device has it.
void tellFilter(Session& session, const Connection& connection, std::uint32_t mask, FilterBank bank,
                std::uint32_t number) {
    DeviceFilter filter = readFilter(connection, mask, bank, number);
    readCoefficients(connection, filter);
    writeData(session, filterLine(filter) + coefficientLines(filter));
}

void storeSettings(const Connection& connection) {
    constexpr std::uint8_t startUpSet = 0;
    if (TORVIKstoreSettings(connection.deviceNo(), startUpSet) != 0)
        connection.fail(ExitCode::deviceFailed, "storing the present settings with the loaded filter");
}

/// The noise without the filter, which stays off. A filter that was on is switched on again when there is no result.
std::vector<double> noiseWithout(Session& session, const Connection& connection, const LoadOptions& options,
                                 std::size_t bufferSize, bool wasOn) {
    try {
        return measureNoise(session, connection, bufferSize, options.noiseSeconds, 0);
    } catch (...) {
        if (wasOn) switchFilter(connection, FilterBank::iir, options.number, true);
        throw;
    }
}

/// The filter runs, and is stored, only once the device is known to hold the right one.
ExitCode runLoad(Session& session, const LoadOptions& options, const ConnectionOptions& connectionOptions) {
    const FilterRequest request = options.design.checked();
    const Connection connection(connectionOptions);
    const FilterDesign design = designRequest(request, samplingFrequencyOf(connection), connectionOptions.protocolKind);
    refuseUnstable(design, options.force);
    const bool measuring = options.noiseSeconds > 0;
    const bool wasOn = isFilterOn(filtersOn(connection), FilterBank::iir, options.number);
    const FilterLoading loading(connection, design, options.number);
    switchFilter(connection, FilterBank::iir, options.number, false);
    std::vector<double> before;
    if (measuring) before = noiseWithout(session, connection, options, connectionOptions.bufferSize, wasOn);
    loading.write();
    if (options.on || measuring || wasOn) switchFilter(connection, FilterBank::iir, options.number, true);
    storeSettings(connection);
    tellFilter(session, connection, filtersOn(connection), FilterBank::iir, options.number);
    if (measuring) {
        const auto after = measureNoise(session, connection, connectionOptions.bufferSize, options.noiseSeconds,
                                        setsUntilSettled(design));
        writeData(session, "\n" + noiseTable(before, after));
    }
    return ExitCode::success;
}

ExitCode runShowFilters(Session& session, const FilterChoice& choice, const ConnectionOptions& connectionOptions) {
    const Connection connection(connectionOptions);
    const std::uint32_t mask = filtersOn(connection);
    if (choice.number != everyFilter) {
        tellFilter(session, connection, mask, choice.bank(), choice.number);
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
