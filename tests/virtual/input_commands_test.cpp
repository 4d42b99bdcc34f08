#include "answers.hpp"

namespace virtual_test {
namespace {

using InputCommands = QuickAmplifier;

// Type and range in hundredths.
Data toldRange(std::uint8_t type, std::uint32_t hundredths) {
    return toldNumber(static_cast<std::uint32_t>(type << 24U) | hundredths);
}

TEST_F(InputCommands, OfferedRangesEndWithAnError) {
    EXPECT_EQ(ask({0xA2, 1, 1}), toldRange(1, 1000));
    EXPECT_EQ(ask({0xA2, 1, 2}), toldRange(1, 500));
    EXPECT_EQ(ask({0xA2, 1, 3}), toldRange(1, 250));
    EXPECT_EQ(ask({0xA2, 1, 4}), toldRange(1, 100));
    EXPECT_EQ(ask({0xA2, 1, 5}), toldRange(3, 250'000));
    EXPECT_EQ(ask({0xA2, 1, 6}), refusal(kWrongIndex));
}

TEST_F(InputCommands, OfferedRangesAreThoseOfTheBench) {
    configure("ranges = [[4, 12345], [0xFF, 0xFFFFFF]]\n");
    EXPECT_EQ(ask({0xA2, 8, 1}), toldRange(4, 12345));
    EXPECT_EQ(ask({0xA2, 8, 2}), toldRange(0xFF, 0xFFFFFF));
    EXPECT_EQ(ask({0xA2, 8, 3}), refusal(kWrongIndex));
}

TEST_F(InputCommands, AmplifierWithoutRangesRefusesTheFirst) {
    configure("ranges = []\n");
    EXPECT_EQ(ask({0xA2, 1, 1}), refusal(kWrongIndex));
    EXPECT_EQ(ask({0xA2, 1, 0}), toldRange(0, 0));
}

TEST_F(InputCommands, FirstRangeIsThePresentOne) {
    EXPECT_EQ(ask({0xA2, 1, 0}), toldRange(1, 1000));
    EXPECT_EQ(ask({0xA2, 9, 0}), refusal(kWrongIndex));
}

TEST_F(InputCommands, ChannelZeroIsReadAsTheFirst) {
    EXPECT_EQ(ask({0xA3, 1, 3}), kAcknowledged);
    EXPECT_EQ(ask({0xA2, 0, 0}), toldRange(3, 250'000));
    EXPECT_EQ(ask({0xA2, 2, 0}), toldRange(1, 1000));
}

TEST_F(InputCommands, TypeBringsItsFirstRange) {
    EXPECT_EQ(ask({0xA3, 2, 3}), kAcknowledged);
    EXPECT_EQ(ask({0xA2, 2, 0}), toldRange(3, 250'000));
    EXPECT_EQ(ask({0xA2, 3, 0}), toldRange(1, 1000));
    restart();
    EXPECT_EQ(ask({0xA2, 2, 0}), toldRange(3, 250'000));
}

TEST_F(InputCommands, TypeIsSetForAllChannelsBySelectorZero) {
    EXPECT_EQ(ask({0xA3, 0, 3}), kAcknowledged);
    EXPECT_EQ(ask({0xA2, 1, 0}), toldRange(3, 250'000));
    EXPECT_EQ(ask({0xA2, 8, 0}), toldRange(3, 250'000));
}

TEST_F(InputCommands, TypeThatIsNotOfferedIsRefused) {
    EXPECT_EQ(ask({0xA3, 2, 2}), refusal(kWrongData));
    EXPECT_EQ(ask({0xA3, 9, 1}), refusal(kWrongIndex));
    EXPECT_EQ(ask({0xA2, 2, 0}), toldRange(1, 1000));
}

TEST_F(InputCommands, PresentRangeIsWrittenAsEntryZero) {
    EXPECT_EQ(askWithNumber({0x34, 2, 0}, 500), kAcknowledged);
    EXPECT_EQ(ask({0xA2, 2, 0}), toldRange(1, 500));
    EXPECT_EQ(ask({0xA2, 2, 1}), toldRange(1, 1000));
    restart();
    EXPECT_EQ(ask({0xA2, 2, 0}), toldRange(1, 500));
}

TEST_F(InputCommands, OfferedRangeIsWrittenForItsChannel) {
    EXPECT_EQ(askWithNumber({0x34, 2, 5}, 7), kAcknowledged);
    EXPECT_EQ(ask({0xA2, 2, 5}), toldRange(3, 7));
    EXPECT_EQ(ask({0xA2, 1, 5}), toldRange(3, 250'000));
}

TEST_F(InputCommands, RangesThatDoNotFitAreRefused) {
    EXPECT_EQ(askWithNumber({0x34, 2, 0}, 0x01000000), refusal(kWrongData));
    EXPECT_EQ(askWithNumber({0x34, 2, 6}, 1), refusal(kWrongIndex));
    EXPECT_EQ(askWithNumber({0x34, 9, 0}, 1), refusal(kWrongIndex));
}

TEST_F(InputCommands, CalibrationValuesAreReadBackAlsoAfterAReset) {
    EXPECT_EQ(ask({0x17, 48, 7}), toldNumber(0));
    EXPECT_EQ(askWithNumber({0x18, 48, 7}, 0xFFFFFFFE), kAcknowledged);
    EXPECT_EQ(askWithNumber({0x18, 0, 0}, 0x3F800000), kAcknowledged);
    restart();
    EXPECT_EQ(ask({0x17, 48, 7}), toldNumber(0xFFFFFFFE));
    EXPECT_EQ(ask({0x17, 0, 0}), toldNumber(0x3F800000));
}

TEST_F(InputCommands, CalibrationValuesThatDoNotExistAreRefused) {
    EXPECT_EQ(ask({0x17, 49, 0}), refusal(kWrongIndex));
    EXPECT_EQ(ask({0x17, 0, 8}), refusal(kWrongIndex));
    EXPECT_EQ(askWithNumber({0x18, 49, 0}, 1), refusal(kWrongIndex));
    EXPECT_EQ(askWithNumber({0x18, 0, 8}, 1), refusal(kWrongIndex));
}

}  // namespace
}  // namespace virtual_test
