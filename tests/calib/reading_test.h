// Reading calibration files from a folder of the test's own.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "calib/calibration_file.h"
#include "calib/calibration_text.h"

namespace torvik::test {

inline constexpr std::uint32_t contentError = 0x30000108;

class ReadingTest : public testing::Test {
  protected:
    // The result of reading a file that names the matrix file; `calibration` holds what it says.
    std::uint32_t read(const std::string& text, bool extended = true) {
        folder.write("sensor.ini", text);
        calibration = {};
        return readCalibrationFile(folder.path("sensor.ini").c_str(), extended, calibration);
    }
    std::uint32_t read(const CalibrationText& text, bool extended = true) { return read(text.str(), extended); }

    void writeMatrix(std::string_view text) const { folder.write("matrix.txt", text); }

    CalibrationFolder folder;
    CalibrationFile calibration;
};

}  // namespace torvik::test
