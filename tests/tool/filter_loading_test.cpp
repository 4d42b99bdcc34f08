// torvik filter load: what goes to the device, in which order, and what the device holds afterwards.
#include <algorithm>
#include <optional>

#include "TORVIKcommand.h"
#include "command_filter.h"
#include "command_line.h"
#include "failure.h"
#include "support/bench_fixture.h"

namespace torvik::tool {
namespace {

using test::takeWritten;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Frames = std::vector<std::string>;

constexpr const char* switchedOff = "100: 84 52 00 00 00 00";
constexpr const char* switchedOn = "100: 84 52 00 00 00 01";
constexpr const char* stored = "100: 81 0A 00";
constexpr std::size_t coefficients = 9;

class FilterLoad : public test::Bench {
  protected:
    /// A device with this protocol kind.
    static void simulate(int protocolKind) {
        const std::string bench =
            "[[amplifier]]\nchannels = 1\nfrequency = 1000\nprotocol = " + std::to_string(protocolKind) + "\n";
        ASSERT_EQ(virtualConfigure(bench.c_str()), 0) << virtualMessage();
    }

    /// Runs the command; `nullopt`: it succeeded.
    std::optional<Failure> load(const std::string& arguments) {
        takeWritten();
        CommandLine commandLine;
        addFilterCommand(commandLine);
        commandLine.app.parse("filter load 1 " + arguments);
        std::optional<Failure> failure;
        {
            platform::Interruption interruption;
            platform::StandardOutput output;
            Session session{output, interruption};
            try {
                EXPECT_EQ(commandLine.action(session), ExitCode::success);
            } catch (const Failure& thrown) {
                failure = thrown;
            }
        }
        frames = takeWritten();
        return failure;
    }

    /// The type, the cut-off, the coefficients of a filter of fourth order and which filters are on.
    static Frames state() {
        std::uint32_t channels = 0;
        EXPECT_EQ(TORVIKactivateStd(test::device, &channels), 0);
        Frames answers{answerTo(0x4B, {1, 0}), answerTo(0x4D, {1, 0})};
        for (std::uint8_t i = 0; i < 5; ++i)
            answers.push_back(answerTo(0x4F, {1, i}));
        for (std::uint8_t i = 0x10; i < 0x14; ++i)
            answers.push_back(answerTo(0x4F, {1, i}));
        answers.push_back("on: " + answerTo(0x51, {}));
        TORVIKrelease(0);
        return answers;
    }

    /// The place of the first frame that begins like this, from `from` on.
    std::ptrdiff_t place(const std::string& beginning, std::ptrdiff_t from = 0) const {
        const auto found = std::find_if(frames.begin() + from, frames.end(),
                                        [&](const std::string& frame) { return frame.starts_with(beginning); });
        EXPECT_NE(found, frames.end()) << beginning;
        return found - frames.begin();
    }

    Frames frames;

  private:
    static std::string answerTo(std::uint8_t code, const std::vector<std::uint8_t>& parameters) {
        VirtualFrame answer{test::answerId, 0, 8, {}};
        EXPECT_EQ(TORVIKcommand(test::device, code, parameters.data(), static_cast<std::uint32_t>(parameters.size()),
                                answer.data),
                  0);
        answer.data[0] = 0;  // the header means nothing
        return test::frameText(answer);
    }
};

TEST_F(FilterLoad, ThatMatches_SwitchesOffWritesReadsAndOnlyThenSwitchesOnAndStores) {
    simulate(16);
    ASSERT_FALSE(load("lowpass butterworth 100 --on"));
    const std::ptrdiff_t off = place(switchedOff);
    const std::ptrdiff_t type = place("100: 82 4C 01 04", off);
    const std::ptrdiff_t cutoff = place("100: 86 4E 01 00", type);
    const std::ptrdiff_t lastWritten = place("100: 86 50 01 13", cutoff);
    const std::ptrdiff_t lastRead = place("100: 82 4F 01 13", lastWritten);
    const std::ptrdiff_t on = place(switchedOn);
    EXPECT_GT(on, lastRead);
    EXPECT_GT(place(stored), on);
    EXPECT_EQ(std::ranges::count_if(frames, [](const auto& frame) { return frame.starts_with("100: 86 50 "); }),
              static_cast<std::ptrdiff_t>(coefficients));
}

TEST_F(FilterLoad, WithoutOn_StoresAndLeavesItOff) {
    simulate(16);
    ASSERT_FALSE(load("lowpass butterworth 100"));
    EXPECT_THAT(frames, Not(Contains(switchedOn)));
    EXPECT_THAT(frames, Contains(stored));
}

TEST_F(FilterLoad, OverARunningFilter_RunsOnlyOnceItMatches) {
    simulate(16);
    ASSERT_FALSE(load("lowpass butterworth 100 --on"));
    ASSERT_FALSE(load("highpass bessel 50"));
    const std::ptrdiff_t lastRead = place("100: 82 4F 01 13", place("100: 86 50 01 13", place(switchedOff)));
    EXPECT_GT(place(switchedOn), lastRead);
    EXPECT_EQ(state().back(), "on: 101: 00 00 00 00 00 01 00 00");
}

class FilterLoadWithTheWrongKind : public FilterLoad, public testing::WithParamInterface<int> {};

TEST_P(FilterLoadWithTheWrongKind, RestoresTheFormerFilterSwitchedOffAndStoresNothing) {
    const std::string right = std::to_string(GetParam());
    const std::string wrong = GetParam() == 16 ? "32" : "16";
    simulate(GetParam());
    ASSERT_FALSE(load("bandpass butterworth 40 120 --on --protocol " + right));
    Frames former = state();
    const auto failure = load("lowpass butterworth 100 --on --protocol " + wrong);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->exitCode, ExitCode::differs);
    EXPECT_THAT(failure->advice, HasSubstr("is '--protocol " + wrong + "' right"));
    EXPECT_THAT(failure->advice, HasSubstr("protocol kind " + right));
    EXPECT_THAT(frames, Not(Contains(switchedOn)));
    EXPECT_THAT(frames, Not(Contains(StartsWith("100: 81 0A"))));
    Frames restored = state();
    EXPECT_NE(restored.back(), former.back());
    former.pop_back();
    EXPECT_EQ(restored.back(), "on: 101: 00 00 00 00 00 00 00 00");
    restored.pop_back();
    EXPECT_EQ(restored, former);
}

INSTANTIATE_TEST_SUITE_P(Tool, FilterLoadWithTheWrongKind, testing::Values(16, 32));

TEST_F(FilterLoad, WithARefusedCoefficient_RestoresTheFormerFilter) {
    simulate(16);
    Frames former = state();
    answerWith(0x50, {0x52}, 1);
    const auto failure = load("lowpass butterworth 100 --on");
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->exitCode, ExitCode::deviceFailed);
    EXPECT_EQ(failure->error->code, 0x52U);
    EXPECT_THAT(failure->reason, HasSubstr("the former filter has been written back"));
    EXPECT_THAT(frames, Not(Contains(stored)));
    EXPECT_EQ(state(), former);
}

TEST_F(FilterLoad, ThatCannotBeUndone_SaysSoAndLeavesItOff) {
    simulate(16);
    ASSERT_FALSE(load("lowpass butterworth 100 --on"));
    answerWith(0x50, {0x52});
    const auto failure = load("highpass butterworth 100 --on");
    ASSERT_TRUE(failure);
    EXPECT_THAT(failure->reason, HasSubstr("could not be written back; the filter is off"));
    EXPECT_THAT(failure->advice, HasSubstr("torvik settings load 0"));
    EXPECT_THAT(frames, Contains(switchedOff));
    EXPECT_THAT(frames, Not(Contains(switchedOn)));
    EXPECT_THAT(frames, Not(Contains(stored)));
}

TEST_F(FilterLoad, WhoseFormerFilterCannotBeRead_ChangesNothing) {
    simulate(16);
    answerWith(0x4F, {0x51});
    EXPECT_TRUE(load("lowpass butterworth 100 --on"));
    for (const char* const writing : {"100: 84 52", "100: 82 4C", "100: 86 4E", "100: 86 50", "100: 81 0A"})
        EXPECT_THAT(frames, Not(Contains(StartsWith(writing))));
}

}  // namespace
}  // namespace torvik::tool
