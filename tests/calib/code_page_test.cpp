// Strings of calibration files in other code pages.
#include <gtest/gtest.h>

#include <string>

#include "calib/ucf_parser.h"

namespace torvik {
namespace {

constexpr std::uint32_t utf8 = 65001;
constexpr std::uint32_t codePage437 = 437;

std::optional<std::string> read(const std::string& value, std::uint32_t codePage) {
    return UCFparser("[S]\nk=" + value, codePage).string("S", "k");
}

std::string sixteenFrom(int first) {
    std::string bytes;
    for (int byte = first; byte < first + 16; ++byte)
        bytes += static_cast<char>(byte);
    return bytes;
}

TEST(CodePage1252, TakesEveryByteAsItIs) {
    for (int first = 0x80; first <= 0xF0; first += 16)
        EXPECT_EQ(read(sixteenFrom(first), UCFparser::windows1252), sixteenFrom(first)) << first;
}

TEST(CodePage1252, IsTheUsualOne) {
    EXPECT_EQ(UCFparser("[S]\nk=\xB5m").string("S", "k"), "\xB5m");
}

struct Row {
    int first;
    const char* lookAlikes;
};

class LookAlikes : public testing::TestWithParam<Row> {};

TEST_P(LookAlikes, ReplaceSixteenBytes) {
    EXPECT_EQ(read("x" + sixteenFrom(GetParam().first) + "y", UCFparser::plainAscii),
              "x" + std::string(GetParam().lookAlikes) + "y");
}

INSTANTIATE_TEST_SUITE_P(CodePage1, LookAlikes,
                         testing::Values(Row{0x80, "E,f\".+#'%S<CZ"},     // 81, 8D and 8F have none
                                         Row{0x90, "''\"\"'-_~Ms>ozY"},   // 90 and 9D have none
                                         Row{0xA0, " icL*Y|$\"Ca<--R-"},  //
                                         Row{0xB0, "'+23'u|*,1'>423?"},   //
                                         Row{0xC0, "AAAAAAACEEEEIIII"},   //
                                         Row{0xD0, "DNOOOOOxOUUUUYPY"},   //
                                         Row{0xE0, "aaaaaaaceeeeiiii"},   //
                                         Row{0xF0, "onooooo/ouuuuyPy"}));

TEST(CodePage1, LeavesAsciiAsItIs) {
    std::string ascii;
    for (char character = 0x21; character < 0x7F; ++character)
        ascii += character;
    EXPECT_EQ(read(ascii, UCFparser::plainAscii), ascii);
}

TEST(OtherCodePage, ConvertsTheText) {
    EXPECT_EQ(read("N/mm\xB2 \xB5 \xE4", codePage437), "N/mm\xFD \xE6 \x84");
    EXPECT_EQ(read("N/mm\xB2 \x80", utf8), "N/mm\xC2\xB2 \xE2\x82\xAC");
}

TEST(OtherCodePage, LeavesAsciiAsItIs) {
    EXPECT_EQ(read("plain text", codePage437), "plain text");
    EXPECT_EQ(read("", codePage437), "");
}

TEST(OtherCodePage, RefusesATextOf256Bytes) {
    const std::string euros(85, '\x80');  // three bytes each
    EXPECT_EQ(read(euros, utf8)->size(), 255U);
    EXPECT_EQ(read(euros + "x", utf8), std::nullopt);
}

TEST(OtherCodePage, ThatNoSystemKnowsGivesNoText) {
    EXPECT_EQ(read("\xB5", 64999), std::nullopt);
}

}  // namespace
}  // namespace torvik
