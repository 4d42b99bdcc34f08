#include "calibration/calibration_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <span>
#include <string_view>

#include "calib/calibration_limits.h"
#include "json_text.h"
#include "parameters/unit_names.h"
#include "parameters/value.h"
#include "printable_text.h"

namespace torvik::tool {

namespace {

constexpr std::string_view none = "none";
constexpr std::string_view notKept = "not kept by the device's firmware";

std::string singleText(double number) {
    return valueText(ValueKind::single, Value(number));
}

/// One row of a table of numbers.
std::string columns(std::span<const double> numbers) {
    std::string line;
    for (const double number : numbers)
        fmt::format_to(std::back_inserter(line), "{:>15}", singleText(number));
    return line;
}

std::string dateText(const CalibrationNumbers& date) {
    const bool whole = std::ranges::all_of(date, [](double number) { return number >= 0 && number < 1e9; });
    if (whole) return fmt::format("{:04.0f}-{:02.0f}-{:02.0f}", date[0], date[1], date[2]);
    return fmt::format("{} {} {}", singleText(date[0]), singleText(date[1]), singleText(date[2]));
}

std::string dateText(const CalibrationDate& date) {
    return fmt::format("{:04}-{:02}-{:02}", date.year, date.month, date.day);
}

std::string sizeText(const CalDimensions& size, bool matrixB) {
    return fmt::format("{} inputs, {} outputs{}", size.inputs, size.outputs, matrixB ? ", matrix B" : "");
}

class Page {
  public:
    void line(std::string_view name, std::string_view value) {
        fmt::format_to(std::back_inserter(text_), "  {:<16}{}\n", name, value);
    }
    void add(const std::string& text) { text_ += text; }

    const std::string& text() const { return text_; }

  private:
    std::string text_;
};

bool allZero(std::span<const double> numbers) {
    return std::ranges::all_of(numbers, [](double number) { return number == 0; });
}

bool allZero(const MatrixB& matrixB) {
    constexpr auto isZero = [](std::uint32_t factor) { return factor == 0; };
    return allZero(matrixB.elements) && std::ranges::all_of(matrixB.firstFactors, isZero) &&
           std::ranges::all_of(matrixB.secondFactors, isZero);
}

/// Units are the channels' and say nothing about a calibration.
bool isBesidesMatrixEmpty(const DeviceCalibration& calibration) {
    return calibration.serial == 0 && calibration.model.value_or("").empty() &&
           allZero(calibration.date.value_or(CalibrationNumbers{})) && allZero(calibration.offsets) &&
           allZero(calibration.zeroSignals.value_or(std::vector<double>{})) &&
           (!calibration.matrixB || allZero(*calibration.matrixB));
}

bool isEmpty(const DeviceCalibration& calibration) {
    return isBesidesMatrixEmpty(calibration) && allZero(calibration.matrix) && allZero(calibration.maxima) &&
           calibration.outScale == 0 && calibration.inScale == 0;
}

/// As a device keeps it that passes its signals on.
bool isNeutral(const DeviceCalibration& calibration) {
    const std::size_t inputs = calibration.size().inputs;
    for (std::size_t at = 0; at < calibration.matrix.size(); ++at) {
        if (calibration.matrix[at] != (at / inputs == at % inputs ? 1 : 0)) return false;
    }
    return isBesidesMatrixEmpty(calibration) && calibration.outScale == 1 && calibration.inScale == 1;
}

std::string slotText(const DeviceCalibration& calibration) {
    if (calibration.firmware < firmwareWithSlotSelection)
        return "The device's calibration (its firmware selects no slots)";
    return fmt::format("Calibration slot {} of the device", calibration.slot);
}

std::string outputTable(const DeviceCalibration& calibration) {
    const CalDimensions size = calibration.size();
    std::string table =
        fmt::format("\n  {:<8}{:<10}{:>15}   matrix: inputs 0 to {}\n", "output", "unit", "maximum", size.inputs - 1);
    const std::span<const double> matrix = calibration.matrix;
    for (std::size_t output = 0; output < size.outputs; ++output) {
        const bool hasUnit = calibration.units && output < standardSize;
        fmt::format_to(std::back_inserter(table), "  {:<8}{:<10}{:>15}{}\n", output,
                       hasUnit ? printable(utf8FromDevice(calibration.unitText(output))) : "-",
                       singleText(calibration.maxima[output]),
                       columns(matrix.subspan(output * size.inputs, size.inputs)));
    }
    if (calibration.zeroSignals)
        fmt::format_to(std::back_inserter(table), "  {:<33}{}\n", "zero signals", columns(*calibration.zeroSignals));
    return table;
}

std::string matrixBTable(const MatrixB& matrixB) {
    std::string table = fmt::format("\n  {:<33}", "matrix B: products of inputs");
    for (std::size_t i = 0; i < standardSize; ++i)
        fmt::format_to(std::back_inserter(table), "{:>15}",
                       fmt::format("{} x {}", matrixB.firstFactors[i], matrixB.secondFactors[i]));
    table += "\n";
    for (std::size_t row = 0; row < standardSize; ++row)
        fmt::format_to(std::back_inserter(table), "  {:<33}{}\n", fmt::format("output {}", row),
                       columns(std::span(matrixB.elements).subspan(row * standardSize, standardSize)));
    return table;
}

std::string jsonList(std::span<const double> numbers) {
    std::string list;
    for (const double number : numbers)
        list += (list.empty() ? "" : ", ") + singleJson(number);
    return "[" + list + "]";
}

std::string jsonList(std::span<const std::uint32_t> numbers) {
    return fmt::format("[{}]", fmt::join(numbers, ", "));
}

std::string jsonRows(std::span<const double> matrix, std::size_t inputs) {
    std::string rows;
    for (std::size_t at = 0; at < matrix.size(); at += inputs)
        rows += (rows.empty() ? "\n    " : ",\n    ") + jsonList(matrix.subspan(at, inputs));
    return "[" + rows + "]";
}

std::string jsonMatrixB(const std::optional<MatrixB>& matrixB) {
    if (!matrixB) return "null";
    return fmt::format("{{\n    \"first-factors\": {},\n    \"second-factors\": {},\n    \"matrix\": {}}}",
                       jsonList(matrixB->firstFactors), jsonList(matrixB->secondFactors),
                       jsonRows(matrixB->elements, standardSize));
}

std::string jsonUnits(const DeviceCalibration& calibration) {
    if (!calibration.units) return "null";
    std::string list;
    const std::size_t count = std::min(calibration.size().outputs, standardSize);
    for (std::size_t output = 0; output < count; ++output)
        list += (list.empty() ? "" : ", ") + quotedJson(utf8FromDevice(calibration.unitText(output)));
    return "[" + list + "]";
}

std::string unitsText(const UnitTexts& units, std::size_t outputs) {
    std::string text;
    for (std::size_t output = 0; output < outputs; ++output) {
        const auto& unit = units.outputs[output];
        text += (text.empty() ? "" : " ") + (unit ? printable(utf8FromDevice(*unit)) : "(as it was)");
    }
    return text;
}

}  // namespace

std::string calibrationPage(const DeviceCalibration& calibration) {
    if (isEmpty(calibration)) return slotText(calibration) + ": no calibration, all values are 0\n";
    Page page;
    page.add(slotText(calibration) + (isNeutral(calibration) ? ": no calibration, only the unit matrix\n" : "\n"));
    const bool unnamed = calibration.model && calibration.model->empty();
    const std::string model = printable(utf8FromDevice(calibration.model.value_or(std::string(notKept))));
    page.line("model name", unnamed ? none : model);
    page.line("serial number", fmt::format("{}", calibration.serial));
    const bool undated = calibration.date == CalibrationNumbers{};
    const std::string date = calibration.date ? dateText(*calibration.date) : std::string(notKept);
    page.line("date", undated ? none : date);
    page.line("size",
              fmt::format("{} (format word 0x{:X})", sizeText(calibration.size(), calibration.matrixB.has_value()),
                          calibration.formatWord));
    page.line("output scale", singleText(calibration.outScale));
    page.line("input scale", singleText(calibration.inScale));
    page.line("offsets", fmt::format("X {}, Y {}, Z {}", singleText(calibration.offsets[0]),
                                     singleText(calibration.offsets[1]), singleText(calibration.offsets[2])));
    page.add(outputTable(calibration));
    if (calibration.matrixB) page.add(matrixBTable(*calibration.matrixB));
    return page.text();
}

std::string calibrationJson(const DeviceCalibration& calibration) {
    const CalDimensions size = calibration.size();
    std::string json = "{\n";
    const auto member = [&json](std::string_view name, const std::string& value, bool last = false) {
        fmt::format_to(std::back_inserter(json), "  \"{}\": {}{}\n", name, value, last ? "" : ",");
    };
    member("slot", calibration.firmware < firmwareWithSlotSelection ? "null" : fmt::format("{}", calibration.slot));
    member("model-name", calibration.model ? quotedJson(utf8FromDevice(*calibration.model)) : "null");
    member("serial-number", fmt::format("{}", calibration.serial));
    member("date", calibration.date ? quotedJson(dateText(*calibration.date)) : "null");
    member("format-word", fmt::format("{}", calibration.formatWord));
    member("inputs", fmt::format("{}", size.inputs));
    member("outputs", fmt::format("{}", size.outputs));
    member("output-scale", singleJson(calibration.outScale));
    member("input-scale", singleJson(calibration.inScale));
    member("offsets", jsonList(calibration.offsets));
    member("units", jsonUnits(calibration));
    member("maxima", jsonList(calibration.maxima));
    member("zero-signals", calibration.zeroSignals ? jsonList(*calibration.zeroSignals) : "null");
    member("matrix", jsonRows(calibration.matrix, size.inputs));
    member("matrix-b", jsonMatrixB(calibration.matrixB), true);
    return json + "}\n";
}

std::string writtenLines(const CalibrationFile& file, std::uint32_t firmware) {
    const bool keepsFormat = firmware >= firmwareWithFormatWord;
    const CalDimensions written = keepsFormat ? file.size : CalDimensions{};
    Page page;
    page.line("serial number", fmt::format("{}", parseSerialText(file.serialText.data()).value_or(0)));
    if (file.model && firmware >= firmwareWithModelName)
        page.line("model name", printable(utf8FromDevice(file.model->substr(0, modelNameSize - 1))));
    if (file.date) page.line("date", dateText(*file.date));
    if (std::ranges::any_of(file.units.outputs, [](const auto& unit) { return unit.has_value(); }))
        page.line("units", unitsText(file.units, file.size.outputs));
    if (keepsFormat)
        page.line("format",
                  fmt::format("{} (word 0x{:X})", sizeText(file.size, file.matrixB.has_value()), file.formatWord()));
    page.line("output scale", singleText(file.outScale));
    page.line("input scale", singleText(file.inScale));
    page.line("matrix", fmt::format("{} elements", written.elements()));
    if (file.matrixB && keepsFormat)
        page.line("matrix B", fmt::format("{} elements, {} factors", standardElements, 2 * standardSize));
    page.line("offsets", fmt::format("{}", offsetCount));
    page.line("maxima", fmt::format("{}", written.outputs));
    if (keepsFormat) page.line("zero signals", fmt::format("{}", written.inputs));
    return page.text();
}

}  // namespace torvik::tool
