// The exports that take one frame: elements, slots, the serial number and the array number.
#include <limits>

#include "calib/calibration_bench.h"
#include "calib/calibration_device.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Element : public CalibrationBench {
  protected:
    std::int32_t read(std::uint32_t array, std::uint8_t index) {
        value = -77.25;
        return TORVIKreadFTSensorCalValue(device, array, index, &value);
    }

    double value = 0;
};

TEST_F(Element, IsReadAsAFloat) {
    holds({1.5, -0.1});
    EXPECT_EQ(read(2, 35), 0);
    EXPECT_EQ(value, 1.5);
    EXPECT_EQ(read(12, 0), 0);
    EXPECT_EQ(value, static_cast<double>(-0.1F));
    EXPECT_THAT(takeSent(), ElementsAre("82 47 02 23", "82 47 0C 00"));
}

TEST_F(Element, CarriesBit7OfItsArrayCode) {
    holds({1, 2});
    EXPECT_EQ(read(0x81, 0), 0);
    EXPECT_EQ(read(0x8C, 255), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 47 81 00", "82 47 8C FF"));
}

TEST_F(Element, MayBeAnyFloat) {
    holdsWord(0x00000001);
    holdsWord(0x7F800000);
    EXPECT_EQ(read(1, 0), 0);
    EXPECT_EQ(value, 0x1p-149);
    EXPECT_EQ(read(1, 0), 0);
    EXPECT_EQ(value, std::numeric_limits<double>::infinity());
}

TEST_F(Element, OfNoArrayIsRefused) {
    for (const std::uint32_t array : {0U, 13U, 0x7FU, 0x80U, 0x8DU, 0xFFU, 0x101U, 0x80000001U}) {
        EXPECT_EQ(read(array, 0), -1) << array;
        EXPECT_EQ(takeCode(), code::parameterExceedance) << array;
        EXPECT_EQ(value, -77.25);
    }
    EXPECT_EQ(TORVIKreadFTSensorCalValue(device, 1, 0, nullptr), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(Element, GivesTheDevicesStatus) {
    answerWith(0x47, {0x40}, 1);
    EXPECT_EQ(read(1, 0), -1);
    EXPECT_EQ(takeCode(), 0x40U);
    EXPECT_EQ(value, -77.25);
    answerWith(0x47, {0x3F, 0x3F, 0x80, 0, 0}, 1);
    EXPECT_EQ(read(1, 0), 0);
    EXPECT_EQ(value, 1.0);
}

TEST_F(Element, ThatIsNotAnsweredTimesOut) {
    drop(0x47);
    EXPECT_EQ(run([this] { return read(1, 0); }), -1);
    EXPECT_EQ(takeCode(), code::answerTimeout);
    expectFree();
}

TEST_F(Element, IsWrittenRoundedToTheNearestFloat) {
    EXPECT_EQ(writeCalElement(device, std::uint32_t{2}, std::uint32_t{7}, 0.1), 0);
    EXPECT_EQ(writeCalElement(device, std::uint32_t{0x83}, std::uint32_t{2}, -1.0 - 0x1p-24 - 0x1p-40), 0);
    EXPECT_THAT(takeSent(), ElementsAre("86 48 02 07 3D CC CC CD", "86 48 83 02 BF 80 00 01"));
}

// Callers test for -1 alone.
TEST_F(Element, OfNoArrayIsNotWrittenButGivesZero) {
    for (const std::uint32_t array : {0U, 13U, 0x80U, 0x8DU, 0x7FU}) {
        EXPECT_EQ(writeCalElement(device, array, std::uint32_t{0}, 1.0), 0) << array;
        EXPECT_EQ(takeCode(), code::parameterExceedance) << array;
    }
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(Element, IsNotWrittenToADeviceThatIsNotThere) {
    EXPECT_EQ(writeCalElement(40, std::uint32_t{1}, std::uint32_t{0}, 1.0), -1);
    EXPECT_EQ(takeCode(40), code::parameterExceedance);
    EXPECT_EQ(writeCalElement(inactiveDevice, std::uint32_t{1}, std::uint32_t{0}, 1.0), -1);
    EXPECT_EQ(takeCode(inactiveDevice), code::notActive);
    EXPECT_EQ(writeCalElement(inactiveDevice, std::uint32_t{13}, std::uint32_t{0}, 1.0), -1);
    EXPECT_EQ(takeCode(inactiveDevice), code::notActive);
    EXPECT_THAT(takeSent(), IsEmpty());
}

class Slot : public CalibrationBench {};

TEST_F(Slot, IsSelectedAsTheByteIsGiven) {
    for (const std::uint8_t slot : std::to_array<std::uint8_t>({0, 3, 0x80, 0xFF}))
        EXPECT_EQ(TORVIKsetFTarrayToRead(device, slot), 0);
    EXPECT_THAT(takeSent(), ElementsAre("81 7D 00", "81 7D 03", "81 7D 80", "81 7D FF"));
}

TEST_F(Slot, IsStoredAsTheByteIsGiven) {
    EXPECT_EQ(TORVIKstoreFTSensorCal(device, 0), 0);
    EXPECT_EQ(TORVIKstoreFTSensorCal(device, 0xFF), 0);
    EXPECT_THAT(takeSent(), ElementsAre("81 7F 00", "81 7F FF"));
}

TEST_F(Slot, GivesTheDevicesStatus) {
    refuseAfter(0, 0x7D);
    EXPECT_EQ(TORVIKsetFTarrayToRead(device, 1), -1);
    EXPECT_EQ(takeCode(), 0x52U);
    refuseAfter(0, 0x7F);
    EXPECT_EQ(TORVIKstoreFTSensorCal(device, 1), -1);
    EXPECT_EQ(takeCode(), 0x52U);
}

TEST_F(Slot, ThatIsNotAnsweredFails) {
    virtualClearAnswerRules();
    drop(0x7F);
    EXPECT_EQ(run([] { return TORVIKstoreFTSensorCal(device, 1); }), -1);
    EXPECT_EQ(takeCode(), code::internalCallFailed);
    expectFree();
}

class SerialNumber : public CalibrationBench {
  protected:
    std::int32_t read(std::uint32_t slot) {
        text.assign(10, '~');
        return TORVIKreadFTSensorSerNo(device, slot, text.data());
    }

    std::string text;
};

TEST_F(SerialNumber, IsEightDigitsAndAZero) {
    holdsWord(12345);
    EXPECT_EQ(read(0), 0);
    EXPECT_EQ(text, std::string("00012345\0~", 10));
    holdsWord(99999999);
    EXPECT_EQ(read(0), 0);
    EXPECT_STREQ(text.c_str(), "99999999");
    holdsWord(0);
    EXPECT_EQ(read(0), 0);
    EXPECT_STREQ(text.c_str(), "00000000");
}

TEST_F(SerialNumber, AboveEightDigitsIsNotStoredCorrectly) {
    for (const std::uint32_t number : {100000000U, 0x80000000U, 0xFFFFFFFFU}) {
        holdsWord(number);
        EXPECT_EQ(read(0), -1) << number;
        EXPECT_EQ(takeCode(), code::notStored);
        EXPECT_EQ(text, "~~~~~~~~~~");
    }
}

TEST_F(SerialNumber, IsReadFromItsSlot) {
    holdsWord(1);
    holdsWord(1);
    EXPECT_EQ(read(5), 0);
    EXPECT_EQ(read(0xFF), 0);
    EXPECT_THAT(takeSent(), ElementsAre("81 7D 05", "82 47 00 00", "81 7D 7F", "82 47 80 00"));
}

TEST_F(SerialNumber, OfOldFirmwareIsReadWithoutASlot) {
    use(firmwareWithSlotSelection - 1);
    holdsWord(1);
    EXPECT_EQ(read(0x85), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 47 80 00"));
    use(firmwareWithSlotSelection);
    holdsWord(1);
    EXPECT_EQ(read(0x85), 0);
    EXPECT_THAT(takeSent(), ElementsAre("81 7D 05", "82 47 80 00"));
}

TEST_F(SerialNumber, NeedsASlotOfOneByteAndAText) {
    EXPECT_EQ(read(256), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    EXPECT_EQ(TORVIKreadFTSensorSerNo(device, 0, nullptr), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(SerialNumber, EndsWithARefusedSlot) {
    refuseAfter(0, 0x7D);
    EXPECT_EQ(read(1), -1);
    EXPECT_EQ(takeCode(), 0x52U);
    EXPECT_THAT(takeSent(), ElementsAre("81 7D 01"));
}

TEST_F(SerialNumber, GivesTheDevicesStatus) {
    answerWith(0x47, {0x53}, 1);
    EXPECT_EQ(read(1), -1);
    EXPECT_EQ(takeCode(), 0x53U);
}

class ArrayNumber : public CalibrationBench {
  protected:
    std::int32_t read() {
        bytes = "~~~~";
        return TORVIKgetFTSensorCalArrNo(device, 99, reinterpret_cast<std::uint8_t*>(bytes.data()));
    }

    std::string bytes;
};

TEST_F(ArrayNumber, IsThreeBytes) {
    answerWith(0x54, {0, 'a', 'b', 'c', 'd', 'e'});
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(bytes, "abc~");
    EXPECT_THAT(takeSent(), ElementsAre("80 54"));
}

TEST_F(ArrayNumber, EndsBehindItsFirstZero) {
    answerWith(0x54, {0, 'a', 0, 'c'}, 1);
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(bytes, std::string("a\0~~", 4));
    answerWith(0x54, {0, 0, 'b', 'c'}, 1);
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(bytes, std::string("\0~~~", 4));
}

TEST_F(ArrayNumber, WithoutAPlaceForItStoresACodeAndSucceeds) {
    EXPECT_EQ(TORVIKgetFTSensorCalArrNo(device, 0, nullptr), 0);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
}

TEST_F(ArrayNumber, GivesTheDevicesStatus) {
    answerWith(0x54, {0x40});
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(takeCode(), 0x40U);
    EXPECT_EQ(bytes, "~~~~");
}

TEST_F(ArrayNumber, IsSetAsTheByteIsGiven) {
    EXPECT_EQ(TORVIKsetFTSensorCalArrNo(device, 0), 0);
    EXPECT_EQ(TORVIKsetFTSensorCalArrNo(device, 0xA5), 0);
    EXPECT_THAT(takeSent(), ElementsAre("81 55 00", "81 55 A5"));
}

}  // namespace
}  // namespace torvik::test
