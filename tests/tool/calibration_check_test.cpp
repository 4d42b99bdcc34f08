#include <gtest/gtest.h>

#include <algorithm>

#include "calibration/file_check.h"
#include "support/fastest_run.h"

namespace torvik::tool {
namespace {

// A report in which the keys of a sensor stand as read in these lines; 0: missing.
CalibrationReport reportOf(std::size_t serialLine, std::size_t maximumLine) {
    const auto finding = [](std::string name, std::size_t line) {
        return Finding{.kind = line == 0 ? FindingKind::byDefault : FindingKind::value,
                       .file = "sensor.ini",
                       .line = line,
                       .section = "SensorPara",
                       .name = std::move(name)};
    };
    return {finding("sn", serialLine), finding("FxMax", maximumLine)};
}

// Why the line is not read; empty when nothing is said about it.
std::string whyUnread(std::string_view text, CalibrationReport report, std::size_t line) {
    const std::size_t known = report.size();
    addUnreadLines("sensor.ini", text, report);
    const auto found = std::find_if(report.begin() + static_cast<std::ptrdiff_t>(known), report.end(),
                                    [line](const Finding& finding) { return finding.line == line; });
    return found == report.end() ? "" : found->reason;
}

TEST(UnreadLines, LinesThatAreReadAndCommentsAreNotTold) {
    auto report = reportOf(4, 5);
    addUnreadLines("sensor.ini", "; text\n\n[SensorPara]\nsn=1234\nFxMax=2\n# text\n", report);
    EXPECT_EQ(report.size(), 2U);
}

TEST(UnreadLines, AKeyWithOtherLettersIsTold) {
    EXPECT_EQ(whyUnread("[SensorPara]\nsn=1234\nFXMax=2\n", reportOf(2, 0), 3), "not read: is FxMax meant?");
}

TEST(UnreadLines, AKeyThatStandsTwiceIsTold) {
    EXPECT_EQ(whyUnread("[SensorPara]\nsn=1234\nsn=5678\n", reportOf(2, 0), 3),
              "not read: the key stands in line 2, too, and the first one counts");
}

TEST(UnreadLines, AKeyInAnotherSectionIsTold) {
    EXPECT_EQ(whyUnread("[ThisFile]\nFxMax=2\n[SensorPara]\nsn=1234\n", reportOf(4, 0), 2),
              "not read: it belongs to [SensorPara]");
}

TEST(UnreadLines, ASectionThatStandsTwiceIsToldOnce) {
    auto report = reportOf(2, 0);
    addUnreadLines("sensor.ini", "[SensorPara]\nsn=1234\n[ThisFile]\n[SensorPara]\nFxMax=2\n", report);
    ASSERT_EQ(report.size(), 3U);
    EXPECT_EQ(report.back().line, 4U);
    EXPECT_EQ(report.back().reason, "not read: the section stands twice, and the first one counts");
}

TEST(UnreadLines, AMisspeltSectionIsTold) {
    EXPECT_EQ(whyUnread("[sensorpara]\nsn=1234\n", reportOf(0, 0), 1), "not read: is [SensorPara] meant?");
}

TEST(UnreadLines, TheRestOfALongLineIsTold) {
    const std::string text = "[SensorPara]\nsn=" + std::string(124, '1') + "22\nFxMax=2\n";
    EXPECT_EQ(whyUnread(text, reportOf(2, 3), 2),
              "not read: the rest of a line of more than 127 characters, read as a line of its own");
}

TEST(UnreadLines, ALineWithoutAnEqualsSignIsTold) {
    EXPECT_EQ(whyUnread("[SensorPara]\nsn 1234\n", reportOf(0, 0), 2),
              "not read: neither a comment nor a key with an equals sign");
}

std::size_t unreadLines(std::string_view text) {
    CalibrationReport report;
    addUnreadLines("sensor.ini", text, report);
    return report.size();
}

// The measure is a text with as many lines.
void expectLinearTime(const std::string& text, const std::string& measure) {
    const auto ofMeasure = test::fastestRun([&] { EXPECT_GT(unreadLines(measure), 10'000U); });
    const auto ofText = test::fastestRun([&] { EXPECT_GT(unreadLines(text), 10'000U); });
    EXPECT_LT(ofText.count(), 10 * ofMeasure.count());
}

TEST(UnreadLines, TextWithoutLineEnds_TakesLinearTime) {
    std::string lines(1 << 21, 'x');
    const std::string unbroken = lines;
    for (std::size_t i = 127; i < lines.size(); i += 128)
        lines[i] = '\n';
    expectLinearTime(unbroken, lines);
}

TEST(UnreadLines, ManySections_TakeLinearTime) {
    std::string different;
    std::string equal;
    for (int i = 100'000; i < 140'000; ++i) {
        different += "[" + std::to_string(i) + "]\n";
        equal += "[100000]\n";
    }
    expectLinearTime(different, equal);
}

TEST(UnreadLines, EndWhereTheReadingEnds) {
    std::string text;
    for (int i = 0; i < 200'000; ++i)
        text += "x\n";
    EXPECT_EQ(unreadLines(text), 200'000U);
    CalibrationReport report;
    addUnreadLines("sensor.ini", text + "y\nz\n", report);
    ASSERT_EQ(report.size(), 200'001U);
    EXPECT_EQ(report.back().line, 200'001U);
    EXPECT_EQ(report.back().reason, "not read: only the first 200000 lines are");
}

TEST(CheckPage, CountsWhatWasFoundAndListsTheProblems) {
    CalibrationReport report = reportOf(2, 0);
    report.push_back({.kind = FindingKind::problem,
                      .file = "sensor.ini",
                      .line = 7,
                      .section = "SensorPara",
                      .name = "FyMax",
                      .reason = "no number",
                      .code = 0x30000108});
    const std::string page = checkPage(report);
    EXPECT_NE(page.find("\n1 value, 1 default, 0 notes, 1 problem\n"), std::string::npos) << page;
    EXPECT_NE(page.find("\nsensor.ini:7: [SensorPara] FyMax: no number (code 0x30000108)\n"), std::string::npos)
        << page;
}

}  // namespace
}  // namespace torvik::tool
