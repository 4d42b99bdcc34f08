#include "number_text.h"

#include <gtest/gtest.h>

namespace torvik::tool {
namespace {

TEST(NumberText, DecimalAndHexadecimalAreRead) {
    EXPECT_EQ(parseNumber("256"), 256U);
    EXPECT_EQ(parseNumber("0x100"), 256U);
    EXPECT_EQ(parseNumber("0XfF"), 255U);
    EXPECT_EQ(parseNumber("4294967295"), 0xFFFFFFFFU);
}

TEST(NumberText, ALeadingZeroStaysDecimal) {
    EXPECT_EQ(parseNumber("0100"), 100U);
}

TEST(NumberText, AnythingElseIsRefused) {
    for (const char* const text : {"", "0x", "-1", "+1", " 1", "1 ", "1.5", "F2", "4294967296", "0x100000000"}) {
        EXPECT_FALSE(parseNumber(text)) << text;
    }
}

}  // namespace
}  // namespace torvik::tool
