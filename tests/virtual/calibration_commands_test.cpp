#include "answers.hpp"

namespace virtual_test {
namespace {

constexpr std::uint8_t kUnknown = 0x40;
constexpr std::uint8_t kSerial = 0;  // number of the array

constexpr std::array<std::uint8_t, 8> kLateArrays{6, 7, 8, 9, 10, 11, 12, 0x86};
constexpr std::array<std::uint8_t, 13> kLastElements{0, 0, 35, 2, 5, 0, 5, 0, 35, 5, 5, 5, 2};

void storeSlot(std::uint8_t slot) {
    ASSERT_EQ(ask({0x7F, slot}), kAcknowledged);
}

using CalibrationCommands = QuickAmplifier;

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
    storeSlot(0);
    EXPECT_EQ(askWithNumber({0x48, kSerial, 0}, 12), kAcknowledged);
    storeSlot(127);
    EXPECT_EQ(ask({0x7D, 0}), kAcknowledged);
    EXPECT_EQ(ask({0x47, kSerial, 0}), toldNumber(11));
    EXPECT_EQ(ask({0x7D, 127}), kAcknowledged);
    EXPECT_EQ(ask({0x47, kSerial, 0}), toldNumber(12));
    EXPECT_EQ(ask({0x7D, 5}), kAcknowledged);
    EXPECT_EQ(ask({0x47, kSerial, 0}), toldNumber(0));
}

TEST_F(CalibrationCommands, FlagOfASlotNumberMeansNothing) {
    EXPECT_EQ(askWithNumber({0x48, kSerial, 0}, 11), kAcknowledged);
    storeSlot(0x83);
    EXPECT_EQ(ask({0x7D, 0}), kAcknowledged);
    EXPECT_EQ(ask({0x7D, 3}), kAcknowledged);
    EXPECT_EQ(ask({0x47, kSerial, 0}), toldNumber(11));
}

TEST_F(CalibrationCommands, ResetKeepsTheSlotsAndForgetsWhatWasNotStored) {
    EXPECT_EQ(askWithNumber({0x48, kSerial, 0}, 11), kAcknowledged);
    storeSlot(3);
    EXPECT_EQ(askWithNumber({0x48, kSerial, 0}, 12), kAcknowledged);
    restart();
    EXPECT_EQ(ask({0x47, kSerial, 0}), toldNumber(11));
    EXPECT_EQ(ask({0x54}), told({3, 0, 0}));
}

TEST_F(CalibrationCommands, ArrayNumberIsThatOfTheActiveSlot) {
    EXPECT_EQ(ask({0x54}), told({0, 0, 0}));
    EXPECT_EQ(ask({0x55, 7}), kAcknowledged);
    EXPECT_EQ(ask({0x54}), told({7, 0, 0}));
    storeSlot(2);
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
    storeSlot(1);
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

}  // namespace
}  // namespace virtual_test
