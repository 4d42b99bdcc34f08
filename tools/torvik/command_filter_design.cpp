#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include "TORVIK.h"
#include "command_filter.h"
#include "connection.h"
#include "error_meanings.h"
#include "filter/response_files.h"
#include "filters/device_filter.h"
#include "filters/filter_analysis.h"
#include "filters/filter_page.h"
#include "filters/filter_plot.h"
#include "filters/request_options.h"
#include "platform/file_replacement.h"
#include "platform/plotter.h"

namespace torvik::tool {

namespace {

struct PlotOptions {
    RequestOptions design;
    std::string file;
};

/// The design, and the device whose sampling frequency it is for, when there is one.
struct DesignForDevice {
    std::optional<Connection> connection;
    FilterDesign design;
    std::string source;
};

/// Opens the device whose sampling frequency is wanted; a failure tells that none is needed.
void openForRate(std::optional<Connection>& device, const ConnectionOptions& connection) {
    try {
        device.emplace(connection);
    } catch (Failure& failure) {
        if (failure.exitCode == ExitCode::usage) throw;
        failure.reason = "without --rate the filter is designed for the sampling frequency of a device";
        failure.advice =
            "give the sampling frequency with --rate HZ, and no device is needed; or reach a device, "
            "or --simulate one";
        throw;
    }
}

std::unique_ptr<DesignForDevice> makeDesign(const RequestOptions& options, const ConnectionOptions& connection) {
    const FilterRequest request = options.checked();
    auto made = std::make_unique<DesignForDevice>();
    double fs = options.rate;
    made->source = "given";
    if (fs == 0) {
        openForRate(made->connection, connection);
        fs = samplingFrequencyOf(*made->connection);
        made->source = "of the device";
    }
    made->design = designRequest(request, fs, connection.protocolKind);
    for (const std::string& warning : designWarnings(made->design))
        printMessage(fmt::format("torvik: warning: {}\n", warning));
    return made;
}

ExitCode runDesign(Session& session, const RequestOptions& options, const ConnectionOptions& connection) {
    const auto made = makeDesign(options, connection);
    writeData(session, designPage(made->design, made->source));
    return ExitCode::success;
}

/// A name with a line end would end a line of whatever it is written into.
void checkFileName(const std::string& file) {
    const auto isControl = [](unsigned char character) { return character < 0x20 || character == 0x7F; };
    if (std::ranges::none_of(file, isControl)) return;
    throw Failure{.exitCode = ExitCode::usage,
                  .tried = "plotting",
                  .reason = "the file's name contains a control character, such as a line end",
                  .advice = "give a name like filter.png or filter.svg"};
}

PictureFormat formatOf(const std::filesystem::path& file) {
    if (file.extension() == ".png") return PictureFormat::png;
    if (file.extension() == ".svg") return PictureFormat::svg;
    throw Failure{.exitCode = ExitCode::usage,
                  .tried = fmt::format("plotting into '{}'", file.string()),
                  .reason = "the file's name tells the format, and this one ends with neither .png nor .svg",
                  .advice = "give a name like filter.png or filter.svg"};
}

/// The file beside the picture with another ending.
std::string besidePicture(std::filesystem::path picture, std::string_view ending) {
    return picture.replace_extension().string() + std::string(ending);
}

constexpr std::string_view pathAdvice = "check the path, the right to write there, and the disk for free space";

[[noreturn]] void failWriting(const std::string& file, std::uint32_t code) {
    throw Failure{.exitCode = ExitCode::outputFailed,
                  .tried = fmt::format("writing the response file '{}'", file),
                  .error = LibraryError{.code = code, .text = errorText(code)}};
}

/// The library's two text files: written by the library where there is a device, else by the same code without one.
class ResponseFiles {
  public:
    explicit ResponseFiles(DesignForDevice& made) : made_(made) {}

    void writeStep(const std::string& file) {
        write(file, [this](const std::string& name) { return stepResponse(name); });
    }

    void writeFrequencies(const std::string& file) {
        write(file, [this](const std::string& name) { return frequencyResponse(name); });
    }

  private:
    FilterDesign& design() { return made_.design; }

    /// `writer` gets the name to write to and returns its code.
    template <class Writer>
    static void write(const std::string& file, Writer writer) try {
        platform::FileReplacement replacement(file);
        if (const std::uint32_t code = writer(replacement.name()); code != filter_error::none) failWriting(file, code);
        replacement.commit();
    } catch (const std::system_error& error) {
        constexpr std::uint32_t responseFileMark = 0x31000000;
        failWriting(file, responseFileMark | static_cast<std::uint32_t>(error.code().value()));
    }

    std::uint32_t stepResponse(const std::string& file) {
        constexpr std::int32_t stepMode = 2;
        const std::int32_t points = static_cast<std::int32_t>(
            std::clamp<std::size_t>(settlingSamples(design().designed, 1000) * 3 / 2, 20, 1000));
        return made_.connection
                   ? simulate(stepMode, points, file)
                   : writeStepResponse(*design().filter, singlePrecision, 0, 1, design().fs, points, file.c_str());
    }

    std::uint32_t frequencyResponse(const std::string& file) {
        constexpr std::int32_t frequencyMode = 1;
        constexpr std::int32_t points = 500;
        const double fs = design().fs;
        return made_.connection ? simulate(frequencyMode, points, file)
                                : writeFrequencyResponse(*design().filter, singlePrecision, fs / 250, fs / 2, fs,
                                                         points, file.c_str());
    }

    std::uint32_t simulate(std::int32_t mode, std::int32_t points, const std::string& file) {
        constexpr std::uint32_t designOnly = 9;
        const FilterRequest& request = design().request;
        const std::int32_t deviceNo = made_.connection->deviceNo();
        if (TORVIKcalcSetDfilterParams(deviceNo, designOnly, 0, static_cast<std::uint32_t>(request.kind),
                                       static_cast<std::uint32_t>(request.characteristic), filterOrder, request.f1,
                                       request.f2) != 0)
            made_.connection->fail(ExitCode::deviceFailed, "designing the filter for the device");
        if (TORVIKsimulateDfilter(deviceNo, mode, 0, design().fs / 2, 0, points, file.c_str()) == 0) return 0;
        return takeErrorOfCall(static_cast<std::uint32_t>(deviceNo)).code;
    }

    DesignForDevice& made_;
};

[[noreturn]] void failOutput(const std::string& tried, const std::system_error& error) {
    throw Failure{.exitCode = ExitCode::outputFailed,
                  .tried = tried,
                  .reason = fmt::format("the file cannot be made or written: {}", error.code().message()),
                  .advice = std::string(pathAdvice)};
}

void writeScript(const std::string& file, const std::string& script) try {
    platform::replaceFile(file, script);
} catch (const std::system_error& error) {
    failOutput(fmt::format("writing gnuplot's commands into '{}'", file), error);
}

/// gnuplot draws into `drawn`, which replaces the picture afterwards.
void runGnuplot(const std::string& script, const std::string& drawn, const std::string& picture) {
    const auto result = platform::runGnuplot(script, drawn);
    if (!result) {
        throw Failure{
            .exitCode = ExitCode::notDrawn,
            .tried = fmt::format("drawing '{}'", picture),
            .reason = "there is no program gnuplot on the path",
            .advice = fmt::format("install gnuplot (Debian: apt-get install gnuplot-nox; Windows: "
                                  "gnuplot's installer, with its folder on the path), then run 'gnuplot -c {} {}'",
                                  script, picture)};
    }
    if (*result == 0) return;
    throw Failure{.exitCode = ExitCode::notDrawn,
                  .tried = fmt::format("drawing '{}'", picture),
                  .reason = fmt::format("gnuplot ended with exit code {}", *result),
                  .advice = "read gnuplot's message above; " + std::string(pathAdvice)};
}

void draw(const std::string& script, const std::string& picture) try {
    platform::FileReplacement replacement(picture);
    runGnuplot(script, replacement.name(), picture);
    replacement.commit();
} catch (const std::system_error& error) {
    failOutput(fmt::format("drawing '{}'", picture), error);
}

ExitCode runPlot(Session& session, const PlotOptions& options, const ConnectionOptions& connection) {
    checkFileName(options.file);
    const PictureFormat format = formatOf(options.file);
    const auto made = makeDesign(options.design, connection);
    const std::string step = besidePicture(options.file, "-step.txt");
    const std::string frequencies = besidePicture(options.file, "-frequency.txt");
    const std::string script = besidePicture(options.file, ".gnuplot");
    ResponseFiles files(*made);
    files.writeStep(step);
    files.writeFrequencies(frequencies);
    made->connection.reset();
    writeScript(script, plotScript(made->design, format));
    draw(script, options.file);
    writeData(session, fmt::format("{}\n{}\n{}\n{}\n", options.file, step, frequencies, script));
    return ExitCode::success;
}

}  // namespace

void addFilterDesignVerbs(CLI::App& filter, CommandLine& commandLine) {
    CLI::App* const design = filter.add_subcommand("design", "tell poles, coefficients, -3 dB points and delay");
    const auto designOptions = std::make_shared<RequestOptions>();
    addRequestOptions(*design, *designOptions);
    addRateOption(*design, *designOptions);
    addConnectionOptions(*design, commandLine.connection);
    design->callback([&commandLine, designOptions] {
        commandLine.action = [&commandLine, designOptions](Session& session) {
            return runDesign(session, *designOptions, commandLine.connection);
        };
    });

    CLI::App* const plot =
        filter.add_subcommand("plot", "draw step and frequency response with gnuplot, and write the two text files");
    const auto plotOptions = std::make_shared<PlotOptions>();
    plot->add_option("FILE", plotOptions->file, "the picture: *.png or *.svg; the other files stand beside it")
        ->required()
        ->type_name("");
    addRequestOptions(*plot, plotOptions->design);
    addRateOption(*plot, plotOptions->design);
    addConnectionOptions(*plot, commandLine.connection);
    plot->callback([&commandLine, plotOptions] {
        commandLine.action = [&commandLine, plotOptions](Session& session) {
            return runPlot(session, *plotOptions, commandLine.connection);
        };
    });
}

}  // namespace torvik::tool
