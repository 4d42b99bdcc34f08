#include "answers.hpp"

namespace virtual_test {
namespace {

using CanCommands = QuickAmplifier;

TEST_F(CanCommands, OtherSettingsArePlainMemory) {
    EXPECT_EQ(ask({0x8C, 7}), toldNumber(0));
    EXPECT_EQ(askWithNumber({0x8D, 7}, 0xFEDCBA98), kAcknowledged);
    EXPECT_EQ(ask({0x8C, 7}), toldNumber(0xFEDCBA98));
    restart();
    EXPECT_EQ(ask({0x8C, 7}), toldNumber(0xFEDCBA98));
    EXPECT_EQ(askWithNumber({0x8D, 8}, 0), refusal(kWrongIndex));
}

TEST_F(CanCommands, ValueIdentifierChangesWithTheNextReset) {
    EXPECT_EQ(askWithNumber({0x8D, 2}, 0x333), kAcknowledged);
    EXPECT_EQ(ask({0x8C, 2}), toldNumber(0x333));
    ASSERT_EQ(virtualSendSets(0, 1), 6U);
    EXPECT_EQ(drain().front().id, kValueId);
    restart();
    ASSERT_EQ(virtualSendSets(0, 1), 6U);
    EXPECT_EQ(drain().front().id, 0x333U);
}

TEST_F(CanCommands, CommandAndAnswerIdentifiersChangeWithTheNextReset) {
    EXPECT_EQ(askWithNumber({0x8D, 0}, 0x200), kAcknowledged);
    EXPECT_EQ(askWithNumber({0x8D, 1}, 0x201), kAcknowledged);
    EXPECT_EQ(ask({0x2B}), toldNumber(0x00040000));
    restart();
    EXPECT_FALSE(ask({0x2B}));
    CanMessage command = commandFrame({0x2B}, 0x200);
    ASSERT_EQ(CAN_Write(kUsb, &command), kOk);
    const CanMessage answer = readFrame().value();
    EXPECT_EQ(answer.id, 0x201U);
    EXPECT_EQ(dataOf(answer), toldNumber(0x00040000));
}

TEST_F(CanCommands, IdentifiersOfMoreThanElevenBitsAreRefused) {
    EXPECT_EQ(askWithNumber({0x8D, 2}, 0x800), refusal(kWrongData));
    EXPECT_EQ(askWithNumber({0x8D, 2}, 0x7FF), kAcknowledged);
}

TEST_F(CanCommands, IdentifierStateTellsWhetherOneWasSetSinceTheReset) {
    EXPECT_EQ(ask({0x1A}), told({0}));
    EXPECT_EQ(ask({0x19, 1, 2, 3, 4}), kAcknowledged);
    EXPECT_EQ(ask({0x1A}), told({1}));
    restart();
    EXPECT_EQ(ask({0x1A}), told({0}));
}

TEST_F(CanCommands, MappingEntriesAreReadBack) {
    EXPECT_EQ(ask({0x49, 16}), told({0, 16}));
    EXPECT_EQ(ask({0x4A, 16, 0x12, 0x34}), kAcknowledged);
    EXPECT_EQ(ask({0x49, 16}), told({0x12, 0x34}));
    EXPECT_EQ(ask({0x49, 15}), told({0, 15}));
    EXPECT_EQ(ask({0x4A, 17, 0, 1}), refusal(kWrongIndex));
}

TEST_F(CanCommands, MappingEntryZeroIsTheNumberOfChannelsSent) {
    EXPECT_EQ(ask({0x4A, 0, 0, 8}), kAcknowledged);
    EXPECT_EQ(ask({0x49, 0}), told({0, 8}));
    EXPECT_EQ(virtualSendSets(0, 1), 8U);
    drain();
    restart();
    EXPECT_EQ(ask({0x49, 0}), told({0, 8}));
    EXPECT_EQ(ask({0x26}), toldNumber(0));
}

TEST_F(CanCommands, ChannelsWithoutASignalAreConstantlyZero) {
    configure("channels = 1\nunit = 'counts'\n[[amplifier.signal]]\noffset = 5\n");
    EXPECT_EQ(ask({0x4A, 0, 0, 2}), kAcknowledged);
    EXPECT_EQ(ask({0x3A, 1}), toldNumber(5));
    EXPECT_EQ(ask({0x3A, 2}), toldNumber(0));
}

TEST_F(CanCommands, NumbersOfChannelsFromOneToSixteenAreTaken) {
    EXPECT_EQ(ask({0x4A, 0, 0, 0}), refusal(kWrongData));
    EXPECT_EQ(ask({0x4A, 0, 0, 17}), refusal(kWrongData));
    EXPECT_EQ(ask({0x4A, 0, 1, 6}), refusal(kWrongData));
    EXPECT_EQ(ask({0x49, 0}), told({0, 6}));
    EXPECT_EQ(ask({0x4A, 0, 0, 9}), kAcknowledged);
    EXPECT_EQ(ask({0x49, 0}), told({0, 9}));
    EXPECT_EQ(virtualSendSets(0, 1), 8U);
}

}  // namespace
}  // namespace virtual_test
