// Files and messages under a locale that has a decimal comma.
#include <array>
#include <clocale>
#include <cstdio>

#include "filter/response_bench.h"

namespace torvik::test {
namespace {

using namespace torvik::option;
using testing::Not;

// The process has a locale that writes a decimal comma.
class DecimalComma : public ResponseFiles {
  protected:
    void SetUp() override {
        ResponseFiles::SetUp();
        const bool found =
            std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr || std::setlocale(LC_ALL, "German_Germany") != nullptr;
        ASSERT_TRUE(found);
        std::array<char, 8> text{};
        std::snprintf(text.data(), text.size(), "%.1f", 0.5);
        ASSERT_STREQ(text.data(), "0,5");
    }
    void TearDown() override {
        std::setlocale(LC_ALL, "C");
        ResponseFiles::TearDown();
    }
};

TEST_F(DecimalComma, IsAPointInFrequencyFiles) {
    ASSERT_EQ(frequency(100, 400, 1), 0U);
    EXPECT_EQ(content(),
              "Frequency response of IIR low pass 4th order. Cutoff freq: 100.000 Sampling freq: 1000.0\n"
              "f [Hz]\tAmplitude [dB]\n"
              "100.000\t-3.01");
}

TEST_F(DecimalComma, IsAPointInStepFiles) {
    ASSERT_EQ(step(20), 0U);
    EXPECT_THAT(content(), Not(testing::HasSubstr(",")));
    EXPECT_THAT(content(), testing::HasSubstr("\n1.000\t0."));
}

TEST_F(DecimalComma, IsAPointInMessages) {
    EXPECT_EQ(run(filter, {chebyshev | lowPass | given, 4, 0.2, 0, {.chebyshevRipple = 0.5}}),
              filter_error::wrongRipple);
    EXPECT_EQ(messageOf(filter), "mkfilter: Chebyshev ripple is 0.5 dB; must be < 0.0");
}

}  // namespace
}  // namespace torvik::test
