#include "answers.hpp"

namespace virtual_test {
namespace {

using IdentityCommands = QuickAmplifier;

TEST_F(IdentityCommands, SerialNumberIsThatOfTheBench) {
    configure("serial = 77\ncopies = 2\n");
    EXPECT_EQ(ask({0x1F}), toldNumber(77));
    CanMessage command = commandFrame({0x1F}, 0x103);
    ASSERT_EQ(CAN_Write(kUsb, &command), kOk);
    EXPECT_EQ(dataOf(readFrame().value()), toldNumber(78)) << "copies count up";
}

TEST_F(IdentityCommands, SerialNumberIsReadBackAlsoAfterAReset) {
    EXPECT_EQ(askWithNumber({0x20}, 0x01020304), kAcknowledged);
    EXPECT_EQ(ask({0x1F}), toldNumber(0x01020304));
    restart();
    EXPECT_EQ(ask({0x1F}), toldNumber(0x01020304));
}

TEST_F(IdentityCommands, SerialNumberZeroIsRefused) {
    EXPECT_EQ(askWithNumber({0x20}, 0), refusal(kWrongData));
    EXPECT_EQ(ask({0x1F}), toldNumber(1'000'001));
}

TEST_F(IdentityCommands, VersionsAndConfigurationAreTold) {
    EXPECT_EQ(ask({0x2A}), toldNumber(0x00000011));
    EXPECT_EQ(ask({0x36}), toldNumber(0x00010002));
}

TEST_F(IdentityCommands, AvailableCommandsAreAcknowledgedOthersRefused) {
    EXPECT_EQ(ask({0x93, 0x2B, 0}), kAcknowledged);
    EXPECT_EQ(ask({0x93, 0xFE, 0}), refusal(0x40));
}

TEST_F(IdentityCommands, WrittenHoursAreThoseOfTheFirstCounter) {
    EXPECT_EQ(ask({0x56, 0}), toldFloat(1250.5F));
    EXPECT_EQ(askWithFloat({0x57}, 12.25F), kAcknowledged);
    EXPECT_EQ(ask({0x56, 0}), toldFloat(12.25F));
    EXPECT_EQ(ask({0x56, 1}), toldFloat(1250.5F));
    EXPECT_EQ(ask({0x56, 2}), refusal(kWrongIndex));
}

TEST_F(IdentityCommands, SensorMemoryIsReadFourBytesAtATime) {
    EXPECT_EQ(ask({0x65, 1, 0, 0}), told({0x10, 0x11, 0x12, 0x13}));
    EXPECT_EQ(ask({0x65, 1, 0, 4}), told({0x14, 0x15, 0x16, 0x17}));
    EXPECT_EQ(ask({0x65, 8, 0, 252}), told({0x7C, 0x7D, 0x7E, 0x7F}));
}

TEST_F(IdentityCommands, SensorMemoryEndsAfter256BytesAndEightChannels) {
    EXPECT_EQ(ask({0x65, 1, 0, 253}), refusal(kWrongIndex));
    EXPECT_EQ(ask({0x65, 9, 0, 0}), refusal(kWrongIndex));
}

TEST_F(IdentityCommands, ActiveSensorMemoriesAreOnePerChannel) {
    EXPECT_EQ(ask({0x68}), toldNumber(0x3F));
    configure("channels = 8\n");
    EXPECT_EQ(ask({0x68}), toldNumber(0xFF));
}

}  // namespace
}  // namespace virtual_test
