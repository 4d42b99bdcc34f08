#include "answers.hpp"

namespace virtual_test {
namespace {

using UnitCommands = QuickAmplifier;

TEST_F(UnitCommands, UnitNumberIsReadBack) {
    EXPECT_EQ(ask({0x0F, 2}), told({0}));
    EXPECT_EQ(ask({0x10, 2, 254}), kAcknowledged);
    EXPECT_EQ(ask({0x0F, 2}), told({254}));
    EXPECT_EQ(ask({0x0F, 1}), told({0}));
}

TEST_F(UnitCommands, UnitNumberIsSetForAllChannelsBySelectorZero) {
    EXPECT_EQ(ask({0x10, 0, 9}), kAcknowledged);
    EXPECT_EQ(ask({0x0F, 1}), told({9}));
    EXPECT_EQ(ask({0x0F, 8}), told({9}));
}

TEST_F(UnitCommands, UnitNumbersOfNoChannelAreRefused) {
    EXPECT_EQ(ask({0x0F, 0}), refusal(kWrongIndex));
    EXPECT_EQ(ask({0x0F, 9}), refusal(kWrongIndex));
    EXPECT_EQ(ask({0x10, 9, 1}), refusal(kWrongIndex));
}

TEST_F(UnitCommands, UserTextComesInTwoAnswers) {
    EXPECT_EQ(ask({0x12, 1, 1, 'L', 'b', 's', ' '}), kAcknowledged);
    EXPECT_EQ(ask({0x12, 1, 2, 'x', 'y', 0, 0}), kAcknowledged);
    EXPECT_EQ(ask({0x11, 1}), told({1, 'L', 'b', 's', ' '}));
    EXPECT_EQ(secondAnswer(), told({2, 'x', 'y', 0, 0}));
    EXPECT_EQ(virtualQueued(), 0U);
}

TEST_F(UnitCommands, UserTextsAreTwoAndOutlastAReset) {
    EXPECT_EQ(ask({0x12, 0, 1, 'a', 'b', 'c', 'd'}), kAcknowledged);
    restart();
    EXPECT_EQ(ask({0x11, 0}), told({1, 'a', 'b', 'c', 'd'}));
    EXPECT_EQ(secondAnswer(), told({2, 0, 0, 0, 0}));
    EXPECT_EQ(ask({0x11, 1}), told({1, 0, 0, 0, 0}));
    EXPECT_EQ(secondAnswer(), told({2, 0, 0, 0, 0}));
}

TEST_F(UnitCommands, UserTextsAndPartsThatDoNotExistAreRefusedOnce) {
    EXPECT_EQ(ask({0x11, 2}), refusal(kWrongIndex));
    EXPECT_EQ(ask({0x12, 2, 1, 0, 0, 0, 0}), refusal(kWrongIndex));
    EXPECT_EQ(ask({0x12, 0, 0, 0, 0, 0, 0}), refusal(kWrongIndex));
    EXPECT_EQ(ask({0x12, 0, 3, 0, 0, 0, 0}), refusal(kWrongIndex));
    EXPECT_EQ(virtualQueued(), 0U);
}

TEST_F(UnitCommands, OneOfTwoAnswersCanBeLost) {
    virtualAnswerRule(0, 0x11, VIRTUAL_ANSWER_DROP, 1, 0, nullptr);
    EXPECT_EQ(ask({0x11, 0}), told({2, 0, 0, 0, 0}));
    EXPECT_EQ(virtualQueued(), 0U);
}

}  // namespace
}  // namespace virtual_test
