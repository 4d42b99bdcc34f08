// Texts of devices and files must not control the terminal that shows them.
#include "printable_text.h"

#include <gtest/gtest.h>

#include "json_text.h"
#include "parameters/value.h"

namespace torvik::tool {
namespace {

TEST(Printable, PlainTextAndUtf8_Stay) {
    for (const char* const text : {"", "kN \\ \"~", "µm/m °C", "‰", "│█·", "\xF0\x9F\x94\xA7", "\xEF\xBB\xBF"})
        EXPECT_EQ(printable(text), text);
}

TEST(Printable, ControlCharacters_AreShownAsNumbers) {
    EXPECT_EQ(printable("\x1B[2J"), "\\x1B[2J");
    EXPECT_EQ(printable(std::string_view("a\0b\n\r\t\x7F", 7)), "a\\x00b\\x0A\\x0D\\x09\\x7F");
    // C1 as UTF-8: the one that begins a control sequence, the first and the last.
    EXPECT_EQ(printable("\xC2\x9B"
                        "31m\xC2\x80\xC2\x9F"),
              "\\x9B31m\\x80\\x9F");
    EXPECT_EQ(printable("\xC2\xA0"), "\xC2\xA0");
}

TEST(Printable, WhatIsNoUtf8_IsShownAsBytes) {
    EXPECT_EQ(printable("\x9B"
                        "2J"),
              "\\x9B2J");
    EXPECT_EQ(printable("\xB0"
                        "C"),
              "\\xB0"
              "C");
    EXPECT_EQ(printable("\xC0\x9B"), "\\xC0\\x9B");                    // overlong
    EXPECT_EQ(printable("\xE0\x80\x9B"), "\\xE0\\x80\\x9B");           // overlong
    EXPECT_EQ(printable("\xED\xA0\x80"), "\\xED\\xA0\\x80");           // surrogate
    EXPECT_EQ(printable("\xF4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80");  // beyond the last character
    EXPECT_EQ(printable("\xE2\x82"), "\\xE2\\x82");                    // cut off
    EXPECT_EQ(printable("\xC2\x1B["), "\\xC2\\x1B[");
}

TEST(Printable, EveryByteAlone_IsShownAsPrintableAscii) {
    for (int byte = 0; byte < 256; ++byte) {
        for (const char shown : printable(std::string(1, static_cast<char>(byte))))
            EXPECT_TRUE(shown >= 0x20 && shown < 0x7F) << byte;
    }
}

TEST(PrintableLines, LineEndsAndTabs_Stay) {
    EXPECT_EQ(printableLines("a\tb\nc\n"), "a\tb\nc\n");
    EXPECT_EQ(printableLines("°\tb\nc\r\n\x1B[A"), "°\tb\nc\\x0D\n\\x1B[A");
}

TEST(ShownText, OfADeviceWithControlCharacters_IsOnePrintableLine) {
    EXPECT_EQ(shownText(ValueKind::text, Value(std::string("k\x1B[2J\nN"))), "k\\x1B[2J\\x0AN");
    EXPECT_EQ(valueText(ValueKind::text, Value(std::string("k\x1B[2J\nN"))), "k\x1B[2J\nN");
}

TEST(QuotedJson, OfAnyText_IsExactAndPrintable) {
    const std::string quoted = quotedJson("\x1B\n\x7F\xC2\x9B\"\\ °");
    EXPECT_EQ(quoted, R"("\u001b\u000a\u007f\u009b\"\\ °")");
    EXPECT_EQ(printableLines(quoted), quoted);
    EXPECT_EQ(quotedJson("\xB0"), R"("\ufffd")");
}

}  // namespace
}  // namespace torvik::tool
