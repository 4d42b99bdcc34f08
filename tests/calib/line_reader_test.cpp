// The lines of a calibration file as its reading format cuts them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "calib/ucf_parser.h"

namespace torvik {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> linesOf(std::string_view text) {
    LineReader reader(text);
    std::vector<std::string> lines;
    while (const auto line = reader.next())
        lines.emplace_back(*line);
    return lines;
}

TEST(Lines, EndAtLineFeeds) {
    EXPECT_THAT(linesOf("a\nb\nc\n"), ElementsAre("a", "b", "c"));
}

TEST(Lines, NeedNoLineFeedAtTheEnd) {
    EXPECT_THAT(linesOf("a\nb"), ElementsAre("a", "b"));
}

TEST(Lines, EndAtCarriageReturnAndLineFeed) {
    EXPECT_THAT(linesOf("a\r\nb \r\n\r\nc"), ElementsAre("a", "b ", "c"));
}

TEST(Lines, KeepCarriageReturnsInside) {
    EXPECT_THAT(linesOf("a\rb\nc"), ElementsAre("a\rb", "c"));
}

TEST(Lines, LoseTheWhiteSpaceBeforeThem) {
    EXPECT_THAT(linesOf("a\n \t\v\f\n\n  b"), ElementsAre("a", "b"));
}

TEST(Lines, KeepTheBlanksBeforeTheFirst) {
    EXPECT_THAT(linesOf("  a\n  b"), ElementsAre("  a", "b"));
}

TEST(Lines, KeepTrailingBlanks) {
    EXPECT_THAT(linesOf("a \t\nb"), ElementsAre("a \t", "b"));
}

TEST(Lines, BeginBehindBlankFirstLines) {
    EXPECT_THAT(linesOf("\n\n  a"), ElementsAre("a"));
    EXPECT_THAT(linesOf("\r\n\r\na"), ElementsAre("a"));
}

TEST(Lines, AreMissingInAnEmptyText) {
    EXPECT_THAT(linesOf(""), IsEmpty());
    EXPECT_THAT(linesOf("\n\r\n\n"), IsEmpty());
}

TEST(Lines, HaveAtMost127Characters) {
    const std::string longest(127, 'x');
    EXPECT_THAT(linesOf(longest + "\nb"), ElementsAre(longest, "b"));
    EXPECT_THAT(linesOf(longest + "y\nb"), ElementsAre(longest, "y", "b"));
    EXPECT_THAT(linesOf(longest + longest + "y"), ElementsAre(longest, longest, "y"));
}

TEST(Lines, OfFullLengthMayEndInCarriageReturnAndLineFeed) {
    const std::string longest(127, 'x');
    EXPECT_THAT(linesOf(longest + "\r\nb"), ElementsAre(longest, "b"));
    EXPECT_THAT(linesOf(longest.substr(1) + "\r\nb"), ElementsAre(longest.substr(1), "b"));
}

TEST(Lines, LoseTheBlanksWhereTheyAreCut) {
    const std::string longest(127, 'x');
    EXPECT_THAT(linesOf(longest + "  rest\nb"), ElementsAre(longest, "rest", "b"));
}

TEST(Lines, EndAtTheirFirstZeroByte) {
    EXPECT_THAT(linesOf(std::string_view("ab\0cd\nef\n\0gh", 12)), ElementsAre("ab", "ef", ""));
}

std::vector<std::size_t> lineNumbersOf(std::string_view text) {
    LineReader reader(text);
    std::vector<std::size_t> numbers;
    while (reader.next())
        numbers.push_back(reader.lineNumber());
    return numbers;
}

TEST(Lines, TheirNumbersCountLineFeeds) {
    EXPECT_THAT(lineNumbersOf("a\nb\r\nc"), ElementsAre(1U, 2U, 3U));
    EXPECT_THAT(lineNumbersOf("\n\r\n a\n\n\tb\n"), ElementsAre(3U, 5U));
    EXPECT_THAT(lineNumbersOf(std::string(127, 'x') + " rest\nb"), ElementsAre(1U, 1U, 2U));
}

std::vector<bool> cutLinesOf(std::string_view text) {
    LineReader reader(text);
    std::vector<bool> cut;
    while (reader.next())
        cut.push_back(reader.isCut());
    return cut;
}

TEST(Lines, AreCutWhereTheirRestIsTheNextLine) {
    const std::string longest(127, 'x');
    EXPECT_THAT(cutLinesOf(longest + "\nb"), ElementsAre(false, false));
    EXPECT_THAT(cutLinesOf(longest + " \t\r\nb"), ElementsAre(false, false));
    EXPECT_THAT(cutLinesOf(longest + "y\nb"), ElementsAre(true, false, false));
    EXPECT_THAT(cutLinesOf(longest + "  y"), ElementsAre(true, false));
    EXPECT_THAT(cutLinesOf(longest), ElementsAre(false));
    EXPECT_THAT(cutLinesOf(std::string(1, '\0') + longest), ElementsAre(true, false));
}

TEST(Lines, CountTheCharactersBehindAZeroByte) {
    const std::string line = std::string("a\0", 2) + std::string(125, 'x');
    EXPECT_THAT(linesOf(line + "b"), ElementsAre("a", "b"));
}

}  // namespace
}  // namespace torvik
