#include "filters/filter_analysis.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "failure.h"
#include "filters/filter_page.h"
#include "filters/filter_plot.h"

namespace torvik::tool {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr double fs = 1000;

FilterDesign designed(FilterKind kind, Characteristic characteristic, double f1, double f2 = 0,
                      std::uint32_t protocolKind = 16) {
    return designRequest({kind, characteristic, f1, f2}, fs, protocolKind);
}

FilterDesign lowPass(double cutoff) {
    return designed(FilterKind::lowPass, Characteristic::butterworth, cutoff);
}

std::uint32_t codeOfDesign(double cutoff) {
    try {
        lowPass(cutoff);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode, ExitCode::usage);
        return failure.error ? failure.error->code : 0;
    }
    return 0;
}

TEST(FilterAnalysis, HalfPowerLiesAtTheCutoffsOfAButterworthFilter) {
    const auto low = lowPass(100);
    EXPECT_THAT(halfPowerFrequencies(idealResponse(low), low), ElementsAre(DoubleNear(100, 1e-8)));
    const auto high = designed(FilterKind::highPass, Characteristic::butterworth, 250);
    EXPECT_THAT(halfPowerFrequencies(idealResponse(high), high), ElementsAre(DoubleNear(250, 1e-8)));
    const auto band = designed(FilterKind::bandPass, Characteristic::butterworth, 100, 110);
    EXPECT_THAT(halfPowerFrequencies(idealResponse(band), band),
                ElementsAre(DoubleNear(100, 1e-2), DoubleNear(110, 1e-2)));
    const auto stop = designed(FilterKind::bandStop, Characteristic::butterworth, 40, 60);
    EXPECT_THAT(halfPowerFrequencies(idealResponse(stop), stop),
                ElementsAre(DoubleNear(40, 1e-8), DoubleNear(60, 1e-8)));
}

TEST(FilterAnalysis, PolesAndCoefficientsGiveTheSameResponse) {
    for (const FilterKind kind :
         {FilterKind::lowPass, FilterKind::highPass, FilterKind::bandPass, FilterKind::bandStop}) {
        const auto design = designed(kind, Characteristic::bessel, 100, 200);
        const auto ideal = idealResponse(design);
        const auto recurrence = recurrenceResponse(design.designed, fs);
        for (double frequency = 7; frequency < 500; frequency += 31)
            EXPECT_NEAR(std::abs(ideal(frequency)), std::abs(recurrence(frequency)), 1e-9) << frequency;
    }
}

TEST(FilterAnalysis, BandStopAtAnEnd_AtTheReferenceFrequency_HasGainOne) {
    for (const auto& [f1, f2] : {std::pair(100.0, 500.0), std::pair(1e-6, 2e-6), std::pair(1e-30, 2e-30)}) {
        const auto design = designed(FilterKind::bandStop, Characteristic::butterworth, f1, f2);
        EXPECT_NEAR(std::abs(idealResponse(design)(referenceFrequency(design))), 1.0, 1e-9) << f1;
        EXPECT_NEAR(std::abs(recurrenceResponse(design.held, fs)(referenceFrequency(design))), 1.0, 1e-5) << f1;
    }
}

TEST(FilterAnalysis, GainIsOneAtTheReferenceFrequency) {
    for (const FilterKind kind :
         {FilterKind::lowPass, FilterKind::highPass, FilterKind::bandPass, FilterKind::bandStop}) {
        const auto design = designed(kind, Characteristic::butterworth, 100, 200);
        EXPECT_NEAR(std::abs(idealResponse(design)(referenceFrequency(design))), 1.0, 1e-9);
    }
}

TEST(FilterAnalysis, DelayIsTheSlopeOfThePhase) {
    const auto design = designed(FilterKind::lowPass, Characteristic::bessel, 50);
    const auto response = idealResponse(design);
    const double step = 1e-3;
    const double slope = std::arg(response(step)) / (2 * std::numbers::pi * step);
    EXPECT_NEAR(groupDelay(design, 0), -slope * fs, 1e-5);
}

TEST(FilterAnalysis, ThePrototypeSumTellsTheDelayOfAButterworthLowPass) {
    // Fourth order: the sum of 2 sin((2k - 1) pi / 8) over the prewarped cut-off, 2 fs tan(pi f / fs).
    const double sum = 2 * (std::sin(std::numbers::pi / 8) + std::sin(3 * std::numbers::pi / 8));
    const double expected = sum / (2 * std::tan(std::numbers::pi * 50 / fs));
    EXPECT_NEAR(groupDelay(lowPass(50), 0), expected, 1e-6);
}

TEST(FilterAnalysis, AStepEndsWhereTheGainSays) {
    const auto low = stepResponse(lowPass(50).designed, 2000);
    EXPECT_NEAR(low.back(), 1.0, 1e-9);
    EXPECT_LT(low.front(), 0.01);
    EXPECT_GT(*std::ranges::max_element(low), 1.05);  // a Butterworth filter overshoots
    const auto high = stepResponse(designed(FilterKind::highPass, Characteristic::butterworth, 50).designed, 2000);
    EXPECT_NEAR(high.back(), 0.0, 1e-9);
}

TEST(FilterAnalysis, SettlingEndsWhereTheStepStaysWithinOnePerCent) {
    const auto design = lowPass(50);
    const std::size_t settled = settlingSamples(design.designed, 1000);
    const auto output = stepResponse(design.designed, 1000);
    ASSERT_GT(settled, 0U);
    EXPECT_GT(std::abs(output[settled - 1] - 1.0), 0.01);
    for (std::size_t t = settled; t < output.size(); ++t)
        EXPECT_LE(std::abs(output[t] - 1.0), 0.01);
}

TEST(FilterAnalysis, StabilityIsToldFromTheCoefficientsAlone) {
    EXPECT_TRUE(isStable(Recurrence{}));
    EXPECT_TRUE(isStable({.x = {}, .y = {0, 0, 0, 0.999}}));
    EXPECT_FALSE(isStable({.x = {}, .y = {0, 0, 0, 1.001}}));
    // (z - 0.5)(z - 0.5)(z - 0.9)(z - 1.1): a product below 1 and one pole outside.
    EXPECT_FALSE(isStable({.x = {}, .y = {-0.2475, 1.49, -3.24, 3.0}}));
    EXPECT_FALSE(isStable({.x = {}, .y = {std::numeric_limits<double>::quiet_NaN()}}));
    EXPECT_TRUE(isStable(lowPass(100).designed));
}

TEST(FilterAnalysis, DevicesHoldCoefficientsInTheirNumberFormat) {
    EXPECT_EQ(heldCoefficient(0.1, 16), static_cast<double>(0.1F));
    EXPECT_EQ(heldCoefficient(0.1, 32), 1677722 / 16777216.0);
    EXPECT_EQ(heldCoefficient(-0.1, 32), -1677722 / 16777216.0);
    EXPECT_EQ(heldCoefficient(500, 32), 0x7FFFFFFF / 16777216.0);
    EXPECT_EQ(heldCoefficient(std::numeric_limits<double>::quiet_NaN(), 32), 0x7FFFFFFF / 16777216.0);
}

TEST(FilterAnalysis, ImpossibleCutoffsAreRefusedWithTheDesignersCode) {
    EXPECT_EQ(codeOfDesign(0.01), 0x30000209U);
    EXPECT_EQ(codeOfDesign(100), 0U);
}

TEST(FilterAnalysis, CutoffsOutsideTheBandAreRefusedForLyingThere) {
    for (const double cutoff : {0.0, -5.0, fs, std::numeric_limits<double>::quiet_NaN()}) {
        try {
            lowPass(cutoff);
            ADD_FAILURE() << cutoff << " gave a design";
        } catch (const Failure& failure) {
            EXPECT_FALSE(failure.error) << "its meaning would be another";
            EXPECT_THAT(failure.reason, HasSubstr("does not lie between 0 and half the sampling frequency, 500 Hz"));
        }
    }
}

TEST(FilterAnalysis, UnstableDesignsAreWarnedOf) {
    EXPECT_THAT(designWarnings(lowPass(100)), IsEmpty());
    EXPECT_THAT(designWarnings(lowPass(900)), testing::Contains(HasSubstr("a pole does not lie inside")));
    const auto lowHighPass = designed(FilterKind::highPass, Characteristic::butterworth, 0.01);
    EXPECT_TRUE(polesAreInside(lowHighPass));
    EXPECT_THAT(designWarnings(lowHighPass), testing::Contains(HasSubstr("unstable in the device")));
}

TEST(FilterPlot, Picture_IsTheFirstArgument) {
    const std::string script = plotScript(lowPass(100), PictureFormat::svg);
    EXPECT_THAT(script, HasSubstr("\nif (ARGC > 0) set output ARG1\n"));
    EXPECT_THAT(script, Not(HasSubstr("\nset output")));
}

TEST(FilterPlot, NumbersOfTheDrawingAreThoseOfTheResponse) {
    const auto design = lowPass(100);
    const std::string script = plotScript(design, PictureFormat::png);
    EXPECT_THAT(script, HasSubstr("set terminal png"));
    const std::size_t at = script.find("\n100 ");
    ASSERT_NE(at, std::string::npos);
    const std::size_t inFrequencies = script.find("\n100 ", script.find("$frequency"));
    ASSERT_NE(inFrequencies, std::string::npos);
    EXPECT_THAT(script.substr(inFrequencies, 12), HasSubstr("100 -3.0102"));
}

}  // namespace
}  // namespace torvik::tool
