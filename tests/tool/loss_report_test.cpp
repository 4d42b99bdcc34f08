// The report at the end of a stream.
#include "loss_report.h"

#include <gtest/gtest.h>

namespace torvik::tool {
namespace {

TEST(LossReport, IsOneLineWhenNothingWasLost) {
    EXPECT_FALSE(Losses{}.any());
    EXPECT_EQ(describe(Losses{}, 500), "torvik: 500 sets, nothing lost\n");
}

TEST(LossReport, NamesEveryKindOfLossWithItsPlace) {
    const Losses losses{.valuesUnread = 1,
                        .valuesStale = 2,
                        .setsMissing = 3,
                        .sequenceJumps = 8,
                        .setsUnfinished = 4,
                        .framesOutsideSet = 5,
                        .framesNotRouted = 6,
                        .queueOverruns = 7,
                        .busLight = 9,
                        .busHeavy = 10,
                        .busOff = 11,
                        .readsFailed = 12};
    EXPECT_EQ(describe(losses, 500),
              "torvik: 500 sets, but there are losses\n"
              "  output:  1 values gone before they were read, because the output took them too slowly\n"
              "  bus:     3 sets missing by their numbers\n"
              "  bus:     8 times the sets' numbers jumped; losses by jumps back or over 32767 are not counted\n"
              "  bus:     4 sets begun that were never complete\n"
              "  bus:     5 frames without the first frame of their set\n"
              "  bus:     2 values of the set before delivered in place of missing ones\n"
              "  adapter: 7 times its receive queue was full and frames were lost\n"
              "  adapter: 9 times the bus was disturbed (light); frames may be lost\n"
              "  adapter: 10 times the bus was disturbed (heavy); frames may be lost\n"
              "  adapter: 11 times the bus was off; frames may be lost\n"
              "  adapter: 12 times reading from it failed otherwise; frames may be lost\n"
              "  library: 6 frames that could not be given to a device in time\n");
}

TEST(LossReport, SaysThatTheNumberOfLostSetsIsNotKnownWhenTheirNumbersJumpedTooFar) {
    EXPECT_EQ(describe(Losses{.sequenceJumps = 1}, 500),
              "torvik: 500 sets, but there are losses\n"
              "  bus:     1 times the sets' numbers jumped; how many sets were lost is not known\n");
}

TEST(LossReport, EachKindAloneIsALoss) {
    EXPECT_TRUE(Losses{.valuesUnread = 1}.any());
    EXPECT_TRUE(Losses{.valuesStale = 1}.any());
    EXPECT_TRUE(Losses{.setsMissing = 1}.any());
    EXPECT_TRUE(Losses{.setsUnfinished = 1}.any());
    EXPECT_TRUE(Losses{.framesOutsideSet = 1}.any());
    EXPECT_TRUE(Losses{.framesNotRouted = 1}.any());
    EXPECT_TRUE(Losses{.queueOverruns = 1}.any());
    EXPECT_TRUE(Losses{.sequenceJumps = 1}.any());
    EXPECT_TRUE(Losses{.busLight = 1}.any());
    EXPECT_TRUE(Losses{.busHeavy = 1}.any());
    EXPECT_TRUE(Losses{.busOff = 1}.any());
    EXPECT_TRUE(Losses{.readsFailed = 1}.any());
}

}  // namespace
}  // namespace torvik::tool
