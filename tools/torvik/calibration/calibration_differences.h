#pragma once

#include <string>
#include <vector>

#include "calibration/device_calibration.h"

namespace torvik::tool {

/// A line for each value of the file that the device keeps otherwise, or not at all. Numbers are the same when they are
/// in single precision.
std::vector<std::string> calibrationDifferences(const CalibrationFile& file, const DeviceCalibration& device);

}  // namespace torvik::tool
