#include "live_table.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "sample_batch.h"

namespace torvik::tool {
namespace {

using testing::Each;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

constexpr int wideTerminal = 110;

LiveTable tableOf(std::size_t channels) {
    return LiveTable("two sets", channels, 100, false);
}

TEST(LiveTable, ShowsValueMinimumMaximumAndMeanOfEachChannel) {
    LiveTable table = tableOf(2);
    table.add(SampleBatch({1, -10, 3, -30, 2, -20}, 2).batch(), 1.0);
    const auto lines = table.lines(wideTerminal);
    EXPECT_THAT(lines[2], StartsWith("    1     +2.000000     +1.000000     +3.000000     +2.000000"));
    EXPECT_THAT(lines[3], StartsWith("    2    -20.000000    -30.000000    -10.000000    -20.000000"));
}

TEST(LiveTable, ShowsRateAndBufferFill) {
    LiveTable table = tableOf(2);
    table.add(SampleBatch({1, 2, 3, 4}, 2).batch(25), 2.0);
    EXPECT_THAT(table.lines(wideTerminal),
                testing::Contains("1.0 sets/s, 2.0 values/s | 2 sets in 2.0 s | buffer 25 of 100 (25.0 %)"));
}

TEST(LiveTable, TheRateOfTheValuesIsThatOfTheSetsAsItStandsTimesTheChannels) {
    LiveTable table = tableOf(2);
    table.add(SampleBatch(std::vector<double>(402, 1.0), 2).batch(), 2.0);
    EXPECT_THAT(table.lines(wideTerminal).back(), StartsWith("101 sets/s, 202 values/s |"));
    LiveTable slow = tableOf(6);
    slow.add(SampleBatch(std::vector<double>(6, 1.0), 6).batch(), 3.0);
    EXPECT_THAT(slow.lines(wideTerminal).back(), StartsWith("0.3 sets/s, 1.8 values/s |"));
}

TEST(LiveTable, BarsGrowFromTheMiddleOnACommonScale) {
    LiveTable table = tableOf(3);
    table.add(SampleBatch({2, -1, 0}, 3).batch(), 1.0);
    const auto lines = table.lines(76);
    EXPECT_THAT(lines[1], EndsWith("  -2        2"));
    EXPECT_THAT(lines[2], EndsWith(" .....|#####"));
    EXPECT_THAT(lines[3], EndsWith(" ..###|....."));
    EXPECT_THAT(lines[4], EndsWith(" .....|....."));
}

TEST(LiveTable, ANarrowTerminalGetsNoBars) {
    LiveTable table = tableOf(1);
    table.add(SampleBatch({1}, 1).batch(), 1.0);
    EXPECT_THAT(table.lines(66), Each(Not(HasSubstr("#"))));
    EXPECT_THAT(table.lines(0), SizeIs(4));
}

TEST(LiveTable, AStatusIsShownWhileItIsNotZero) {
    LiveTable table = tableOf(1);
    table.add(SampleBatch({1}, 1, {3}).batch(), 1.0);
    EXPECT_THAT(table.lines(wideTerminal)[2], EndsWith("status 3"));
    table.add(SampleBatch({1}, 1).batch(), 2.0);
    EXPECT_THAT(table.lines(wideTerminal)[2], Not(HasSubstr("status")));
}

TEST(LiveTable, BeforeTheFirstSetChannelsAreEmpty) {
    EXPECT_THAT(tableOf(1).lines(wideTerminal)[2], EndsWith("-"));
}

TEST(LiveTable, ANoticeStandsBelowTheTable) {
    LiveTable table = tableOf(1);
    table.setNotice("values lost");
    EXPECT_EQ(table.lines(wideTerminal).back(), "values lost");
}

TEST(LiveTable, ScaleIsRoundedUpTo125) {
    EXPECT_DOUBLE_EQ(roundScaleUp(0.3), 0.5);
    EXPECT_DOUBLE_EQ(roundScaleUp(0.11), 0.2);
    EXPECT_DOUBLE_EQ(roundScaleUp(7), 10);
    EXPECT_DOUBLE_EQ(roundScaleUp(1), 1);
    EXPECT_DOUBLE_EQ(roundScaleUp(0), 1);
}

TEST(Redraw, TheNextFrameIsDrawnOverTheOneBefore) {
    Redraw redraw;
    EXPECT_THAT(redraw.frame({"one", "two"}, 24), Not(HasSubstr("\x1b[2A")));
    EXPECT_THAT(redraw.frame({"three", "four"}, 24), HasSubstr("\x1b[2A"));
}

TEST(Redraw, LinesBeyondTheTerminalAreLeftOut) {
    Redraw redraw;
    EXPECT_THAT(redraw.frame({"one", "two", "three"}, 3), Not(HasSubstr("three")));
}

TEST(Redraw, TheScreenIsNeverCleared) {
    Redraw redraw;
    redraw.frame({"one"}, 24);
    EXPECT_THAT(redraw.frame({"one"}, 24), Not(HasSubstr("\x1b[2J")));
}

TEST(Redraw, TheCursorComesBackAtTheEnd) {
    EXPECT_THAT(Redraw::end(), HasSubstr("\x1b[?25h"));
}

}  // namespace
}  // namespace torvik::tool
