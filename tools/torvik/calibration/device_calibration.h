// A calibration as an open device keeps it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "calib/calibration_file.h"
#include "connection.h"

namespace torvik::tool {

inline constexpr std::uint32_t lastCalibrationSlot = 127;

using CalibrationNumbers = std::array<double, 3>;

/// What the firmware does not keep is absent.
struct DeviceCalibration {
    std::uint32_t firmware = 0;
    std::uint32_t slot = 0;
    std::uint32_t formatWord = 0;
    std::uint32_t serial = 0;
    double outScale = 0;
    double inScale = 0;
    std::vector<double> matrix;
    std::array<double, offsetCount> offsets{};
    std::vector<double> maxima;
    std::optional<std::vector<double>> zeroSignals;
    std::optional<MatrixB> matrixB;
    std::optional<std::string> model;
    std::optional<std::array<double, standardSize>> units;
    std::optional<CalibrationNumbers> date;  ///< year, month, day
    std::array<std::string, 2> userTexts;    ///< read when a unit is one of them

    CalDimensions size() const { return dimensionsOf(static_cast<std::int32_t>(formatWord)); }

    /// A unit's text as the device's bytes; its number where there is no text.
    std::string unitText(std::size_t output) const;
};

std::uint32_t firmwareOf(const Connection& connection);

/// The slot that the device tells as its calibration array number.
std::uint32_t presentSlot(const Connection& connection);

/// Throws Failure, as those above. Firmware that selects no slots tells its present calibration whatever the slot.
DeviceCalibration readDeviceCalibration(const Connection& connection, std::uint32_t slot);

}  // namespace torvik::tool
