// Writing a calibration file into a device.
#pragma once

#include <cstdint>

#include "calib/calibration_file.h"

namespace torvik {

// Extension, date, units and at last the main arrays, which are stored into the slot. Result: 0; -1 with lastError set.
std::int32_t writeCalibration(std::uint8_t deviceNo, std::uint8_t slot, const CalibrationFile& calibration);

}  // namespace torvik
