// Cut-offs are taken as they are: whatever the formulas give, it is a code or a filter with finite coefficients.
#include "filter/odd_cutoffs.h"

namespace torvik::test {
namespace {

using namespace torvik::option;

void report(const Design& design) {
    ADD_FAILURE() << std::hex << design.options << std::dec << " with " << design.alpha1 << " and " << design.alpha2;
}

bool coefficientsFinite(const Dfilter& filter) {
    const auto finite = [](double value) { return std::isfinite(value); };
    return std::ranges::all_of(filter.xCoefficients, finite) && std::ranges::all_of(filter.yCoefficients, finite);
}

TEST_F(FilterTest, OddCutoffsGiveACodeOrFiniteCoefficients) {
    int succeeded = 0;
    int failed = 0;
    forEachOddDesign([&](const Design& design) {
        const std::uint32_t code = run(filter, design);
        ++(code == filter_error::none ? succeeded : failed);
        const bool consistent = filter.errorCode == code && filter.iirValid == (code == filter_error::none);
        if (!consistent || (filter.iirValid && !coefficientsFinite(filter))) report(design);
    });
    EXPECT_GT(succeeded, 1000);
    EXPECT_GT(failed, 1000);
}

TEST_F(FilterTest, OddCutoffsGiveOnlyCodesOfTheDesign) {
    forEachOddDesign([&](const Design& design) {
        const std::uint32_t code = run(filter, design);
        const bool known = code == filter_error::none || code == filter_error::notConverged ||
                           code == filter_error::complexCoefficient || code == filter_error::coefficientsTooLarge ||
                           code == filter_error::gainTooLarge;
        if (!known) report(design);
    });
}

TEST_F(FilterTest, ACutoffThatIsNoNumberGivesNoFilter) {
    for (const std::uint32_t prototype : {bessel, butterworth}) {
        for (const Design& design : {lowPassOf(prototype, 4, NAN), highPassOf(prototype, 4, NAN),
                                     bandPassOf(prototype, 2, NAN, 0.2), bandPassOf(prototype, 2, 0.1, NAN),
                                     bandStopOf(prototype, 2, NAN, 0.2), bandStopOf(prototype, 2, 0.1, NAN)})
            EXPECT_NE(run(filter, design), filter_error::none);
    }
}

TEST_F(FilterTest, ALowPassAtZeroGivesNoFilter) {
    EXPECT_NE(run(filter, lowPassOf(butterworth, 4, 0.0)), filter_error::none);
}

TEST_F(FilterTest, EqualCutoffsGiveNoBandPass) {
    EXPECT_NE(run(filter, bandPassOf(butterworth, 2, 0.2, 0.2)), filter_error::none);
}

TEST_F(FilterTest, SwappedCutoffsAreNotPutInOrder) {
    // A band of negative width: its poles lie outside the unit circle.
    make(bandPassOf(butterworth, 2, 0.3, 0.2));
    EXPECT_EQ(filter.alpha1, 0.3);
    EXPECT_GT(largestPoleRadius(filter), 1.0);
}

}  // namespace
}  // namespace torvik::test
