#pragma once

#include "calibration/file_check.h"
#include "command_line.h"

namespace torvik::tool {

// The verb of `torvik calibration` that writes.
void addCalibrationLoadVerb(CLI::App& calibration, CommandLine& commandLine);

/// The file's calibration. Throws Failure with every problem when it would be refused.
CalibrationFile usableCalibration(const std::string& path, const std::string& tried);

}  // namespace torvik::tool
