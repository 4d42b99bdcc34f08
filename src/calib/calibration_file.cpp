#include "calib/calibration_file.h"

#include <algorithm>
#include <charconv>
#include <span>
#include <string_view>
#include <vector>

#include "calib/number_syntax.h"
#include "calib/ucf_parser.h"
#include "core/error_codes.h"
#include "platform/text_file.h"

namespace torvik {

namespace {

constexpr std::uint32_t systemErrorMark = 0x20000000;
constexpr std::string_view sensor = "SensorPara";
constexpr std::size_t shortestSerial = 2;
constexpr std::size_t shortestFileName = 5;
constexpr std::size_t fileLimit = 26'000'000;  // more than 200,000 lines of the reading format take

constexpr std::string_view maximumKeys[] = {"FxMax", "FyMax", "FzMax", "MxMax", "MyMax", "MzMax"};
constexpr std::string_view oldMaximumKeys[] = {"NxMax", "NyMax", "NzMax", "NmXMax", "NmyMax", "NmzMax"};
// Of a sensor for one force and two torques.
constexpr std::string_view forceTorqueKeys[] = {"FzMax", "MxMax", "MyMax"};
constexpr std::string_view offsetKeys[] = {"OffsetX", "OffsetY", "OffsetZ"};

// Ends the reading with a code.
struct ReadingFailure {
    std::uint32_t code;
};

void require(bool condition) {
    if (!condition) throw ReadingFailure{error::fileContent};
}

std::string readText(const FileReader& files, const std::string& path) {
    std::string text;
    if (const std::uint32_t code = files(path, text); code != 0) throw ReadingFailure{code | systemErrorMark};
    return text;
}

std::string folderOf(std::string_view path) {
    const std::size_t separator = path.rfind(platform::folderSeparator);
    return separator == std::string_view::npos ? std::string() : std::string(path.substr(0, separator + 1));
}

std::string numbered(std::string_view prefix, std::size_t number) {
    return std::string(prefix) + std::to_string(number);
}

// One row of a matrix; values that are missing stay as they are.
void readRow(std::string_view line, std::span<double> row) {
    constexpr std::size_t commaLimit = 100;
    std::string text(line);
    std::replace(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(std::min(text.size(), commaLimit)), ',', '.');
    std::string_view rest = text;
    for (double& element : row) {
        const auto number = parseLeadingReal(rest);
        if (!number) return;
        require(!number->tooLarge);
        element = number->value;
        rest = number->rest;
    }
}

// Every line counts as a row.
void readMatrix(std::string_view text, const CalDimensions& size, std::span<double> matrix) {
    LineReader lines(text);
    for (std::size_t row = 0; row < size.outputs; ++row) {
        const auto line = lines.next();
        require(line.has_value());
        readRow(*line, matrix.subspan(row * size.inputs, size.inputs));
    }
}

// Day, month and year; or year first, when the first number is above 31. Nothing: no date.
std::optional<CalibrationDate> parseDate(std::string_view text) {
    std::array<std::int32_t, 3> numbers{};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const std::size_t end = i + 1 < numbers.size() ? text.find('.') : text.size();
        if (end == std::string_view::npos) return std::nullopt;
        numbers[i] = parseInteger(text.substr(0, end));
        if (numbers[i] == noInteger) return std::nullopt;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    if (numbers[0] <= 31) std::swap(numbers[0], numbers[2]);
    const CalibrationDate date{numbers[0], numbers[1], numbers[2]};
    const bool valid = date.year >= 1 && date.month >= 1 && date.month <= 12 && date.day >= 1 && date.day <= 31;
    return valid ? std::optional(date) : std::nullopt;
}

class Reading {
  public:
    Reading(const char* path, CalibrationFile& calibration, const FileReader& files)
        : files_(files), file_(readText(files, path)), folder_(folderOf(path)), calibration_(calibration) {}

    void read(bool extended) {
        readVersion();
        readSerial();
        const auto matrixName = file_.string(sensor, "Matrix");
        require(matrixName && matrixName->size() >= shortestFileName);
        calibration_.outScale = scale("OutScaleFactor", 5.0);
        calibration_.inScale = scale("InScaleFactor", 2.0);
        readSize();
        readMaxima();
        readZeroSignals();
        readOffsets();
        readMatrix(readText(files_, folder_ + *matrixName), calibration_.size, calibration_.matrix);
        if (extended && calibration_.version >= 4) readExtension();
        if (const auto text = file_.string(sensor, "calibrationDate")) calibration_.date = parseDate(*text);
        if (calibration_.version >= 3) readUnits();
    }

  private:
    void readVersion() {
        const std::int32_t version = file_.integer("ThisFile", "Version");
        calibration_.version = version < 2 ? 0 : version;
    }

    void readSerial() {
        const auto text = file_.string(sensor, "sn");
        if (text && text->size() >= shortestSerial)
            text->copy(calibration_.serialText.data(), calibration_.serialText.size() - 1);
    }

    double scale(std::string_view key, double ofOldFiles) const {
        const double value = file_.real(sensor, key);
        if (value > 0.0) return value;
        require(calibration_.version == 0);
        return ofOldFiles;
    }

    void readSize() {
        if (calibration_.version < 3) return;
        const std::int32_t inputs = file_.integer(sensor, "NumberOfInputs");
        const std::int32_t outputs = file_.integer(sensor, "NumberOfOutputs");
        const auto highest = static_cast<std::int32_t>(standardSize);
        require(inputs <= highest && outputs <= highest);
        if (inputs >= 2) calibration_.size.inputs = static_cast<std::size_t>(inputs);
        if (outputs >= 1) calibration_.size.outputs = static_cast<std::size_t>(outputs);
    }

    std::span<const std::string_view> keysOfMaxima() const {
        if (calibration_.version < 3) return oldMaximumKeys;
        const bool forceAndTorques = calibration_.size.outputs == 3 && file_.real(sensor, "FxMax") == noReal;
        if (forceAndTorques) return forceTorqueKeys;
        return maximumKeys;
    }

    void readMaxima() {
        const auto keys = keysOfMaxima().first(calibration_.size.outputs);
        for (std::size_t i = 0; i < keys.size(); ++i) {
            calibration_.maxima[i] = file_.real(sensor, keys[i]);
            require(calibration_.maxima[i] > 0.0);
        }
    }

    void readZeroSignals() {
        for (std::size_t i = 0; i < calibration_.size.inputs; ++i) {
            const double value = file_.real(sensor, numbered("ZeroSignal", i));
            calibration_.zeroSignals[i] = value == noReal ? 0.0 : value;
        }
    }

    // Kept: a negative offset becomes 0.
    void readOffsets() {
        for (std::size_t i = 0; i < offsetCount; ++i)
            calibration_.offsets[i] = std::max(0.0, file_.real("GeometricalOffset", offsetKeys[i]));
    }

    void readExtension() {
        calibration_.model = file_.string(sensor, "SensorModel").value_or(std::string());
        const auto name = file_.string("Matrix_B", "MatrixB");
        if (!name || name->size() < shortestFileName) return;
        MatrixB& matrixB = calibration_.matrixB.emplace();
        readMatrix(readText(files_, folder_ + *name), {}, matrixB.elements);
        readFactors("FacB1_", matrixB.firstFactors);
        readFactors("FacB2_", matrixB.secondFactors);
    }

    void readFactors(std::string_view prefix, std::span<std::uint32_t> factors) {
        for (std::size_t i = 0; i < factors.size(); ++i) {
            const std::int32_t factor = file_.integer("Matrix_B", numbered(prefix, i));
            require(factor != noInteger);
            factors[i] = static_cast<std::uint32_t>(factor);
        }
    }

    void readUnits() {
        auto& outputs = calibration_.units.outputs;
        calibration_.units.byOutput = file_.string(sensor, "Unit_0").has_value();
        const auto force = file_.string(sensor, "forceUnit");
        const auto torque = file_.string(sensor, "torqueUnit");
        for (std::size_t i = 0; i < calibration_.size.outputs; ++i) {
            const auto& ofKind = i < standardSize / 2 ? force : torque;
            outputs[i] = calibration_.units.byOutput ? file_.string(sensor, numbered("Unit_", i)) : ofKind;
        }
    }

    const FileReader& files_;
    UCFparser file_;
    std::string folder_;
    CalibrationFile& calibration_;
};

}  // namespace

std::int32_t CalibrationFile::formatWord() const {
    if (size.inputs < standardSize || size.outputs < standardSize) {
        return static_cast<std::int32_t>((size.outputs - 1) << 12 | (size.inputs - 1) << 16 |
                                         format_type::otherDimensions);
    }
    return static_cast<std::int32_t>(matrixB ? format_type::withMatrixB : format_type::standard);
}

std::uint32_t readCalibrationFile(const char* path, bool extended, CalibrationFile& calibration) {
    return readCalibrationFile(path, extended, calibration, [](const std::string& name, std::string& text) {
        return platform::readFile(name.c_str(), fileLimit, text);
    });
}

std::uint32_t readCalibrationFile(const char* path, bool extended, CalibrationFile& calibration,
                                  const FileReader& files) try {
    Reading(path, calibration, files).read(extended);
    return error::none;
} catch (const ReadingFailure& failure) {
    return failure.code;
}

}  // namespace torvik
