#include "calib/calibration_file.h"

#include <algorithm>
#include <charconv>
#include <span>
#include <string_view>
#include <vector>

#include "calib/calibration_limits.h"
#include "calib/number_syntax.h"
#include "calib/reading_notes.h"
#include "calib/ucf_parser.h"
#include "core/error_codes.h"
#include "params/unit_table.h"
#include "params/user_text.h"
#include "platform/text_file.h"

namespace torvik {

namespace {

constexpr std::uint32_t systemErrorMark = 0x20000000;
constexpr std::string_view sensor = "SensorPara";
constexpr std::size_t shortestSerial = 2;
constexpr std::size_t shortestFileName = 5;
constexpr std::size_t mostUserTexts = 2;
constexpr std::size_t fileLimit = 26'000'000;  // more than 200,000 lines of the reading format take

constexpr std::string_view maximumKeys[] = {"FxMax", "FyMax", "FzMax", "MxMax", "MyMax", "MzMax"};
constexpr std::string_view oldMaximumKeys[] = {"NxMax", "NyMax", "NzMax", "NmXMax", "NmyMax", "NmzMax"};
// Of a sensor for one force and two torques.
constexpr std::string_view forceTorqueKeys[] = {"FzMax", "MxMax", "MyMax"};
constexpr std::string_view offsetKeys[] = {"OffsetX", "OffsetY", "OffsetZ"};

constexpr std::string_view noNumber = "no number";
constexpr std::string_view noWholeNumber = "no whole number without a sign";
constexpr std::string_view tooShortForFile = "shorter than 5 characters";

std::uint32_t codeOf(const platform::ReadResult& result) {
    switch (result.status) {
        case platform::ReadStatus::systemError:
            return result.systemCode | systemErrorMark;
        case platform::ReadStatus::notRegular:
            return error::fileContent;
        case platform::ReadStatus::stopped:
            return error::notActive;
        default:
            return error::none;
    }
}

std::string folderOf(std::string_view path) {
    const std::size_t separator = path.rfind(platform::folderSeparator);
    return separator == std::string_view::npos ? std::string() : std::string(path.substr(0, separator + 1));
}

std::string numbered(std::string_view prefix, std::size_t number) {
    return std::string(prefix) + std::to_string(number);
}

// One row of a matrix; values that are missing stay as they are. Result: how many there were; nothing: one was too
// large.
std::optional<std::size_t> readRow(std::string_view line, std::span<double> row) {
    constexpr std::size_t commaLimit = 100;
    std::string text(line);
    std::replace(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(std::min(text.size(), commaLimit)), ',', '.');
    std::string_view rest = text;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const auto number = parseLeadingReal(rest);
        if (!number) return i;
        if (number->tooLarge) return std::nullopt;
        row[i] = number->value;
        rest = number->rest;
    }
    return row.size();
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

// With zeros in front up to so many digits; the number is not negative.
std::string padded(std::int32_t number, std::size_t digits) {
    const std::string text = std::to_string(number);
    return std::string(digits - std::min(digits, text.size()), '0') + text;
}

// Of a number that has to be above 0.
std::string_view faultOf(double value) {
    return value == noReal ? noNumber : "it has to be above 0";
}

class Reading {
  public:
    // With a report the reading goes on behind what the file is refused for.
    Reading(const char* path, CalibrationFile& calibration, const FileReader& files, CalibrationReport* report)
        : files_(files),
          file_(readText(path)),
          folder_(folderOf(path)),
          calibration_(calibration),
          notes_(file_, path, report) {}

    void read(bool extended) {
        readVersion();
        readSerial();
        const auto matrixName = file_.string(sensor, "Matrix");
        const bool hasMatrix = matrixName && matrixName->size() >= shortestFileName;
        if (!hasMatrix) notes_.refuse({sensor, "Matrix"}, tooShortForFile);
        calibration_.outScale = scale("OutScaleFactor", 5.0);
        calibration_.inScale = scale("InScaleFactor", 2.0);
        readSize();
        readMaxima();
        readZeroSignals();
        readOffsets();
        if (hasMatrix) readMatrix({sensor, "Matrix"}, *matrixName, calibration_.size, calibration_.matrix);
        if (extended && calibration_.version >= 4) readExtension();
        readDate();
        if (calibration_.version >= 3) readUnits();
    }

  private:
    std::string readText(const std::string& path) const {
        std::string text;
        if (const std::uint32_t code = files_(path, text); code != 0) throw ReadingFailure{code};
        return text;
    }

    void readVersion() {
        const std::int32_t version = file_.integer("ThisFile", "Version");
        calibration_.version = version < 2 ? 0 : version;
        std::string_view fault;
        if (version == noInteger) fault = noWholeNumber;
        if (version == 0 || version == 1) fault = "counts as 0";
        if (version > 4) fault = "read like version 4";
        notes_.tell({"ThisFile", "Version"}, std::to_string(calibration_.version), fault);
    }

    void readSerial() {
        const Key key{sensor, "sn"};
        const auto text = file_.string(key.section, key.name);
        if (!text || text->size() < shortestSerial) {
            notes_.tell(key, "0", "shorter than 2 characters");
            return;
        }
        text->copy(calibration_.serialText.data(), calibration_.serialText.size() - 1);
        const char* const kept = calibration_.serialText.data();
        const auto serial = parseSerialText(kept);
        std::string_view fault;
        if (text->size() >= calibration_.serialText.size()) fault = "15 characters are kept";
        if (serial == 0U) fault = "no digits above 0 in it: the serial number is 0";
        if (serial) {
            notes_.tell(key, kept, fault);
        } else {
            notes_.refuseLater(key, "the serial number is above 99999999", error::parameterExceedance);
        }
    }

    double scale(std::string_view name, double ofOldFiles) {
        const Key key{sensor, name};
        const double value = file_.real(key.section, key.name);
        if (value > 0.0) {
            if (isTooSmallForScale(value)) {
                notes_.refuseLater(key, "too near to 0 for single precision", error::parameterExceedance);
            } else {
                notes_.tell(key, shortestText(value));
            }
            return value;
        }
        if (calibration_.version == 0) {
            notes_.tell(key, shortestText(ofOldFiles), faultOf(value));
        } else {
            notes_.refuse(key, faultOf(value));
        }
        return ofOldFiles;
    }

    void readSize() {
        if (calibration_.version < 3) return;
        const std::int32_t inputs = file_.integer(sensor, "NumberOfInputs");
        const std::int32_t outputs = file_.integer(sensor, "NumberOfOutputs");
        readCount({sensor, "NumberOfInputs"}, inputs, 2, calibration_.size.inputs);
        readCount({sensor, "NumberOfOutputs"}, outputs, 1, calibration_.size.outputs);
    }

    void readCount(Key key, std::int32_t number, std::int32_t lowest, std::size_t& count) {
        if (number > static_cast<std::int32_t>(standardSize)) {
            notes_.refuse(key, "above 6");
            return;
        }
        if (number >= lowest) count = static_cast<std::size_t>(number);
        notes_.tell(key, std::to_string(count), number >= lowest ? "" : "no whole number that counts");
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
            const double maximum = file_.real(sensor, keys[i]);
            calibration_.maxima[i] = maximum;
            if (maximum > 0.0) {
                notes_.tell({sensor, keys[i]}, shortestText(maximum));
            } else {
                notes_.refuse({sensor, keys[i]}, faultOf(maximum));
            }
        }
    }

    void readZeroSignals() {
        for (std::size_t i = 0; i < calibration_.size.inputs; ++i) {
            const std::string name = numbered("ZeroSignal", i);
            const double value = file_.real(sensor, name);
            calibration_.zeroSignals[i] = value == noReal ? 0.0 : value;
            notes_.tell({sensor, name}, shortestText(calibration_.zeroSignals[i]), value == noReal ? noNumber : "");
        }
    }

    // Kept: a negative offset becomes 0.
    void readOffsets() {
        for (std::size_t i = 0; i < offsetCount; ++i) {
            const Key key{"GeometricalOffset", offsetKeys[i]};
            const double value = file_.real(key.section, key.name);
            calibration_.offsets[i] = std::max(0.0, value);
            std::string_view fault;
            if (value < 0.0) fault = value == noReal ? noNumber : "negative offsets become 0";
            notes_.tell(key, shortestText(calibration_.offsets[i]), fault);
        }
    }

    // Every line counts as a row.
    void readMatrix(Key key, const std::string& name, const CalDimensions& size, std::span<double> matrix) {
        notes_.tell(key, name);
        const std::string path = folder_ + name;
        std::string text;
        if (const std::uint32_t code = files_(path, text); code != 0) {
            notes_.refuseFile(path, code);
            return;
        }
        LineReader lines(text);
        for (std::size_t row = 0; row < size.outputs; ++row) {
            const auto line = lines.next();
            if (!line) {
                notes_.refuseRow(path, 0, row, "the file has too few rows");
                return;
            }
            readMatrixRow(path, lines, *line, row, matrix.subspan(row * size.inputs, size.inputs));
        }
    }

    void readMatrixRow(const std::string& path, const LineReader& lines, std::string_view line, std::size_t row,
                       std::span<double> numbers) {
        const auto count = readRow(line, numbers);
        if (!count) {
            notes_.refuseRow(path, lines.lineNumber(), row, "a number is too large");
            return;
        }
        std::string fault;
        if (*count < numbers.size()) fault = numbered("0 for numbers that are missing; there are ", *count);
        if (lines.isCut()) fault = "longer than 127 characters: the rest is the next row";
        notes_.tellRow(path, lines.lineNumber(), row, numbers, fault);
    }

    void readExtension() {
        const auto model = file_.string(sensor, "SensorModel");
        calibration_.model = model.value_or(std::string());
        const bool tooLong = calibration_.model->size() >= modelNameSize;
        std::string_view fault;
        if (tooLong) fault = "15 characters are kept";
        if (!model) fault = "its quotes do not end";
        notes_.tell({sensor, "SensorModel"}, calibration_.model->substr(0, modelNameSize - 1), fault);
        const Key key{"Matrix_B", "MatrixB"};
        const auto name = file_.string(key.section, key.name);
        if (!name || name->size() < shortestFileName) {
            notes_.tell(key, "there is no matrix B", tooShortForFile);
            return;
        }
        MatrixB& matrixB = calibration_.matrixB.emplace();
        readMatrix(key, *name, {}, matrixB.elements);
        readFactors("FacB1_", matrixB.firstFactors);
        readFactors("FacB2_", matrixB.secondFactors);
    }

    void readFactors(std::string_view prefix, std::span<std::uint32_t> factors) {
        for (std::size_t i = 0; i < factors.size(); ++i) {
            const std::string name = numbered(prefix, i);
            const Key key{"Matrix_B", name};
            const std::int32_t factor = file_.integer(key.section, key.name);
            if (factor == noInteger) {
                notes_.refuse(key, noWholeNumber);
                continue;
            }
            factors[i] = static_cast<std::uint32_t>(factor);
            if (factors[i] <= highestFactor) {
                notes_.tell(key, std::to_string(factor));
            } else {
                notes_.refuseLater(key, "above 5", error::parameterExceedance);
            }
        }
    }

    void readDate() {
        const Key key{sensor, "calibrationDate"};
        const auto text = file_.string(key.section, key.name);
        if (text) calibration_.date = parseDate(*text);
        const auto& date = calibration_.date;
        if (date) {
            notes_.tell(key, padded(date->year, 4) + "-" + padded(date->month, 2) + "-" + padded(date->day, 2));
        } else {
            notes_.tell(key, "the device's date stays", "no date");
        }
    }

    void readUnits() {
        auto& outputs = calibration_.units.outputs;
        calibration_.units.byOutput = file_.string(sensor, "Unit_0").has_value();
        const auto force = file_.string(sensor, "forceUnit");
        const auto torque = file_.string(sensor, "torqueUnit");
        constexpr std::size_t firstTorque = standardSize / 2;
        for (std::size_t i = 0; i < calibration_.size.outputs; ++i) {
            const auto& ofKind = i < firstTorque ? force : torque;
            outputs[i] = calibration_.units.byOutput ? file_.string(sensor, numbered("Unit_", i)) : ofKind;
            if (calibration_.units.byOutput) tellUnit(numbered("Unit_", i), outputs[i]);
        }
        if (calibration_.units.byOutput) return;
        tellUnit("forceUnit", force);
        if (calibration_.size.outputs > firstTorque) tellUnit("torqueUnit", torque);
    }

    // Texts of no table are what a loading can be refused for.
    void tellUnit(const std::string& name, const std::optional<std::string>& text) {
        if (!notes_.wanted()) return;
        const Key key{sensor, name};
        if (!text) {
            notes_.tell(key, "the device's unit stays", "its quotes do not end");
            return;
        }
        if (findUnit(*text, charset::ascii)) {
            notes_.tell(key, *text);
            return;
        }
        const std::string kept = text->substr(0, userTextLength - 1);
        const bool isNew = std::ranges::find(userTexts_, kept) == userTexts_.end();
        if (isNew) userTexts_.push_back(kept);
        if (text->size() > longestUnitText) {
            notes_.refuse(key, "longer than 10 characters", error::parameterExceedance);
        } else if (isNew && userTexts_.size() > mostUserTexts) {
            notes_.refuse(key, "a third text that is in no table; a device keeps two");
        } else {
            notes_.tell(key, kept, "in no table: one of the device's two texts, of 7 characters at most");
        }
    }

    const FileReader& files_;
    UCFparser file_;
    std::string folder_;
    CalibrationFile& calibration_;
    ReadingNotes notes_;
    std::vector<std::string> userTexts_;
};

}  // namespace

std::int32_t CalibrationFile::formatWord() const {
    if (size.inputs < standardSize || size.outputs < standardSize) {
        return static_cast<std::int32_t>((size.outputs - 1) << 12 | (size.inputs - 1) << 16 |
                                         format_type::otherDimensions);
    }
    return static_cast<std::int32_t>(matrixB ? format_type::withMatrixB : format_type::standard);
}

FileReader filesOnDisk(const platform::StopCheck& mustEnd) {
    return [mustEnd](const std::string& path, std::string& text) {
        return codeOf(platform::readTextFile(path.c_str(), fileLimit, text, mustEnd));
    };
}

std::uint32_t readCalibrationFile(const char* path, bool extended, CalibrationFile& calibration,
                                  const FileReader& files) try {
    Reading(path, calibration, files, nullptr).read(extended);
    return error::none;
} catch (const ReadingFailure& failure) {
    return failure.code;
}

std::uint32_t checkCalibrationFile(const char* path, CalibrationFile& calibration, CalibrationReport& report,
                                   const FileReader& files) {
    try {
        Reading(path, calibration, files, &report).read(true);
    } catch (const ReadingFailure& failure) {
        report.push_back(unreadableFile(path, failure.code));
    }
    const auto problem = std::ranges::find(report, FindingKind::problem, &Finding::kind);
    return problem == report.end() ? error::none : problem->code;
}

}  // namespace torvik
