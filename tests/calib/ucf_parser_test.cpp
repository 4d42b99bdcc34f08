// Looking up sections and keys.
#include "calib/ucf_parser.h"

#include <gtest/gtest.h>

#include <string>

#include "calib/number_syntax.h"
#include "support/fastest_run.h"

namespace torvik {
namespace {

using Text = std::optional<std::string>;

// The value of key k in section S.
Text lookUp(const std::string& text) {
    return UCFparser(text).string("S", "k");
}

TEST(LookUp, FindsAKeyInItsSection) {
    EXPECT_EQ(lookUp("[S]\nk=v\n"), "v");
    EXPECT_EQ(lookUp("[R]\nk=w\n[S]\nj=x\nk=v\n"), "v");
}

TEST(LookUp, PassesOverCommentsAndBlankLines) {
    EXPECT_EQ(lookUp("; k=1\n# k=2\n\n[S]\n;k=3\n#k=4\n\n \nk=v"), "v");
}

TEST(LookUp, FindsNoKeyThatBeginsLikeAComment) {
    EXPECT_EQ(UCFparser("[S]\n;k=v").string("S", ";k"), std::nullopt);
    EXPECT_EQ(UCFparser("[S]\n#k=v").string("S", "#k"), std::nullopt);
}

TEST(LookUp, TakesAFirstLineThatBeginsWithABlankForAComment) {
    EXPECT_EQ(lookUp(" [S]\nk=v"), std::nullopt);
    EXPECT_EQ(lookUp(" anything\n[S]\nk=v"), "v");
}

TEST(LookUp, PassesOverABlankFirstLine) {
    EXPECT_EQ(lookUp("\n[S]\nk=v"), "v");
    EXPECT_EQ(lookUp("\r\n[S]\r\nk=v"), "v");
}

TEST(LookUp, IgnoresIndentation) {
    EXPECT_EQ(lookUp("; first\n  [S]\n\t k=v"), "v");
}

TEST(LookUp, NeedsTheSection) {
    EXPECT_EQ(lookUp("k=v\n[R]\nk=v"), std::nullopt);
    EXPECT_EQ(lookUp("k=v\n"), std::nullopt);
    EXPECT_EQ(lookUp(""), std::nullopt);
}

TEST(LookUp, ComparesSectionNamesExactly) {
    EXPECT_EQ(lookUp("[s]\nk=v"), std::nullopt);
    EXPECT_EQ(lookUp("[S ]\nk=v"), std::nullopt);
    EXPECT_EQ(lookUp("[ S]\nk=v"), std::nullopt);
    EXPECT_EQ(lookUp("[SS]\nk=v"), std::nullopt);
    EXPECT_EQ(lookUp("[S\nk=v"), std::nullopt);
}

TEST(LookUp, IgnoresWhatFollowsTheHeader) {
    EXPECT_EQ(lookUp("[S] of sensor 7\nk=v"), "v");
    EXPECT_EQ(lookUp("[S]k=w\nk=v"), "v");
}

TEST(LookUp, EndsAtTheNextSection) {
    EXPECT_EQ(lookUp("[S]\n[R]\nk=v"), std::nullopt);
    EXPECT_EQ(lookUp("[S]\n[unfinished\nk=v"), std::nullopt);
}

TEST(LookUp, EndsAtARepeatedHeader) {
    EXPECT_EQ(lookUp("[S]\n[S]\nk=v"), std::nullopt);
    EXPECT_EQ(lookUp("[S]\nk=v\n[S]\nk=w"), "v");
}

TEST(LookUp, TakesTheFirstOfEqualKeys) {
    EXPECT_EQ(lookUp("[S]\nk=v\nk=w"), "v");
}

TEST(LookUp, ComparesKeysExactly) {
    EXPECT_EQ(lookUp("[S]\nK=w\nkk=w\nk2=w\nk=v"), "v");
    EXPECT_EQ(lookUp("[S]\nK=w"), std::nullopt);
}

TEST(LookUp, AllowsBlanksAndTabsAroundTheEqualsSign) {
    EXPECT_EQ(lookUp("[S]\nk \t = \t v"), "v");
}

TEST(LookUp, PassesOverLinesWithoutAnEqualsSign) {
    EXPECT_EQ(lookUp("[S]\nk\nk v\nk: v\nk=v"), "v");
}

TEST(LookUp, AllowsHeadersBelow32Characters) {
    const std::string name(29, 'n');
    EXPECT_EQ(UCFparser("[" + name + "]\nk=v").string(name, "k"), "v");
    EXPECT_EQ(UCFparser("[" + name + "n]\nk=v").string(name + "n", "k"), std::nullopt);
}

TEST(LookUp, DoesNotSeeWhatAZeroByteHides) {
    EXPECT_EQ(lookUp(std::string("[S]\nk=v\0w", 9)), "v");
    EXPECT_EQ(lookUp(std::string("[S]\nk\0=v", 8)), std::nullopt);
    EXPECT_EQ(lookUp(std::string("[S]\n\0\nk=v", 9)), "v");
}

TEST(LookUp, CutsLinesAt127Characters) {
    const std::string value(125, 'x');
    EXPECT_EQ(lookUp("[S]\nk=" + value + "yz"), value);
    EXPECT_EQ(lookUp("[S]\nj=" + value + "k=v"), "v");
}

TEST(LookUp, GivesUpAfter200000Lines) {
    std::string text = "[S]\n";
    for (int i = 0; i < 199'998; ++i)
        text += "j\n";
    EXPECT_EQ(lookUp(text + "k=v\n"), "v");
    EXPECT_EQ(lookUp(text + "j\nk=v\n"), std::nullopt);
}

// As many bytes with a line end behind every 127 are the measure.
TEST(LookUp, TextWithoutLineEnds_TakesLinearTime) {
    constexpr std::size_t size = 1 << 20;
    const std::string unbroken = "[S]\n" + std::string(size, 'x');
    std::string lines = unbroken;
    for (std::size_t i = 131; i < lines.size(); i += 128)
        lines[i] = '\n';
    const auto ofLines = test::fastestRun([&] { EXPECT_EQ(lookUp(lines), std::nullopt); });
    const auto ofUnbroken = test::fastestRun([&] { EXPECT_EQ(lookUp(unbroken), std::nullopt); });
    EXPECT_LT(ofUnbroken.count(), 20 * ofLines.count());
}

TEST(LookUp, StartsAgainForEveryKey) {
    const UCFparser parser("[R]\na=1\n[S]\nb=2\nc=3\n");
    EXPECT_EQ(parser.integer("S", "c"), 3);
    EXPECT_EQ(parser.integer("S", "b"), 2);
    EXPECT_EQ(parser.integer("R", "a"), 1);
}

TEST(IntegerValue, IsTheNumberBehindTheEqualsSign) {
    EXPECT_EQ(UCFparser("[S]\nk = 12 \r\n").integer("S", "k"), 12);
}

TEST(IntegerValue, IsMinusOneWhenMissingOrInvalid) {
    EXPECT_EQ(UCFparser("[S]\nj=1").integer("S", "k"), -1);
    EXPECT_EQ(UCFparser("[S]\nk=+3").integer("S", "k"), -1);
    EXPECT_EQ(UCFparser("[S]\nk=").integer("S", "k"), -1);
    EXPECT_EQ(UCFparser("[S]\nk=1=2").integer("S", "k"), -1);
}

TEST(RealValue, IsTheNumberBehindTheEqualsSign) {
    EXPECT_EQ(UCFparser("[S]\nInScaleFactor = 1,25\r\n").real("S", "InScaleFactor"), 1.25);
}

TEST(RealValue, IsMinusTenToTheTenthWhenMissingOrInvalid) {
    EXPECT_EQ(UCFparser("[S]\nj=1").real("S", "k"), -1e10);
    EXPECT_EQ(UCFparser("[S]\nk=1 N").real("S", "k"), -1e10);
    EXPECT_EQ(UCFparser("[S]\nk=1 ; N").real("S", "k"), -1e10);
}

TEST(StringValue, KeepsItsTrailingBlanks) {
    EXPECT_EQ(lookUp("[S]\nk= a b \t\r\n"), "a b \t");
}

TEST(StringValue, LosesCarriageReturns) {
    EXPECT_EQ(lookUp("[S]\nk=a\rb"), "ab");
}

TEST(StringValue, MayBeEmpty) {
    EXPECT_EQ(lookUp("[S]\nk="), "");
    EXPECT_EQ(lookUp("[S]\nk=\"\""), "");
}

TEST(StringValue, KeepsEqualsSignsAndCommentSigns) {
    EXPECT_EQ(lookUp("[S]\nk=a=b;c#d[e]"), "a=b;c#d[e]");
}

TEST(StringValue, InQuotesKeepsItsBlanks) {
    EXPECT_EQ(lookUp("[S]\nk = \"  a b \" ; comment"), "  a b ");
}

TEST(StringValue, InQuotesEndsAtTheNextQuote) {
    EXPECT_EQ(lookUp("[S]\nk=\"a\"b\""), "a");
}

TEST(StringValue, WithoutItsClosingQuoteIsMissing) {
    EXPECT_EQ(lookUp("[S]\nk=\"a b"), std::nullopt);
    EXPECT_EQ(lookUp("[S]\nk=\""), std::nullopt);
    EXPECT_EQ(lookUp("[S]\nk=\"" + std::string(124, 'x') + "\""), std::nullopt);
    EXPECT_EQ(lookUp("[S]\nk=\"" + std::string(123, 'x') + "\""), std::string(123, 'x'));
}

TEST(StringValue, KeepsQuotesInside) {
    EXPECT_EQ(lookUp("[S]\nk=a\"b\""), "a\"b\"");
}

}  // namespace
}  // namespace torvik
