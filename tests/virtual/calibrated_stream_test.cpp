#include <cmath>
#include <numbers>
#include <string>

#include "answers.hpp"

namespace virtual_test {
namespace {

// Numbers of the arrays.
constexpr std::uint8_t kOutputScale = 1;
constexpr std::uint8_t kMatrix = 2;
constexpr std::uint8_t kOffsets = 3;
constexpr std::uint8_t kInputScale = 5;
constexpr std::uint8_t kZeroSignals = 6;
constexpr std::uint8_t kFormat = 7;
constexpr std::uint8_t kMatrixB = 8;
constexpr std::uint8_t kFirstFactors = 9;
constexpr std::uint8_t kSecondFactors = 10;

const std::string kFloats = "value_type = 'float32'\nunit = 'counts'\n";
const std::string kSixSignals =
    "[[amplifier.signal]]\noffset = 1\n[[amplifier.signal]]\noffset = 2\n[[amplifier.signal]]\noffset = 3\n"
    "[[amplifier.signal]]\noffset = 4\n[[amplifier.signal]]\noffset = 5\n[[amplifier.signal]]\noffset = 6\n";

using Values = std::vector<float>;

void write(std::uint8_t array, std::uint8_t element, float value) {
    ASSERT_EQ(askWithFloat({0x48, array, element}, value), kAcknowledged);
}

void store(std::uint8_t slot) {
    ASSERT_EQ(ask({0x7F, slot}), kAcknowledged);
}

// Six channels that constantly stream 1 to 6 as the signals of a sensor.
class CalibratedStream : public QuickAmplifier {
  protected:
    void SetUp() override {
        QuickAmplifier::SetUp();
        configure("calibrated = true\n" + kFloats + kSixSignals);
    }
    // Only the elements given afterwards count.
    static void clearMatrix() {
        for (std::uint8_t element = 0; element < 36; ++element)
            write(kMatrix, element, 0);
    }
};

TEST_F(CalibratedStream, CalibrationChangesNothingUnlessTheBenchSaysSo) {
    configure(kFloats + kSixSignals);
    write(kMatrix, 0, 100);
    store(0);
    EXPECT_EQ(nextValues(), (Values{1, 2, 3, 4, 5, 6}));
}

TEST_F(CalibratedStream, FactoryCalibrationPassesTheSignalsOn) {
    EXPECT_EQ(nextValues(), (Values{1, 2, 3, 4, 5, 6}));
}

TEST_F(CalibratedStream, StoredMatrixMixesTheSignals) {
    clearMatrix();
    write(kMatrix, 0, 10);      // row 0: ten times signal 0
    write(kMatrix, 5, 1);       // and signal 5
    write(kMatrix, 30, -0.5F);  // row 5: signal 0
    store(0);
    EXPECT_EQ(nextValues(), (Values{16, 0, 0, 0, 0, -0.5F}));
}

TEST_F(CalibratedStream, WhatIsNotStoredDoesNotCount) {
    write(kMatrix, 0, 10);
    EXPECT_EQ(nextValues(), (Values{1, 2, 3, 4, 5, 6}));
}

TEST_F(CalibratedStream, ReadingAnotherSlotDoesNotChangeTheActiveOne) {
    write(kMatrix, 0, 10);
    store(1);
    EXPECT_EQ(ask({0x7D, 0}), kAcknowledged);
    EXPECT_EQ(nextValues(), (Values{10, 2, 3, 4, 5, 6}));
}

TEST_F(CalibratedStream, ArrayNumberMakesAnotherSlotActive) {
    write(kMatrix, 0, 10);
    store(1);
    EXPECT_EQ(ask({0x55, 0}), kAcknowledged);
    EXPECT_EQ(nextValues(), (Values{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(ask({0x55, 1}), kAcknowledged);
    EXPECT_EQ(nextValues(), (Values{10, 2, 3, 4, 5, 6}));
}

TEST_F(CalibratedStream, ActiveCalibrationOutlastsAReset) {
    write(kMatrix, 0, 10);
    store(1);
    restart();
    EXPECT_EQ(nextValues(), (Values{10, 2, 3, 4, 5, 6}));
}

TEST_F(CalibratedStream, ScaleFactorsAndZeroSignalsActBeforeAndBehindTheMatrix) {
    write(kZeroSignals, 1, 5);
    write(kInputScale, 0, 2);
    write(kOutputScale, 0, 10);
    store(0);
    EXPECT_EQ(nextValues(), (Values{20, -60, 60, 80, 100, 120}));
}

TEST_F(CalibratedStream, GeometricOffsetsMoveTheTorques) {
    write(kOffsets, 0, 1);
    write(kOffsets, 1, 10);
    write(kOffsets, 2, 100);
    store(0);
    // (4, 5, 6) - (1, 10, 100) x (1, 2, 3)
    EXPECT_EQ(nextValues(), (Values{1, 2, 3, 4 - (30 - 200), 5 - (100 - 3), 6 - (2 - 10)}));
}

TEST_F(CalibratedStream, MatrixBTakesTheProductsOfTwoSignals) {
    write(kFormat, 0, 1);
    write(kFirstFactors, 0, 2);
    write(kSecondFactors, 0, 5);
    write(kMatrixB, 6, 0.5F);  // row 1, column 0: half of signal 2 times signal 5
    store(0);
    EXPECT_EQ(nextValues(), (Values{1, 2 + 9, 3, 4, 5, 6}));
}

TEST_F(CalibratedStream, MatrixBIsLeftOutUnlessTheFormatHasIt) {
    write(kMatrixB, 6, 0.5F);
    store(0);
    EXPECT_EQ(nextValues(), (Values{1, 2, 3, 4, 5, 6}));
}

TEST_F(CalibratedStream, SmallerMatrixLeavesTheOtherChannelsAsTheyAre) {
    clearMatrix();
    write(kFormat, 0, 0x00021002);  // three inputs, two outputs
    write(kMatrix, 2, 10);          // row 0: signal 2
    write(kMatrix, 3, 100);         // row 1: signal 0
    store(0);
    EXPECT_EQ(nextValues(), (Values{30, 100, 3, 4, 5, 6}));
}

TEST_F(CalibratedStream, CalibrationThatMakesNoSenseLeavesTheSignalsAsTheyAre) {
    write(kMatrix, 0, 10);
    // Seven inputs, seven outputs, no word at all.
    for (const float format : {397314.0F, 352258.0F, -1.0F, 0.5F}) {
        write(kFormat, 0, format);
        store(0);
        EXPECT_EQ(nextValues(), (Values{1, 2, 3, 4, 5, 6})) << format;
    }
    write(kFormat, 0, 1);
    write(kFirstFactors, 3, 6);
    store(0);
    EXPECT_EQ(nextValues(), (Values{1, 2, 3, 4, 5, 6}));
    write(kFirstFactors, 3, 5);
    store(0);
    EXPECT_EQ(nextValues(), (Values{10, 2, 3, 4, 5, 6}));
}

TEST_F(CalibratedStream, ControlFunctionTellsTheCalibratedValue) {
    write(kMatrix, 0, 10);
    store(0);
    double value = 0;
    ASSERT_EQ(virtualValue(0, 0, 1234, &value), 0);
    EXPECT_EQ(value, 10.0);
}

TEST_F(CalibratedStream, SineComesThroughTheMatrix) {
    configure("calibrated = true\nfrequency = 1000\n" + kFloats +
              "[[amplifier.signal]]\n[[amplifier.signal]]\nwave = 'sine'\namplitude = 0.5\nfrequency = 50\n");
    clearMatrix();
    write(kMatrix, 1, 200);         // row 0
    write(kMatrix, 3 * 6 + 1, -8);  // row 3
    store(4);
    const auto values = nextValues(1000);
    ASSERT_EQ(values.size(), 6000U);
    for (std::size_t set = 0; set < 1000; ++set) {
        const double sine = std::sin(2 * std::numbers::pi * 0.05 * static_cast<double>(set));
        ASSERT_NEAR(values[set * 6], 100 * sine, 1e-4) << set;
        ASSERT_NEAR(values[set * 6 + 3], -4 * sine, 1e-5) << set;
        ASSERT_EQ(values[set * 6 + 1], 0) << set;
    }
}

TEST_F(CalibratedStream, FiltersActOnForcesAndTorques) {
    write(kOutputScale, 0, 10);
    store(0);
    EXPECT_EQ(askWithFloat({0x50, 1, 0}, 0.5F), kAcknowledged);
    EXPECT_EQ(askWithNumber({0x52}, 1), kAcknowledged);
    EXPECT_EQ(nextValues(), (Values{5, 10, 15, 20, 25, 30}));
}

}  // namespace
}  // namespace virtual_test
