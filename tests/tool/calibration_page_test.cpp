#include "calibration/calibration_page.h"

#include <gmock/gmock.h>

namespace torvik::tool {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

DeviceCalibration slotWithoutCalibration() {
    DeviceCalibration calibration;
    calibration.firmware = 0x00040000;
    calibration.slot = 3;
    calibration.matrix.assign(standardElements, 0.0);
    calibration.maxima.assign(standardSize, 0.0);
    calibration.zeroSignals.emplace(standardSize, 0.0);
    calibration.model = "";
    calibration.date = CalibrationNumbers{};
    calibration.units.emplace();
    return calibration;
}

TEST(CalibrationPage, ASlotOfZerosIsOneLine) {
    EXPECT_EQ(calibrationPage(slotWithoutCalibration()),
              "Calibration slot 3 of the device: no calibration, all values are 0\n");
}

TEST(CalibrationPage, WhatOldFirmwareDoesNotKeepIsNoCalibrationEither) {
    DeviceCalibration calibration = slotWithoutCalibration();
    calibration.firmware = 0x0003000A;
    calibration.zeroSignals.reset();
    calibration.model.reset();
    calibration.date.reset();
    calibration.units.reset();
    EXPECT_EQ(calibrationPage(calibration),
              "The device's calibration (its firmware selects no slots): no calibration, all values are 0\n");
}

TEST(CalibrationPage, OneNumberOtherThanZeroIsACalibration) {
    DeviceCalibration scaled = slotWithoutCalibration();
    scaled.inScale = 2;
    EXPECT_THAT(calibrationPage(scaled), StartsWith("Calibration slot 3 of the device\n  model name"));
    DeviceCalibration numbered = slotWithoutCalibration();
    numbered.serial = 1;
    EXPECT_THAT(calibrationPage(numbered), HasSubstr("  serial number   1\n"));
    DeviceCalibration filled = slotWithoutCalibration();
    filled.matrix[35] = 0.5;
    EXPECT_THAT(calibrationPage(filled), HasSubstr("            0.5\n"));
    DeviceCalibration withMatrixB = slotWithoutCalibration();
    withMatrixB.matrixB.emplace().secondFactors[5] = 4;
    EXPECT_THAT(calibrationPage(withMatrixB), HasSubstr("0 x 4"));
}

TEST(CalibrationPage, ASlotOfZerosIsWholeInJson) {
    EXPECT_THAT(calibrationJson(slotWithoutCalibration()), HasSubstr("\"maxima\": [0, 0, 0, 0, 0, 0],\n"));
}

TEST(CalibrationPage, TheUnitMatrixIsShownAndSaidToBeNoCalibration) {
    DeviceCalibration calibration = slotWithoutCalibration();
    for (std::size_t i = 0; i < standardSize; ++i)
        calibration.matrix[i * standardSize + i] = 1;
    calibration.outScale = calibration.inScale = 1;
    EXPECT_THAT(calibrationPage(calibration),
                StartsWith("Calibration slot 3 of the device: no calibration, only the unit matrix\n  model name"));
    calibration.serial = 1;
    EXPECT_THAT(calibrationPage(calibration), StartsWith("Calibration slot 3 of the device\n"));
}

}  // namespace
}  // namespace torvik::tool
