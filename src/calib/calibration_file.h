// What a calibration file says, checked; nothing here knows a device.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "calib/calibration_format.h"
#include "calib/calibration_report.h"
#include "platform/file_stream.h"

namespace torvik {

inline constexpr std::size_t serialTextSize = 16;  // with the terminating zero

struct CalibrationDate {
    std::int32_t year = 0;
    std::int32_t month = 0;
    std::int32_t day = 0;
};

struct MatrixB {
    std::array<double, standardElements> elements{};
    std::array<std::uint32_t, standardSize> firstFactors{};
    std::array<std::uint32_t, standardSize> secondFactors{};
};

// Unit texts; those that the file does not name are absent.
struct UnitTexts {
    std::array<std::optional<std::string>, standardSize> outputs;
    bool byOutput = false;  // one key for each output, and not one for the forces and one for the torques
};

struct CalibrationFile {
    std::int32_t version = 0;
    CalDimensions size;
    std::array<char, serialTextSize> serialText{};
    double outScale = 0;
    double inScale = 0;
    std::array<double, standardElements> matrix{};
    std::array<double, offsetCount> offsets{};
    std::array<double, standardSize> maxima{};
    std::array<double, standardSize> zeroSignals{};
    std::optional<std::string> model;  // from file version 4 on
    std::optional<MatrixB> matrixB;
    std::optional<CalibrationDate> date;
    UnitTexts units;

    // For devices that have a format word.
    std::int32_t formatWord() const;
};

// Delivers the text behind a path. Result: 0, or the code that the reading ends with.
using FileReader = std::function<std::uint32_t(const std::string& path, std::string& text)>;

// From the system's files: 0x30000108 a folder, a pipe or a device, of which nothing is read; the system's code
// | 0x20000000 a file cannot be read; 0x30000113 `mustEnd`, which may be empty, ended the reading.
FileReader filesOnDisk(const platform::StopCheck& mustEnd = {});

// Reads a calibration file and the matrix files that it names, in its own folder. `extended`: also what only devices
// with a format word take, model name and matrix B. Result: 0; 0x30000108 the content breaks a rule; a code of `files`.
std::uint32_t readCalibrationFile(const char* path, bool extended, CalibrationFile& calibration,
                                  const FileReader& files = filesOnDisk());

// The same for a person: reads everything, goes on behind what the file is refused for, also looks for what would end a
// loading later, and reports every value. Result: 0, or the code of the first problem.
std::uint32_t checkCalibrationFile(const char* path, CalibrationFile& calibration, CalibrationReport& report,
                                   const FileReader& files = filesOnDisk());

}  // namespace torvik
