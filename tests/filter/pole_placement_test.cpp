// Where poles and zeros come to lie, option by option.
#include "filter/filter_bench.h"

namespace torvik::test {
namespace {

using namespace torvik::option;

constexpr double exact = 1e-14;

void expectRoot(const Roots& roots, std::size_t index, Complex expected) {
    ASSERT_LT(index, roots.count);
    EXPECT_NEAR(roots.values[index].real(), expected.real(), exact) << index;
    EXPECT_NEAR(roots.values[index].imag(), expected.imag(), exact) << index;
}

TEST_F(FilterTest, ButterworthLowPassOfFourthOrderHasBinomialCoefficients) {
    make(lowPassOf(butterworth, 4, 0.1));
    constexpr double binomials[] = {1, 4, 6, 4, 1};
    ASSERT_EQ(filter.zPoles.count, 4U);
    ASSERT_EQ(filter.zZeros.count, 4U);
    for (std::size_t i = 0; i < 4; ++i)
        expectRoot(filter.zZeros, i, -1.0);
    for (std::size_t i = 0; i <= 4; ++i)
        EXPECT_NEAR(filter.xCoefficients[i], binomials[i] / filter.gain, exact);
}

TEST_F(FilterTest, BandPassOfOrderTwoHasFiveInputAndFourFeedbackCoefficients) {
    make(bandPassOf(butterworth, 2, 0.1, 0.2));
    EXPECT_EQ(filter.order, 4);
    ASSERT_EQ(filter.zPoles.count, 4U);
    ASSERT_EQ(filter.zZeros.count, 4U);
    EXPECT_NE(filter.xCoefficients[4], 0.0);
    EXPECT_NE(filter.yCoefficients[3], 0.0);
    EXPECT_EQ(filter.yCoefficients[4], 0.0);
}

TEST_F(FilterTest, ButterworthPolesLieEquallySpacedOnTheLeftHalfCircle) {
    make(lowPassOf(butterworth, 3, 0.25));
    ASSERT_EQ(filter.sPoles.count, 3U);
    for (std::size_t i = 0; i < 3; ++i)
        expectRoot(filter.sPoles, i, std::polar(2.0, pi * (2.0 + static_cast<double>(i)) / 3.0));
}

TEST_F(FilterTest, BesselPolesComeInConjugatePairsAfterTheRealOne) {
    make(lowPassOf(bessel, 3, 0.25));
    ASSERT_EQ(filter.sPoles.count, 3U);
    expectRoot(filter.sPoles, 0, 2.0 * -1.32267579991);
    expectRoot(filter.sPoles, 1, 2.0 * Complex(-1.04740916101, 0.999264436281));
    expectRoot(filter.sPoles, 2, 2.0 * Complex(-1.04740916101, -0.999264436281));
}

TEST_F(FilterTest, BilinearPrewarpsTheCutoff) {
    make(lowPassOf(butterworth, 1, 0.125));
    EXPECT_NEAR(filter.warpedAlpha1, std::tan(pi / 8) / pi, exact);
    EXPECT_NEAR(amplitudeAt(filter, 0.125), halfPower, exact);
}

TEST_F(FilterTest, WithoutPrewarpingTheCutoffLiesLower) {
    make({butterworth | lowPass | given | noPrewarp, 2, 0.2});
    EXPECT_EQ(filter.warpedAlpha1, 0.2);
    EXPECT_NEAR(amplitudeAt(filter, std::atan(pi * 0.2) / pi), halfPower, exact);
}

TEST_F(FilterTest, MatchedZTakesPolesToTheirExponentials) {
    make({butterworth | lowPass | given | matchedZ, 2, 0.05});
    EXPECT_EQ(filter.warpedAlpha1, 0.05);
    ASSERT_EQ(filter.zPoles.count, 2U);
    expectRoot(filter.zPoles, 0, std::exp(std::polar(2 * pi * 0.05, 0.75 * pi)));
    expectRoot(filter.zPoles, 1, std::exp(std::polar(2 * pi * 0.05, 1.25 * pi)));
}

TEST_F(FilterTest, MatchedZAddsNoZeros) {
    make({butterworth | lowPass | given | matchedZ, 2, 0.05});
    EXPECT_EQ(filter.zZeros.count, 0U);
    EXPECT_NEAR(amplitudeAt(filter, 0), 1.0, 1e-12);
}

TEST_F(FilterTest, MatchedZTakesTheZerosOfAHighPassToOne) {
    make({bessel | highPass | given | matchedZ, 3, 0.2});
    ASSERT_EQ(filter.zZeros.count, 3U);
    for (std::size_t i = 0; i < 3; ++i)
        expectRoot(filter.zZeros, i, 1.0);
}

TEST_F(FilterTest, MatchedZTakesTheZerosOfABandStopToItsCentre) {
    make({butterworth | bandStop | given | matchedZ, 1, 0.1, 0.2});
    ASSERT_EQ(filter.zZeros.count, 2U);
    const double centre = 2 * pi * std::sqrt(0.1 * 0.2);
    expectRoot(filter.zZeros, 0, std::polar(1.0, centre));
    expectRoot(filter.zZeros, 1, std::polar(1.0, -centre));
}

TEST_F(FilterTest, MatchedZAfterABilinearDesignLeavesNothingOfItInTheCoefficients) {
    make(lowPassOf(butterworth, 4, 0.1));
    make({butterworth | lowPass | given | matchedZ, 4, 0.1});
    for (std::size_t i = 1; i <= 4; ++i) {
        EXPECT_EQ(filter.xCoefficients[i], 0.0) << i;
        EXPECT_EQ(filter.rawX[i], 0.0) << i;
    }
}

TEST_F(FilterTest, AShorterDesignLeavesNothingOfALongerOneInTheCoefficients) {
    make(lowPassOf(butterworth, 4, 0.2));
    make(lowPassOf(butterworth, 2, 0.2));
    EXPECT_EQ(filter.xCoefficients[3], 0.0);
    EXPECT_EQ(filter.yCoefficients[2], 0.0);
    EXPECT_EQ(filter.rawY[3], 0.0);
}

TEST_F(FilterTest, PoleMaskKeepsTheChosenPoles) {
    make({butterworth | lowPass | given | poleMask, 4, 0.25, 0, {.poleMask = 0b0110}});
    ASSERT_EQ(filter.sPoles.count, 2U);
    expectRoot(filter.sPoles, 0, std::polar(2.0, 0.875 * pi));
    expectRoot(filter.sPoles, 1, std::polar(2.0, 1.125 * pi));
}

TEST_F(FilterTest, PoleMaskCountsTheRealBesselPoleFirst) {
    make({bessel | lowPass | given | poleMask, 3, 0.25, 0, {.poleMask = 1}});
    ASSERT_EQ(filter.sPoles.count, 1U);
    expectRoot(filter.sPoles, 0, 2.0 * -1.32267579991);
}

TEST_F(FilterTest, FullPoleMaskIsNoPoleMask) {
    make(lowPassOf(butterworth, 4, 0.2));
    const auto coefficients = filter.yCoefficients;
    make({butterworth | lowPass | given | poleMask, 4, 0.2, 0, {.poleMask = 0b1111}});
    EXPECT_EQ(filter.yCoefficients, coefficients);
}

TEST_F(FilterTest, EmptyPoleMaskLeavesTheSignalAsItIs) {
    make({butterworth | lowPass | given | poleMask, 4, 0.2});
    EXPECT_EQ(filter.zPoles.count, 0U);
    EXPECT_EQ(filter.xCoefficients[0], 1.0);
}

TEST_F(FilterTest, HalfAPairOfPolesHasNoRealCoefficients) {
    EXPECT_EQ(run(filter, {butterworth | lowPass | given | poleMask, 4, 0.2, 0, {.poleMask = 1}}),
              filter_error::complexCoefficient);
    EXPECT_EQ(messageOf(filter), "mkfilter: coeff of z^0 is not real; poles/zeros are not Complex conjugates");
    EXPECT_FALSE(filter.iirValid);
}

TEST_F(FilterTest, ExtraZerosSilenceTheirFrequency) {
    make({butterworth | lowPass | given | extraZeros, 4, 0.2, 0, {.alphaZ = 0.3}});
    ASSERT_EQ(filter.zZeros.count, 6U);
    expectRoot(filter.zZeros, 4, std::polar(1.0, 2 * pi * 0.3));
    expectRoot(filter.zZeros, 5, std::polar(1.0, -2 * pi * 0.3));
    EXPECT_NEAR(amplitudeAt(filter, 0.3), 0.0, exact);
}

TEST_F(FilterTest, ExtraZerosBringPolesAtTheOrigin) {
    make({butterworth | lowPass | given | extraZeros, 4, 0.2, 0, {.alphaZ = 0.3}});
    ASSERT_EQ(filter.zPoles.count, 6U);
    expectRoot(filter.zPoles, 4, 0.0);
    expectRoot(filter.zPoles, 5, 0.0);
    EXPECT_EQ(filter.order, 4);
}

TEST_F(FilterTest, ExtraZerosFitInBesideTwentyEight) {
    EXPECT_NE(run(filter, {butterworth | bandStop | given | extraZeros, 14, 0.1, 0.4, {.alphaZ = 0.3}}),
              filter_error::tooManyZeros);
    EXPECT_EQ(filter.zZeros.count, 30U);
}

TEST_F(FilterTest, ExtraZerosDoNotFitInBesideThirty) {
    EXPECT_EQ(run(filter, {butterworth | bandStop | given | extraZeros, 15, 0.1, 0.4, {.alphaZ = 0.3}}),
              filter_error::tooManyZeros);
    EXPECT_EQ(messageOf(filter), "mkfilter: too many zeros; can't do -Z");
    EXPECT_FALSE(filter.iirValid);
}

TEST_F(FilterTest, ChebyshevWithoutARippleIsRefused) {
    EXPECT_EQ(run(filter, lowPassOf(chebyshev, 4, 0.2)), filter_error::wrongRipple);
    EXPECT_EQ(messageOf(filter), "mkfilter: Chebyshev ripple is 0 dB; must be < 0.0");
}

TEST_F(FilterTest, ChebyshevWithAPositiveRippleIsRefused) {
    EXPECT_EQ(run(filter, {chebyshev | lowPass | given, 4, 0.2, 0, {.chebyshevRipple = 0.12345678}}),
              filter_error::wrongRipple);
    EXPECT_EQ(messageOf(filter), "mkfilter: Chebyshev ripple is 0.123457 dB; must be < 0.0");
}

TEST_F(FilterTest, ChebyshevWithAnEndlessRippleIsRefused) {
    EXPECT_EQ(run(filter, {chebyshev | lowPass | given, 4, 0.2, 0, {.chebyshevRipple = -HUGE_VAL}}),
              filter_error::chebyshevBug);
    EXPECT_EQ(messageOf(filter), "mkfilter: bug: Chebyshev y=0; must be > 0.0\n");
}

TEST_F(FilterTest, ProportionalIntegralHasAPoleAtOneAndItsZeroByTheCutoff) {
    make({proportionalIntegral | given, 1, 0.1});
    ASSERT_EQ(filter.zPoles.count, 1U);
    ASSERT_EQ(filter.zZeros.count, 1U);
    expectRoot(filter.zPoles, 0, 1.0);
    const double corner = std::tan(pi * 0.1);
    expectRoot(filter.zZeros, 0, (1.0 - corner) / (1.0 + corner));
}

TEST_F(FilterTest, ProportionalIntegralHasGainOneAtHalfTheSamplingFrequency) {
    make({proportionalIntegral | given, 1, 0.1});
    EXPECT_NEAR(amplitudeAt(filter, 0.5), 1.0, exact);
    EXPECT_NEAR(amplitudeAt(filter, 0.1), std::numbers::sqrt2, exact);
    EXPECT_EQ(filter.order, 1);
}

TEST_F(FilterTest, BandResonatorHasGainOneAndNoPhaseAtItsFrequency) {
    make(resonatorOf(bandPass, 0.1, 10));
    const std::complex<double> response = responseAt(filter, 0.1);
    EXPECT_NEAR(std::abs(response), 1.0, 1e-12);
    EXPECT_NEAR(std::arg(response), 0.0, 1e-9);
}

TEST_F(FilterTest, BandResonatorHasItsQFactor) {
    make(resonatorOf(bandPass, 0.1, 50));
    EXPECT_NEAR(largestPoleRadius(filter), std::exp(-2 * pi * 0.1 / 100), exact);
    EXPECT_NEAR(amplitudeAt(filter, 0.1 * (1 + 0.5 / 50)), halfPower, 0.01);
    expectRoot(filter.zZeros, 0, 1.0);
    expectRoot(filter.zZeros, 1, -1.0);
}

TEST_F(FilterTest, StopResonatorSilencesItsFrequency) {
    make(resonatorOf(bandStop, 0.1, 10));
    expectRoot(filter.zZeros, 0, std::polar(1.0, 2 * pi * 0.1));
    expectRoot(filter.zZeros, 1, std::polar(1.0, -2 * pi * 0.1));
    EXPECT_NEAR(amplitudeAt(filter, 0.1), 0.0, exact);
    EXPECT_NEAR(amplitudeAt(filter, 0) * amplitudeAt(filter, 0.5), 1.0, 1e-12);
}

TEST_F(FilterTest, AllPassResonatorPassesEveryFrequency) {
    make(resonatorOf(allPass, 0.1, 10));
    for (double alpha = 0; alpha <= 0.5; alpha += 0.01)
        EXPECT_NEAR(amplitudeAt(filter, alpha), 1.0, 1e-11) << alpha;
}

TEST_F(FilterTest, AllPassResonatorReflectsItsPolesInTheCircle) {
    make(resonatorOf(allPass, 0.1, 10));
    for (std::size_t i = 0; i < 2; ++i)
        expectRoot(filter.zZeros, i, 1.0 / std::conj(filter.zPoles.values[i]));
}

TEST_F(FilterTest, ResonatorWithoutAFrequencyDoesNotConverge) {
    EXPECT_EQ(run(filter, resonatorOf(bandPass, NAN, 10)), filter_error::notConverged);
    EXPECT_EQ(messageOf(filter), "mkfilter: warning: failed to converge");
    EXPECT_FALSE(filter.iirValid);
}

}  // namespace
}  // namespace torvik::test
