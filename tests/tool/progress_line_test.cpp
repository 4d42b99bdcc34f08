#include <gtest/gtest.h>

#include "calibration/progress.h"

namespace torvik::tool {
namespace {

TEST(ProgressLine, TellsTheAnswersThatHaveCome) {
    EXPECT_EQ(progressLine("writing", {.answers = 20, .expected = 60, .elapsed = 0.25}),
              "writing      [##########....................] 20 of about 60 answers, 0.2 s");
}

TEST(ProgressLine, IsNotFullBeforeTheEndWhateverHasCome) {
    EXPECT_EQ(progressLine("writing", {.answers = 70, .expected = 60, .elapsed = 1}),
              "writing      [#############################.] 70 of about 60 answers, 1.0 s");
}

TEST(ProgressLine, IsFullAtTheEndAlsoWhenMoreWasExpected) {
    EXPECT_EQ(progressLine("reading back", {.answers = 58, .expected = 60, .elapsed = 1.5, .complete = true}),
              "reading back [##############################] 58 answers, 1.5 s");
}

}  // namespace
}  // namespace torvik::tool
