#pragma once

#include <string>

#include "calibration/device_calibration.h"

namespace torvik::tool {

/// The calibration as `calibration show` prints it.
std::string calibrationPage(const DeviceCalibration& calibration);

/// The same for programs.
std::string calibrationJson(const DeviceCalibration& calibration);

/// What a loading brings to a device with this firmware, a line each.
std::string writtenLines(const CalibrationFile& file, std::uint32_t firmware);

}  // namespace torvik::tool
