// The filter exports in a host that has its processor trap floating-point exceptions.
#include <cfenv>

#include "filter/export_bench.h"
#include "filter/odd_cutoffs.h"

namespace torvik::test {
namespace {

constexpr int trapped = FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW;

class TrappedExports : public FilterExports {
  protected:
    void TearDown() override {
        fedisableexcept(FE_ALL_EXCEPT);
        FilterExports::TearDown();
    }

    static void enableTraps() {
        std::feclearexcept(FE_ALL_EXCEPT);
        ASSERT_NE(feenableexcept(trapped), -1);
    }
};

TEST_F(TrappedExports, SurviveOddCutoffs) {
    virtualClearAnswerRules();
    answerWith(0x8A, {0, 0x44, 0x7A, 0, 0});
    enableTraps();
    for (const double f1 : oddAlphas) {
        for (const double f2 : oddAlphas) {
            for (std::uint32_t kind = 0; kind < 4; ++kind)
                TORVIKcalcSetDfilterParams(device, 9, 0, kind, 1 + kind % 2, 4, f1, f2);
        }
    }
    EXPECT_EQ(fegetexcept(), trapped);
}

TEST_F(TrappedExports, SurviveASamplingFrequencyThatIsNoNumber) {
    double cutoffs[2] = {};
    std::uint32_t type = 0;
    enableTraps();
    for (const std::uint8_t last : std::initializer_list<std::uint8_t>{0, 1}) {  // infinite, a signalling NaN
        answerWith(0x8A, {0, 0x7F, 0x80, 0, last}, 3);
        TORVIKcalcSetDfilterParams(device, 9, 0, 0, 1, 4, 100, 200);
        TORVIKgetDfilterInfo(device, 1, 0, &type, cutoffs);
        TORVIKsimulateDfilter(device, 1, 0, 1, NAN, 1, "/dev/null");
    }
    EXPECT_EQ(fegetexcept(), trapped);
}

TEST_F(TrappedExports, SurviveParametersThatAreNoNumbers) {
    virtualClearAnswerRules();
    double cutoffs[2] = {0.1, 1e300};
    double x[16] = {NAN, HUGE_VAL, -HUGE_VAL, 1e300, -1e-300};
    enableTraps();
    TORVIKsetDfilterParams(device, 1, 0x24, cutoffs, x, x);
    cutoffs[0] = NAN;
    EXPECT_EQ(TORVIKsetDfilterParams(device, 1, 0x24, cutoffs, x, x), -1);
    EXPECT_EQ(fegetexcept(), trapped);
}

}  // namespace
}  // namespace torvik::test
