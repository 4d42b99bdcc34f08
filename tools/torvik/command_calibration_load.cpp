#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "TORVIK.h"
#include "calibration/calibration_differences.h"
#include "calibration/calibration_page.h"
#include "calibration/device_calibration.h"
#include "calibration/progress.h"
#include "command_calibration.h"
#include "connection.h"
#include "filters/request_options.h"
#include "number_option.h"
#include "parameters/unit_names.h"
#include "printable_text.h"
#include "stream_statistics.h"

namespace torvik::tool {

namespace {

struct LoadRequest {
    std::string file;
    std::uint32_t slot = 0;
    bool asSixBySix = false;
    double valuesSeconds = 0;  ///< 0: the values are not measured
};

/// About how many answers a loading draws.
std::size_t answersToWriting(const CalibrationFile& file, std::uint32_t firmware) {
    constexpr std::size_t streamPauses = 4;
    constexpr std::size_t modelParts = 4;
    const bool keepsFormat = firmware >= firmwareWithFormatWord;
    const CalDimensions size = keepsFormat ? file.size : CalDimensions{};
    std::size_t answers = streamPauses + 2 + size.elements() + offsetCount + size.outputs + 2;
    if (keepsFormat) answers += 2 + size.inputs;
    if (file.matrixB && keepsFormat) answers += standardElements + 2 * standardSize;
    if (file.model && firmware >= firmwareWithModelName) answers += modelParts;
    if (file.date) answers += 3;
    for (const auto& unit : file.units.outputs)
        answers += unit ? 1 : 0;
    return answers;
}

/// About how many answers it draws to read a calibration back.
std::size_t answersToReading(const CalibrationFile& file, std::uint32_t firmware) {
    const bool keepsFormat = firmware >= firmwareWithFormatWord;
    const CalDimensions size = keepsFormat ? file.size : CalDimensions{};
    std::size_t answers = 8 + size.elements() + offsetCount + size.outputs;
    if (keepsFormat) answers += 3 + size.inputs + standardSize + 3;
    if (file.matrixB && keepsFormat) answers += standardElements + 2 * standardSize;
    return answers;
}

void refuseSmallerSensor(const CalibrationFile& file, std::uint32_t firmware, const LoadRequest& request) {
    const bool smaller = file.size.inputs < standardSize || file.size.outputs < standardSize;
    if (!smaller || firmware >= firmwareWithFormatWord || request.asSixBySix) return;
    throw Failure{.exitCode = ExitCode::usage,
                  .tried = fmt::format("loading '{}'", request.file),
                  .reason = fmt::format(
                      "the file is for {} inputs and {} outputs, but the device's firmware 0x{:08X} knows "
                      "matrices of 6 x 6 only (smaller ones from 0x{:08X} on): it would take the {} elements "
                      "for the beginning of a 6 x 6 matrix, and its values would be wrong",
                      file.size.inputs, file.size.outputs, firmware, firmwareWithFormatWord, file.size.elements()),
                  .advice =
                      "write a file with 6 rows of 6 columns for this device, or update its firmware; "
                      "--as-6x6 loads this one nevertheless"};
}

/// Before and after, with the units that the calibration gives the outputs.
std::string valuesTable(const std::vector<ChannelStatistics>& before, const std::vector<ChannelStatistics>& after,
                        const DeviceCalibration& calibration) {
    std::string table = fmt::format("{:<10}{:<16}{:<16}{}\n", "channel", "mean before", "mean after", "unit");
    for (std::size_t channel = 0; channel < before.size(); ++channel) {
        const bool isOutput = channel < std::min(calibration.size().outputs, standardSize);
        fmt::format_to(std::back_inserter(table), "{:<10}{:<16.6g}{:<16.6g}{}\n", channel + 1, before[channel].mean,
                       after[channel].mean,
                       calibration.units && isOutput ? printable(utf8FromDevice(calibration.unitText(channel))) : "-");
    }
    return table;
}

/// What the calibration makes of signals, without offsets and matrix B, which change it little.
double expectedOutput(const DeviceCalibration& calibration, std::span<const ChannelStatistics> signals,
                      std::size_t output) {
    const std::size_t inputs = calibration.size().inputs;
    double sum = 0;
    for (std::size_t input = 0; input < std::min(inputs, signals.size()); ++input) {
        const double zero = calibration.zeroSignals ? (*calibration.zeroSignals)[input] : 0.0;
        sum += calibration.matrix[output * inputs + input] * (signals[input].mean - zero);
    }
    return sum * calibration.inScale * calibration.outScale;
}

/// Whether the values after the loading are nearer to those before than to what the calibration makes of them.
bool staySignals(std::span<const ChannelStatistics> before, std::span<const ChannelStatistics> after,
                 const DeviceCalibration& calibration) {
    double fromSignals = 0;
    double fromOutputs = 0;
    for (std::size_t output = 0; output < std::min(calibration.size().outputs, after.size()); ++output) {
        fromSignals += std::abs(after[output].mean - before[output].mean);
        fromOutputs += std::abs(after[output].mean - expectedOutput(calibration, before, output));
    }
    return fromSignals < fromOutputs / 2;
}

class Loading {
  public:
    Loading(Session& session, const LoadRequest& request, const ConnectionOptions& options)
        : session_(session),
          request_(request),
          file_(usableCalibration(request.file, fmt::format("loading '{}'", request.file))),
          connection_(options),
          bufferSize_(options.bufferSize),
          firmware_(firmwareOf(connection_)) {}

    ExitCode run() {
        refuseSmallerSensor(file_, firmware_, request_);
        const auto before = measureValues();
        Progress progress(session_, connection_);
        write(progress);
        const DeviceCalibration held = readBack(progress);
        const auto differences = calibrationDifferences(file_, held);
        tellReadBack(differences, progress.seconds());
        if (request_.valuesSeconds > 0) tellValues(before, measureValues(), held);
        return differences.empty() ? ExitCode::success : ExitCode::differs;
    }

  private:
    std::vector<ChannelStatistics> measureValues() {
        if (request_.valuesSeconds == 0) return {};
        return measureStream(session_, connection_, bufferSize_, request_.valuesSeconds, 0,
                             "measuring the mean values of the stream");
    }

    void write(Progress& progress) {
        const std::int32_t result = progress.run("writing", answersToWriting(file_, firmware_), [this] {
            return TORVIKwriteFTSensorCalFromFile(connection_.deviceNo(), request_.slot, request_.file.c_str());
        });
        if (result != 0)
            connection_.fail(ExitCode::deviceFailed,
                             fmt::format("loading '{}' into slot {} of the device", request_.file, request_.slot));
        writeData(session_, fmt::format("'{}' written to slot {} in {:.3f} s\n{}", request_.file, request_.slot,
                                        progress.seconds(), writtenLines(file_, firmware_)));
        if (!session_.interruption.requested()) return;
        printMessage("torvik: the calibration was written, but not read back\n");
        throw Interrupted{};
    }

    DeviceCalibration readBack(Progress& progress) {
        std::optional<DeviceCalibration> held;
        std::optional<Failure> failure;
        progress.run("reading back", answersToReading(file_, firmware_), [this, &held, &failure] {
            try {
                held = readDeviceCalibration(connection_, request_.slot);
            } catch (const Failure& thrown) {
                failure = thrown;
            }
            return 0;
        });
        if (failure) throw *failure;
        return *held;
    }

    void tellReadBack(const std::vector<std::string>& differences, double seconds) {
        std::string text = fmt::format("read back in {:.3f} s: ", seconds);
        text += differences.empty() ? "nothing differs\n" : fmt::format("{} differ\n", differences.size());
        for (const std::string& difference : differences)
            text += "  " + difference + "\n";
        if (firmware_ < firmwareWithSlotSelection)
            text += "this firmware selects no slots: what was read is its present calibration\n";
        writeData(session_, text);
    }

    void tellValues(const std::vector<ChannelStatistics>& before, const std::vector<ChannelStatistics>& after,
                    const DeviceCalibration& held) {
        writeData(session_, "\n" + valuesTable(before, after, held));
        if (!staySignals(before, after, held)) return;
        printMessage(
            "torvik: the values did not become what the calibration makes of the signals: the device sends the "
            "signals,\n"
            "        for which the units above do not hold, or it had this calibration before\n"
            "        (a simulated amplifier uses its calibration only with 'calibrated = true' in its bench)\n");
    }

    Session& session_;
    const LoadRequest& request_;
    CalibrationFile file_;
    Connection connection_;
    std::size_t bufferSize_;
    std::uint32_t firmware_;
};

}  // namespace

void addCalibrationLoadVerb(CLI::App& calibration, CommandLine& commandLine) {
    CLI::App* const command =
        calibration.add_subcommand("load", "write a calibration file into a slot of the device and read it back");
    const auto request = std::make_shared<LoadRequest>();
    command->add_option("FILE", request->file, "the calibration file; its matrix files stand beside it")
        ->required()
        ->type_name("");
    addNumberOption(*command, "--slot", request->slot, {0, lastCalibrationSlot}, "the slot, 0..127")
        ->required()
        ->type_name("N");
    command->add_flag("--as-6x6", request->asSixBySix,
                      "load a smaller sensor's file even where the firmware takes it for a 6 x 6 matrix");
    addPositiveOption(*command, "--values", request->valuesSeconds, "SECONDS",
                      "measure the mean values of the stream for so long before and after");
    addConnectionOptions(*command, commandLine.connection);
    command->callback([&commandLine, request] {
        commandLine.action = [&commandLine, request](Session& session) {
            return Loading(session, *request, commandLine.connection).run();
        };
    });
}

}  // namespace torvik::tool
