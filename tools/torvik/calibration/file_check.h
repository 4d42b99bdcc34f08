// Calibration files without a device.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "calib/calibration_file.h"

namespace torvik::tool {

struct CheckedFile {
    CalibrationFile calibration;
    CalibrationReport report;
};

/// Reads the file and those that it names. Throws Failure when the file itself cannot be read.
CheckedFile checkFile(const std::string& path);

/// Adds the lines of the file that nothing reads, with the likely reason.
void addUnreadLines(const std::string& path, std::string_view text, CalibrationReport& report);

/// Every value, every default, every line that is not read, and the problems.
std::string checkPage(const CalibrationReport& report);

/// What the file would be refused for, as "FILE:LINE: what: why (code)", a line each.
std::vector<std::string> problemLines(const CalibrationReport& report);

}  // namespace torvik::tool
