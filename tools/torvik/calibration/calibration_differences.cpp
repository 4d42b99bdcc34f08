#include "calibration/calibration_differences.h"

#include <fmt/format.h>

#include <algorithm>
#include <span>

#include "calib/calibration_limits.h"
#include "core/wire.h"
#include "parameters/unit_names.h"
#include "parameters/value.h"
#include "params/unit_table.h"
#include "params/user_text.h"
#include "printable_text.h"

namespace torvik::tool {

namespace {

std::string narrowedText(double number) {
    return valueText(ValueKind::single, Value(widenFloat(narrowToFloat(number))));
}

class Comparison {
  public:
    Comparison(const CalibrationFile& file, const DeviceCalibration& device) : file_(file), device_(device) {}

    std::vector<std::string> run() {
        compareIdentity();
        compareUnits();
        number("output scale", file_.outScale, device_.outScale);
        number("input scale", file_.inScale, device_.inScale);
        numbers("offset", file_.offsets, device_.offsets);
        if (sameSize()) compareSizedArrays();
        compareMatrixB();
        return std::move(lines_);
    }

  private:
    bool keepsFormat() const { return device_.firmware >= firmwareWithFormatWord; }

    void text(const std::string& name, const std::string& inFile, const std::string& inDevice) {
        if (inFile == inDevice) return;
        const auto shown = [](const std::string& bytes) {
            return bytes.empty() ? "none" : printable(utf8FromDevice(bytes));
        };
        lines_.push_back(fmt::format("{}: {} in the file, {} in the device", name, shown(inFile), shown(inDevice)));
    }

    void notKept(const std::string& name, const std::string& inFile) {
        lines_.push_back(fmt::format("{}: {} in the file, not kept by the device's firmware", name, inFile));
    }

    void number(const std::string& name, double inFile, double inDevice) {
        if (narrowToFloat(inFile) == narrowToFloat(inDevice) || widenFloat(narrowToFloat(inFile)) == inDevice) return;
        lines_.push_back(
            fmt::format("{}: {} in the file, {} in the device", name, narrowedText(inFile), narrowedText(inDevice)));
    }

    void numbers(const std::string& name, std::span<const double> inFile, std::span<const double> inDevice) {
        for (std::size_t i = 0; i < inDevice.size(); ++i)
            number(fmt::format("{} {}", name, i), inFile[i], inDevice[i]);
    }

    void compareIdentity() {
        const auto serial = parseSerialText(file_.serialText.data());
        text("serial number", fmt::format("{}", serial.value_or(0)), fmt::format("{}", device_.serial));
        if (file_.model) {
            const std::string kept = file_.model->substr(0, modelNameSize - 1);
            if (device_.model) {
                text("model name", kept, *device_.model);
            } else if (!kept.empty()) {
                notKept("model name", printable(utf8FromDevice(kept)));
            }
        }
        if (!file_.date) return;
        if (!device_.date) {
            notKept("date", fmt::format("{:04}-{:02}-{:02}", file_.date->year, file_.date->month, file_.date->day));
            return;
        }
        number("year", file_.date->year, (*device_.date)[0]);
        number("month", file_.date->month, (*device_.date)[1]);
        number("day", file_.date->day, (*device_.date)[2]);
    }

    void compareUnits() {
        for (std::size_t output = 0; output < standardSize; ++output) {
            const auto& wanted = file_.units.outputs[output];
            if (!wanted) continue;
            const std::string name = fmt::format("unit {}", output);
            if (!device_.units) {
                notKept(name, printable(utf8FromDevice(*wanted)));
                continue;
            }
            const bool inTable = findUnit(*wanted, charset::ascii).has_value();
            text(name, inTable ? *wanted : wanted->substr(0, userTextLength - 1), device_.unitText(output));
        }
    }

    /// Older firmware has 6 x 6 elements, of which a smaller sensor fills the first ones.
    bool sameSize() {
        if (!keepsFormat()) return true;
        const CalDimensions size = device_.size();
        if (size.inputs == file_.size.inputs && size.outputs == file_.size.outputs) return true;
        lines_.push_back(fmt::format("size: {} inputs, {} outputs in the file, {} inputs, {} outputs in the device",
                                     file_.size.inputs, file_.size.outputs, size.inputs, size.outputs));
        return false;
    }

    void compareSizedArrays() {
        const std::size_t inputs = device_.size().inputs;
        for (std::size_t i = 0; i < device_.matrix.size(); ++i)
            number(fmt::format("matrix row {}, column {}", i / inputs, i % inputs), file_.matrix[i], device_.matrix[i]);
        numbers("maximum", file_.maxima, device_.maxima);
        if (device_.zeroSignals) {
            numbers("zero signal", file_.zeroSignals, *device_.zeroSignals);
            return;
        }
        for (std::size_t i = 0; i < file_.size.inputs; ++i) {
            if (file_.zeroSignals[i] != 0)
                notKept(fmt::format("zero signal {}", i), narrowedText(file_.zeroSignals[i]));
        }
    }

    void compareMatrixB() {
        if (file_.matrixB && !keepsFormat()) notKept("matrix B", "one");
        if (!keepsFormat()) return;
        if (file_.matrixB.has_value() != device_.matrixB.has_value()) {
            text("matrix B", file_.matrixB ? "one" : "none", device_.matrixB ? "one" : "none");
            return;
        }
        if (!file_.matrixB) return;
        for (std::size_t i = 0; i < standardElements; ++i)
            number(fmt::format("matrix B row {}, column {}", i / standardSize, i % standardSize),
                   file_.matrixB->elements[i], device_.matrixB->elements[i]);
        factors("first", file_.matrixB->firstFactors, device_.matrixB->firstFactors);
        factors("second", file_.matrixB->secondFactors, device_.matrixB->secondFactors);
    }

    void factors(const std::string& which, std::span<const std::uint32_t> inFile,
                 std::span<const std::uint32_t> inDevice) {
        for (std::size_t i = 0; i < inFile.size(); ++i)
            number(fmt::format("{} factor {}", which, i), inFile[i], inDevice[i]);
    }

    const CalibrationFile& file_;
    const DeviceCalibration& device_;
    std::vector<std::string> lines_;
};

}  // namespace

std::vector<std::string> calibrationDifferences(const CalibrationFile& file, const DeviceCalibration& device) {
    return Comparison(file, device).run();
}

}  // namespace torvik::tool
