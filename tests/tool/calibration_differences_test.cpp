#include "calibration/calibration_differences.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace torvik::tool {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

CalibrationFile sensorFile() {
    CalibrationFile file;
    file.version = 4;
    std::string("SN-1234").copy(file.serialText.data(), 15);
    file.outScale = 1;
    file.inScale = 2;
    for (std::size_t i = 0; i < standardElements; ++i)
        file.matrix[i] = 0.1 * static_cast<double>(i);
    file.maxima.fill(50);
    file.model = "SIX-50N";
    file.date = CalibrationDate{2025, 11, 21};
    file.units.outputs.fill("N");
    file.units.outputs[5] = "turns";
    return file;
}

// A device that holds it, in single precision.
DeviceCalibration loaded(const CalibrationFile& file) {
    const auto single = [](double number) { return static_cast<double>(static_cast<float>(number)); };
    DeviceCalibration device;
    device.firmware = 0x00040000;
    device.serial = 1234;
    device.outScale = 1;
    device.inScale = 2;
    for (const double element : file.matrix)
        device.matrix.push_back(single(element));
    device.maxima.assign(file.maxima.begin(), file.maxima.end());
    device.zeroSignals.emplace(6, 0.0);
    device.model = file.model;
    device.units = {3, 3, 3, 3, 3, 255};
    device.userTexts[0] = "turns";
    device.date = CalibrationNumbers{2025, 11, 21};
    return device;
}

// Firmware that keeps neither format word nor what came with it.
DeviceCalibration loadedOld(const CalibrationFile& file) {
    DeviceCalibration device = loaded(file);
    device.firmware = 0x0003002E;
    device.zeroSignals.reset();
    device.model.reset();
    device.units.reset();
    device.date.reset();
    return device;
}

TEST(CalibrationDifferences, SinglePrecisionIsNoDifference) {
    EXPECT_THAT(calibrationDifferences(sensorFile(), loaded(sensorFile())), IsEmpty());
}

TEST(CalibrationDifferences, AreToldValueByValue) {
    DeviceCalibration device = loaded(sensorFile());
    device.serial = 99;
    device.matrix[8] = 7.5;
    device.maxima[2] = 51;
    (*device.date)[2] = 20;
    (*device.units)[1] = 9;
    device.userTexts[0] = "other";
    EXPECT_THAT(
        calibrationDifferences(sensorFile(), device),
        ElementsAre("serial number: 1234 in the file, 99 in the device", "day: 21 in the file, 20 in the device",
                    "unit 1: N in the file, kN in the device", "unit 5: turns in the file, other in the device",
                    "matrix row 1, column 2: 0.8 in the file, 7.5 in the device",
                    "maximum 2: 50 in the file, 51 in the device"));
}

TEST(CalibrationDifferences, WhatTheFileLeavesAloneIsNotCompared) {
    CalibrationFile file = sensorFile();
    file.model.reset();
    file.date.reset();
    file.units.outputs.fill(std::nullopt);
    DeviceCalibration device = loaded(file);
    device.model = "another";
    EXPECT_THAT(calibrationDifferences(file, device), IsEmpty());
}

TEST(CalibrationDifferences, AnotherSizeIsToldOnce) {
    DeviceCalibration device = loaded(sensorFile());
    device.formatWord = 0x00021002;
    device.matrix.resize(6);
    device.maxima.resize(2);
    device.zeroSignals->resize(3);
    EXPECT_THAT(calibrationDifferences(sensorFile(), device),
                ElementsAre("size: 6 inputs, 6 outputs in the file, 3 inputs, 2 outputs in the device"));
}

TEST(CalibrationDifferences, WhatOldFirmwareDoesNotKeepIsTold) {
    CalibrationFile file = sensorFile();
    file.units.outputs.fill(std::nullopt);
    file.zeroSignals[3] = 0.5;
    file.matrixB.emplace();
    EXPECT_THAT(calibrationDifferences(file, loadedOld(file)),
                ElementsAre("model name: SIX-50N in the file, not kept by the device's firmware",
                            "date: 2025-11-21 in the file, not kept by the device's firmware",
                            "zero signal 3: 0.5 in the file, not kept by the device's firmware",
                            "matrix B: one in the file, not kept by the device's firmware"));
}

TEST(CalibrationDifferences, MatrixBIsComparedWithItsFactors) {
    CalibrationFile file = sensorFile();
    file.matrixB.emplace().elements[7] = 0.25;
    file.matrixB->firstFactors[2] = 4;
    DeviceCalibration device = loaded(file);
    device.formatWord = 1;
    device.matrixB.emplace();
    EXPECT_THAT(calibrationDifferences(file, device),
                ElementsAre("matrix B row 1, column 1: 0.25 in the file, 0 in the device",
                            "first factor 2: 4 in the file, 0 in the device"));
    device.matrixB.reset();
    EXPECT_THAT(calibrationDifferences(file, device), ElementsAre("matrix B: one in the file, none in the device"));
}

}  // namespace
}  // namespace torvik::tool
