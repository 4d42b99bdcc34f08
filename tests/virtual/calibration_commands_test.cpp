#include <cmath>
#include <numbers>
#include <string>

#include "answers.hpp"

namespace virtual_test {
namespace {

constexpr std::uint8_t kUnknown = 0x40;

// Numbers of the arrays.
constexpr std::uint8_t kSerial = 0;
constexpr std::uint8_t kOutputScale = 1;
constexpr std::uint8_t kMatrix = 2;
constexpr std::uint8_t kOffsets = 3;
constexpr std::uint8_t kInputScale = 5;
constexpr std::uint8_t kZeroSignals = 6;
constexpr std::uint8_t kFormat = 7;
constexpr std::uint8_t kMatrixB = 8;
constexpr std::uint8_t kFirstFactors = 9;
constexpr std::uint8_t kSecondFactors = 10;

constexpr std::array<std::uint8_t, 8> kLateArrays{6, 7, 8, 9, 10, 11, 12, 0x86};
constexpr std::array<std::uint8_t, 13> kLastElements{0, 0, 35, 2, 5, 0, 5, 0, 35, 5, 5, 5, 2};

const std::string kFloats = "value_type = 'float32'\nunit = 'counts'\n";
const std::string kSixSignals =
    "[[amplifier.signal]]\noffset = 1\n[[amplifier.signal]]\noffset = 2\n[[amplifier.signal]]\noffset = 3\n"
    "[[amplifier.signal]]\noffset = 4\n[[amplifier.signal]]\noffset = 5\n[[amplifier.signal]]\noffset = 6\n";

void write(std::uint8_t array, std::uint8_t element, float value) {
    ASSERT_EQ(askWithFloat({0x48, array, element}, value), kAcknowledged);
}

void store(std::uint8_t slot) {
    ASSERT_EQ(ask({0x7F, slot}), kAcknowledged);
}

std::vector<float> nextValues(std::uint32_t sets = 1) {
    virtualSendSets(0, sets);
    std::vector<float> values;
    for (const CanMessage& frame : drain()) {
        const Data data = dataOf(frame);
        values.push_back(std::bit_cast<float>(
            static_cast<std::uint32_t>(data[4] << 24U | data[5] << 16U | data[6] << 8U | data[7])));
    }
    return values;
}

using Values = std::vector<float>;

using CalibrationCommands = QuickAmplifier;

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

class CalibrationArrays : public QuickAmplifier, public testing::WithParamInterface<std::uint8_t> {};

TEST_P(CalibrationArrays, ElementsAreReadBackUpToTheLast) {
    const std::uint8_t array = GetParam();
    const std::uint8_t last = kLastElements.at(array);
    EXPECT_EQ(askWithNumber({0x48, array, 0}, 1'234'567), kAcknowledged);
    EXPECT_EQ(askWithNumber({0x48, array, last}, 7'654'321), kAcknowledged);
    EXPECT_EQ(ask({0x47, array, 0}), toldNumber(last == 0 ? 7'654'321 : 1'234'567));
    EXPECT_EQ(ask({0x47, array, last}), toldNumber(7'654'321));
    const auto beyond = static_cast<std::uint8_t>(last + 1);
    EXPECT_EQ(ask({0x47, array, beyond}), refusal(kWrongIndex));
    EXPECT_EQ(askWithNumber({0x48, array, beyond}, 0), refusal(kWrongIndex));
    EXPECT_EQ(ask({0x47, array, 0xFF}), refusal(kWrongIndex));
}

INSTANTIATE_TEST_SUITE_P(Each, CalibrationArrays, testing::Range(std::uint8_t{0}, std::uint8_t{13}),
                         [](const auto& row) { return "Array" + std::to_string(row.param); });

TEST_F(CalibrationCommands, ArraysDoNotOverlap) {
    for (std::uint8_t array = 0; array < kLastElements.size(); ++array) {
        for (std::uint8_t element = 0; element <= kLastElements[array]; ++element)
            ASSERT_EQ(askWithNumber({0x48, array, element}, array * 100U + element), kAcknowledged);
    }
    for (std::uint8_t array = 0; array < kLastElements.size(); ++array) {
        for (std::uint8_t element = 0; element <= kLastElements[array]; ++element)
            ASSERT_EQ(ask({0x47, array, element}), toldNumber(array * 100U + element)) << int{array};
    }
}

TEST_F(CalibrationCommands, ThereAreThirteenArrays) {
    EXPECT_EQ(ask({0x47, 13, 0}), refusal(kWrongIndex));
    EXPECT_EQ(askWithNumber({0x48, 13, 0}, 0), refusal(kWrongIndex));
}

TEST_F(CalibrationCommands, FlagOfAnArrayCodeMeansNothing) {
    EXPECT_EQ(askWithNumber({0x48, 0x80, 0}, 12'345), kAcknowledged);
    EXPECT_EQ(ask({0x47, 0, 0}), toldNumber(12'345));
    EXPECT_EQ(ask({0x47, 0x80, 0}), toldNumber(12'345));
}

TEST_F(CalibrationCommands, SerialNumberHasEightDigits) {
    EXPECT_EQ(askWithNumber({0x48, kSerial, 0}, 99'999'999), kAcknowledged);
    EXPECT_EQ(askWithNumber({0x48, kSerial, 0}, 100'000'000), refusal(kWrongData));
    EXPECT_EQ(ask({0x47, kSerial, 0}), toldNumber(99'999'999));
}

TEST_F(CalibrationCommands, SlotsKeepWhatWasStoredInThem) {
    EXPECT_EQ(askWithNumber({0x48, kSerial, 0}, 11), kAcknowledged);
    store(0);
    EXPECT_EQ(askWithNumber({0x48, kSerial, 0}, 12), kAcknowledged);
    store(127);
    EXPECT_EQ(ask({0x7D, 0}), kAcknowledged);
    EXPECT_EQ(ask({0x47, kSerial, 0}), toldNumber(11));
    EXPECT_EQ(ask({0x7D, 127}), kAcknowledged);
    EXPECT_EQ(ask({0x47, kSerial, 0}), toldNumber(12));
    EXPECT_EQ(ask({0x7D, 5}), kAcknowledged);
    EXPECT_EQ(ask({0x47, kSerial, 0}), toldNumber(0));
}

TEST_F(CalibrationCommands, FlagOfASlotNumberMeansNothing) {
    EXPECT_EQ(askWithNumber({0x48, kSerial, 0}, 11), kAcknowledged);
    store(0x83);
    EXPECT_EQ(ask({0x7D, 0}), kAcknowledged);
    EXPECT_EQ(ask({0x7D, 3}), kAcknowledged);
    EXPECT_EQ(ask({0x47, kSerial, 0}), toldNumber(11));
}

TEST_F(CalibrationCommands, ResetKeepsTheSlotsAndForgetsWhatWasNotStored) {
    EXPECT_EQ(askWithNumber({0x48, kSerial, 0}, 11), kAcknowledged);
    store(3);
    EXPECT_EQ(askWithNumber({0x48, kSerial, 0}, 12), kAcknowledged);
    restart();
    EXPECT_EQ(ask({0x47, kSerial, 0}), toldNumber(11));
    EXPECT_EQ(ask({0x54}), told({3, 0, 0}));
}

TEST_F(CalibrationCommands, ArrayNumberIsThatOfTheActiveSlot) {
    EXPECT_EQ(ask({0x54}), told({0, 0, 0}));
    EXPECT_EQ(ask({0x55, 7}), kAcknowledged);
    EXPECT_EQ(ask({0x54}), told({7, 0, 0}));
    store(2);
    EXPECT_EQ(ask({0x54}), told({2, 0, 0}));
}

TEST_F(CalibrationCommands, ModelNameComesInFourAnswers) {
    EXPECT_EQ(ask({0x1C, 1, 'a', 'b', 'c', 'd'}), kAcknowledged);
    EXPECT_EQ(ask({0x1C, 4, 'x', 'y', 'z', 0}), kAcknowledged);
    EXPECT_EQ(ask({0x1B}), told({1, 'a', 'b', 'c', 'd'}));
    EXPECT_EQ(secondAnswer(), told({2, 0, 0, 0, 0}));
    EXPECT_EQ(secondAnswer(), told({3, 0, 0, 0, 0}));
    EXPECT_EQ(secondAnswer(), told({4, 'x', 'y', 'z', 0}));
    EXPECT_EQ(virtualQueued(), 0U);
}

TEST_F(CalibrationCommands, ModelNameHasFourParts) {
    EXPECT_EQ(ask({0x1C, 0, 1, 2, 3, 4}), refusal(kWrongIndex));
    EXPECT_EQ(ask({0x1C, 5, 1, 2, 3, 4}), refusal(kWrongIndex));
}

TEST_F(CalibrationCommands, ModelNameBelongsToTheSlot) {
    EXPECT_EQ(ask({0x1C, 1, 'a', 'b', 'c', 'd'}), kAcknowledged);
    store(1);
    EXPECT_EQ(ask({0x7D, 2}), kAcknowledged);
    EXPECT_EQ(ask({0x1B}), told({1, 0, 0, 0, 0}));
    drain();
    EXPECT_EQ(ask({0x7D, 1}), kAcknowledged);
    EXPECT_EQ(ask({0x1B}), told({1, 'a', 'b', 'c', 'd'}));
}

TEST_F(CalibrationCommands, SlotsAreSelectedFromFirmware3000BOn) {
    configure("firmware = 0x3000A\n");
    EXPECT_EQ(ask({0x7D, 0}), refusal(kUnknown));
    EXPECT_EQ(ask({0x93, 0x7D, 0}), refusal(kUnknown)) << "nor does it claim to know the command";
    EXPECT_EQ(ask({0x7F, 0}), kAcknowledged);
    configure("firmware = 0x3000B\n");
    EXPECT_EQ(ask({0x7D, 0}), kAcknowledged);
    EXPECT_EQ(ask({0x93, 0x7D, 0}), kAcknowledged);
}

TEST_F(CalibrationCommands, ArraysSixToTwelveAreThereFromFirmware3002FOn) {
    configure("firmware = 0x3002E\n");
    EXPECT_EQ(ask({0x47, 5, 0}), toldFloat(1));
    EXPECT_EQ(askWithFloat({0x48, 5, 0}, 2), kAcknowledged);
    for (const std::uint8_t array : kLateArrays) {
        EXPECT_EQ(ask({0x47, array, 0}), refusal(kUnknown)) << int{array};
        EXPECT_EQ(askWithFloat({0x48, array, 0}, 1), refusal(kUnknown)) << int{array};
    }
    configure("firmware = 0x3002F\n");
    for (const std::uint8_t array : kLateArrays) {
        EXPECT_EQ(askWithFloat({0x48, array, 0}, 1), kAcknowledged) << int{array};
        EXPECT_EQ(ask({0x47, array, 0}), toldFloat(1)) << int{array};
    }
}

TEST_F(CalibrationCommands, ModelNameIsThereFromFirmware30032On) {
    configure("firmware = 0x30031\n");
    EXPECT_EQ(ask({0x1B}), refusal(kUnknown));
    EXPECT_EQ(ask({0x1C, 1, 'a', 'b', 'c', 'd'}), refusal(kUnknown));
    EXPECT_EQ(virtualQueued(), 0U);
    configure("firmware = 0x30032\n");
    EXPECT_EQ(ask({0x1C, 1, 'a', 'b', 'c', 'd'}), kAcknowledged);
    EXPECT_EQ(ask({0x1B}), told({1, 'a', 'b', 'c', 'd'}));
}

TEST_F(CalibrationCommands, CalibrationChangesNothingUnlessTheBenchSaysSo) {
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
