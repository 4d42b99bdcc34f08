#include "csv_format.h"

#include <gtest/gtest.h>

#include <limits>
#include <locale>

#include "sample_batch.h"

namespace torvik::tool {
namespace {

class DecimalComma : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(CsvFormat, HeaderNamesSetTimeAndChannels) {
    EXPECT_EQ(CsvFormat(3, false).header(), "set,seconds,channel1,channel2,channel3\n");
    EXPECT_EQ(CsvFormat(2, true).header(), "set,seconds,channel1,channel2,status1,status2\n");
}

TEST(CsvFormat, EverySetIsOneLine) {
    CsvFormat format(2, false);
    EXPECT_EQ(format.lines(SampleBatch({0.5, -0.25, 1, 2}, 2).batch(), 1.25), "1,1.250,0.5,-0.25\n2,1.250,1,2\n");
}

TEST(CsvFormat, SetNumbersGoOnFromBatchToBatch) {
    CsvFormat format(1, false);
    format.lines(SampleBatch({1, 2, 3}, 1).batch(), 0.1);
    EXPECT_EQ(format.lines(SampleBatch({4}, 1).batch(), 0.2), "4,0.200,4\n");
}

TEST(CsvFormat, StatusesFollowTheValues) {
    CsvFormat format(2, true);
    EXPECT_EQ(format.lines(SampleBatch({1, 2}, 2, {0, 15}).batch(), 0), "1,0.000,1,2,0,15\n");
}

TEST(CsvFormat, NumbersReadBackUnchanged) {
    constexpr double countsOfOne = 2.1 / 65535;
    CsvFormat format(1, false);
    EXPECT_EQ(format.lines(SampleBatch({countsOfOne * 12345}, 1).batch(), 0), "1,0.000,0.39558251316090637\n");
    EXPECT_EQ(0.39558251316090637, countsOfOne * 12345);
}

TEST(CsvFormat, ValuesThatAreNoNumbersAreNamed) {
    CsvFormat format(2, false);
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(format.lines(SampleBatch({std::numeric_limits<double>::quiet_NaN(), -infinity}, 2).batch(), 0),
              "1,0.000,nan,-inf\n");
}

TEST(CsvFormat, ALocaleWithDecimalCommaChangesNothing) {
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new DecimalComma));
    CsvFormat format(1, false);
    const std::string line = format.lines(SampleBatch({1234567.5}, 1).batch(), 1234.5);
    std::locale::global(before);
    EXPECT_EQ(line, "1,1234.500,1234567.5\n");
}

}  // namespace
}  // namespace torvik::tool
