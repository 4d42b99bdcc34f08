// The input sensitivity, which is made of a range and the scale of the analogue output.
#include <cmath>

#include "core/library_state.h"
#include "params/params_bench.h"
#include "support/held_elsewhere.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const Answer range10 = accepts(0xA2, {9, 0, 0x03, 0xE8});

class ReadInputSensitivity : public ParamsBench {
  protected:
    std::int32_t read() { return TORVIKreadInputSensitivity(device, 3, &sensitivity); }
    double sensitivity = 77;
};

TEST_F(ReadInputSensitivity, DividesTheRangeByTheScaleAndReturnsTheType) {
    script({range10, accepts(0x06, {0xC0, 0x20, 0, 0})});
    EXPECT_EQ(read(), 9);
    EXPECT_EQ(sensitivity, -4.0);
}

TEST_F(ReadInputSensitivity, ReturnsTheTypeWithoutAPointerToo) {
    script({range10, accepts(0x06, {0x3F, 0x80, 0, 0})});
    EXPECT_EQ(TORVIKreadInputSensitivity(device, 3, nullptr), 9);
    EXPECT_THAT(takeSent(), ElementsAre("82 A2 03 00", "81 06 03"));
}

TEST_F(ReadInputSensitivity, FailsForARangeOfZeroBeforeTheScaleIsAsked) {
    script({accepts(0xA2, {9, 0, 0, 0})});
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(takeCode(), code::notStored);
    EXPECT_EQ(sensitivity, 77);
    EXPECT_THAT(takeSent(), ElementsAre("82 A2 03 00"));
}

TEST_F(ReadInputSensitivity, FailsForAScaleOfZero) {
    script({range10, accepts(0x06)});
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(takeCode(), code::notStored);
    EXPECT_EQ(sensitivity, 77);
}

TEST_F(ReadInputSensitivity, FailsForAScaleOfExactlyTheEpsilon) {
    script({range10, accepts(0x06, {0x25, 0x80, 0, 0})});
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(takeCode(), code::notStored);
    script({range10, accepts(0x06, {0xA5, 0x80, 0, 0})});
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(takeCode(), code::notStored);
}

TEST_F(ReadInputSensitivity, TakesTheNextScaleAboveTheEpsilon) {
    script({range10, accepts(0x06, {0x25, 0x80, 0, 1})});
    EXPECT_EQ(read(), 9);
    EXPECT_EQ(takeCode(), code::none);
}

TEST_F(ReadInputSensitivity, PassesAScaleOnThatIsNoNumber) {
    script({range10, accepts(0x06, {0x7F, 0xC0, 0, 0})});
    EXPECT_EQ(read(), 9);
    EXPECT_TRUE(std::isnan(sensitivity));
}

TEST_F(ReadInputSensitivity, StoresTheStatusOfARefusedScale) {
    script({range10, Answer{0x06, {0x52}}});
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(takeCode(), 0x52U);
}

class WriteInputSensitivity : public ParamsBench {
  protected:
    // The channel's list in hundredths, and everything acknowledged that follows.
    static void offer(std::initializer_list<std::uint16_t> hundredths) {
        std::vector<Answer> answers;
        for (const std::uint16_t range : hundredths) {
            answers.push_back(
                accepts(0xA2, {1, 0, static_cast<std::uint8_t>(range >> 8), static_cast<std::uint8_t>(range)}));
        }
        answers.insert(answers.end(), {{0xA2, {0x55}}, accepts(0x34), accepts(0x24), accepts(0x07)});
        script(answers);
    }

    std::int32_t write(double sensitivity, std::uint32_t channel = 3) {
        return run([=] { return TORVIKwriteInputSensitivity(device, channel, 0, sensitivity); });
    }

    // What was sent besides the questions for the list.
    static std::vector<std::string> written() {
        std::vector<std::string> frames = takeSent();
        std::erase_if(frames, [](const std::string& frame) { return frame.starts_with("82 A2"); });
        return frames;
    }
};

TEST_F(WriteInputSensitivity, TakesTheFirstRangeNotAboveTwiceItself) {
    offer({1000, 500, 250, 100});
    EXPECT_EQ(write(3), 0);
    EXPECT_THAT(written(), ElementsAre("86 34 03 00 00 00 01 F4", "80 78", "80 24", "85 07 03 3F D5 55 55"));
}

TEST_F(WriteInputSensitivity, TakesARangeOfExactlyTwiceItself) {
    offer({1000, 500, 250, 100});
    EXPECT_EQ(write(2.5), 0);
    EXPECT_THAT(written(), ElementsAre("86 34 03 00 00 00 01 F4", "80 78", "80 24", "85 07 03 40 00 00 00"));
}

TEST_F(WriteInputSensitivity, TakesTheLastOfFourWhenNoneFits) {
    offer({1000, 900, 800, 700, 100});
    EXPECT_EQ(write(2), 0);
    EXPECT_THAT(written(), ElementsAre("86 34 03 00 00 00 02 BC", "80 78", "80 24", "85 07 03 40 60 00 00"));
}

TEST_F(WriteInputSensitivity, MayBeTheFirstRangeItself) {
    offer({1000, 500});
    EXPECT_EQ(write(10), 0);
    EXPECT_THAT(written(), ElementsAre("86 34 03 00 00 00 03 E8", "80 78", "80 24", "85 07 03 3F 80 00 00"));
}

TEST_F(WriteInputSensitivity, IsRefusedAboveTheFirstRange) {
    offer({1000, 2000});
    EXPECT_EQ(write(10.01), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    EXPECT_THAT(written(), IsEmpty());
}

TEST_F(WriteInputSensitivity, OfChannel0UsesTheListOfChannel1) {
    offer({1000});
    EXPECT_EQ(write(5, 0), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 A2 01 01", "82 A2 01 02", "86 34 00 00 00 00 03 E8", "80 78", "80 24",
                                        "85 07 00 40 00 00 00"));
}

TEST_F(WriteInputSensitivity, FailsWhenTheChannelOffersNothing) {
    script({Answer{0xA2, {0x55}}});
    EXPECT_EQ(write(1), -1);
    EXPECT_EQ(takeCode(), 0x55U);
    EXPECT_THAT(written(), IsEmpty());
}

TEST_F(WriteInputSensitivity, GoesOnWithoutARestartWhereFirmwareKnowsNone) {
    activateAs({.firmware = 0x00030008});
    offer({1000});
    EXPECT_EQ(write(5), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 A2 03 01", "86 34 03 00 00 00 03 E8", "85 07 03 40 00 00 00"));
    EXPECT_EQ(takeCode(), code::firmwareUnsupported);
}

TEST_F(WriteInputSensitivity, FailsWithARefusedRange) {
    script({range10, Answer{0xA2, {0x55}}, Answer{0x34, {0x52}}});
    EXPECT_EQ(write(5), -1);
    EXPECT_EQ(takeCode(), 0x52U);
    EXPECT_THAT(written(), ElementsAre("86 34 03 00 00 00 03 E8"));
}

TEST_F(WriteInputSensitivity, FailsWithARestartThatCannotBeWritten) {
    offer({1000});
    failWriteAfter(3);
    EXPECT_EQ(write(5), -1);
    EXPECT_EQ(takeCode(), code::deviceWrite);
    EXPECT_THAT(written(), ElementsAre("86 34 03 00 00 00 03 E8"));
}

TEST_F(WriteInputSensitivity, FailsWhenTheRestartCannotClearTheValues) {
    offer({1000});
    const HeldElsewhere held(valueMutex);
    EXPECT_EQ(write(5), -1);
    EXPECT_THAT(written(), ElementsAre("86 34 03 00 00 00 03 E8", "80 78", "80 24"));
}

TEST_F(WriteInputSensitivity, FailsWithARefusedScale) {
    script({range10, Answer{0xA2, {0x55}}, accepts(0x34), accepts(0x24), Answer{0x07, {0x52}}});
    EXPECT_EQ(write(5), -1);
    EXPECT_EQ(takeCode(), 0x52U);
}

TEST_F(WriteInputSensitivity, FailsWithAnUnansweredScale) {
    script({range10, Answer{0xA2, {0x55}}, accepts(0x34), accepts(0x24)});
    drop(0x07);
    EXPECT_EQ(write(5), -1);
    EXPECT_EQ(takeCode(), code::internalCallFailed);
    expectFree();
}

TEST_F(WriteInputSensitivity, ChecksTheModeAfterTheSensitivity) {
    EXPECT_EQ(TORVIKwriteInputSensitivity(device, 1, 1, 0.0), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    EXPECT_EQ(TORVIKwriteInputSensitivity(40, 1, 1, 1.0), -1);
    EXPECT_EQ(takeCode(40), code::firmwareUnsupported);
}

}  // namespace
}  // namespace torvik::test
