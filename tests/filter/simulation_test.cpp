// The two arithmetics of the simulation against hand-computed values and the plain form of their recurrences.
#include "filter/simulation.h"

#include <array>
#include <span>
#include <vector>

#include "filter/filter_bench.h"

namespace torvik::test {
namespace {

using namespace torvik::option;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr std::uint32_t iirKind = 0;
constexpr double fs = 1000;
constexpr std::int32_t highest = 8388607;
constexpr std::int32_t lowest = -8388608;
constexpr double fullScale = 8388607.0;

// The recurrence as it is usually written down: histories that are shifted by one place for every sample.
std::vector<float> plainFloat(const Dfilter& filter, std::span<const float> inputs) {
    const auto taps = static_cast<std::size_t>(filter.order);
    std::array<float, 16> xHistory{};
    std::array<float, 16> yHistory{};
    std::vector<float> outputs;
    for (const float input : inputs) {
        for (std::size_t k = 1; k <= taps; ++k) {
            xHistory[k - 1] = xHistory[k];
            yHistory[k - 1] = yHistory[k];
        }
        xHistory[taps] = input;
        float out = 0;
        for (std::size_t k = 0; k <= taps; ++k)
            out += xHistory[k] * static_cast<float>(filter.rawX[k] / filter.gain);
        for (std::size_t k = 0; k < taps; ++k)
            out += yHistory[k] * static_cast<float>(filter.rawY[k]);
        yHistory[taps] = out;
        outputs.push_back(out);
    }
    return outputs;
}

std::vector<std::int32_t> plainFixed(const Dfilter& filter, std::span<const std::int32_t> inputs) {
    const auto fixed = [](double c) { return std::int64_t{static_cast<std::int32_t>(c * 16777216.0)}; };
    const auto taps = static_cast<std::size_t>(filter.order);
    // Oldest first.
    std::vector<std::int64_t> xHistory(taps);
    std::vector<std::int64_t> yHistory(taps);
    std::vector<std::int32_t> outputs;
    for (const std::int64_t input : inputs) {
        std::int64_t sum = 0;
        for (std::size_t j = 0; j < taps; ++j) {
            sum += (xHistory[j] * fixed(filter.rawX[j] / filter.gain)) >> 16;
            sum += (yHistory[j] * fixed(filter.rawY[j])) >> 16;
        }
        sum += (input * fixed(filter.rawX[taps] / filter.gain)) >> 16;
        std::int64_t out = sum >> 8;
        if (out > highest || out < lowest) {
            out = input;
            yHistory = xHistory;
        }
        xHistory.erase(xHistory.begin());
        xHistory.push_back(input);
        yHistory.erase(yHistory.begin());
        yHistory.push_back(out);
        outputs.push_back(static_cast<std::int32_t>(out));
    }
    return outputs;
}

class Simulation : public FilterTest {
  protected:
    std::span<const float> floatInputs() const { return std::span(filter.floatSamples).first(1000); }
    std::span<const float> floatOutputs() const { return std::span(filter.floatSamples).last(1000); }
    std::span<const std::int32_t> fixedInputs() const { return std::span(filter.fixedSamples).first(1000); }
    std::span<const std::int32_t> fixedOutputs() const { return std::span(filter.fixedSamples).last(1000); }

    void step(std::int32_t taps, double before = 0, double after = 1, std::uint32_t kind = iirKind) {
        filter.stepLevelBefore = before;
        filter.stepLevelAfter = after;
        runFilter(filter, kind, taps, TestSignal::step, fs, 0);
    }
    void sine(std::int32_t taps, double f) { runFilter(filter, iirKind, taps, TestSignal::sine, fs, f); }

    // A recurrence without a design.
    void fill(std::initializer_list<double> x, std::initializer_list<double> y, double gain = 1) {
        filter.gain = gain;
        std::ranges::copy(x, filter.rawX.begin());
        std::ranges::copy(y, filter.rawY.begin());
    }
};

class FloatSimulation : public Simulation {
  protected:
    void SetUp() override { filter.floatSimulation = true; }
};

class FixedSimulation : public Simulation {
  protected:
    void SetUp() override { filter.floatSimulation = false; }
};

const Design& kindOf(std::size_t i) {
    static const Design designs[] = {lowPassOf(butterworth, 4, 0.1), highPassOf(bessel, 4, 0.3),
                                     bandPassOf(butterworth, 2, 0.1, 0.2), bandStopOf(bessel, 2, 0.15, 0.3)};
    return designs[i];
}

TEST_F(FloatSimulation, MakesTheSameSineOfHalfTheSamplingFrequencyOnEverySystem) {
    // Rounding errors of the phase alone, each with all its digits.
    sine(0, fs / 2);
    EXPECT_EQ(floatInputs()[249], 0x1.29caa6c9ebb36p-39F);
    EXPECT_EQ(floatInputs()[499], -0x1.075cc91c537a8p-36F);
    EXPECT_EQ(floatInputs()[749], -0x1.47f2e711e46b7p-36F);
    EXPECT_EQ(floatInputs()[999], 0x1.b6edf5f115473p-37F);
}

TEST_F(FloatSimulation, FollowsThePlainRecurrenceForSteps) {
    for (std::size_t i = 0; i < 4; ++i) {
        make(kindOf(i));
        step(filter.order);
        EXPECT_THAT(floatOutputs(), ElementsAreArray(plainFloat(filter, floatInputs())));
    }
}

TEST_F(FloatSimulation, FollowsThePlainRecurrenceForSines) {
    for (std::size_t i = 0; i < 4; ++i) {
        make(kindOf(i));
        sine(filter.order, 123.4);
        EXPECT_THAT(floatOutputs(), ElementsAreArray(plainFloat(filter, floatInputs())));
    }
}

TEST_F(FloatSimulation, StepsAreOneFromTheFirstSampleWhateverTheLevels) {
    step(1, -3, 0.25);
    EXPECT_THAT(floatInputs(), Each(1.0F));
}

TEST_F(FloatSimulation, SinesAccumulateTheirPhase) {
    sine(1, 77.7);
    double phase = 0;
    for (const float input : floatInputs()) {
        ASSERT_EQ(input, static_cast<float>(std::sin(phase)));
        phase += 2 * pi * 77.7 / fs;
    }
}

TEST_F(FloatSimulation, AveragesTwoSamplesAtAQuarterOfTheSamplingFrequency) {
    make(lowPassOf(butterworth, 1, 0.25));
    step(filter.order);
    EXPECT_NEAR(floatOutputs()[0], 0.5, 1e-7);
    EXPECT_NEAR(floatOutputs()[1], 1.0, 1e-7);
    EXPECT_NEAR(floatOutputs()[999], 1.0, 1e-6);
}

TEST_F(FloatSimulation, GivesTheHighestCoefficientToTheNewestSample) {
    fill({8, 4, 2}, {});
    step(2);
    EXPECT_THAT(floatOutputs().first(4), ElementsAre(2.0F, 6.0F, 14.0F, 14.0F));
}

TEST_F(FloatSimulation, GivesTheHighestFeedbackCoefficientToTheSampleBefore) {
    fill({0, 0, 1}, {0.25, 0.5});
    step(2);
    EXPECT_THAT(floatOutputs().first(4), ElementsAre(1.0F, 1.5F, 2.0F, 2.375F));
}

TEST_F(FloatSimulation, StartsEveryRunWithEmptyHistories) {
    make(kindOf(0));
    step(filter.order);
    const std::vector<float> first(floatOutputs().begin(), floatOutputs().end());
    sine(filter.order, 50);
    step(filter.order);
    EXPECT_THAT(floatOutputs(), ElementsAreArray(first));
}

TEST_F(FloatSimulation, RunsTheRecurrenceForFirFiltersToo) {
    fill({0, 0.5}, {});
    filter.firCoefficients.fill(7);
    step(1, 0, 1, firKind);
    EXPECT_THAT(floatOutputs(), Each(0.5F));
}

TEST_F(FloatSimulation, AnyKind_IsScaledByTheGainOfTheDesign) {
    for (const std::uint32_t kind : {lowPass, highPass, bandPass, bandStop}) {
        filter.options = kind;
        fill({0, 6}, {}, 4);
        step(1);
        EXPECT_EQ(floatOutputs()[0], 1.5F);
    }
}

TEST_F(FloatSimulation, WithoutTapsIsAFactor) {
    fill({0.5}, {});
    step(0);
    EXPECT_THAT(floatOutputs(), Each(0.5F));
}

TEST_F(FixedSimulation, FollowsThePlainRecurrenceForSteps) {
    for (std::size_t i = 0; i < 4; ++i) {
        make(kindOf(i));
        step(filter.order, 0.25, -0.5);
        EXPECT_THAT(fixedOutputs(), ElementsAreArray(plainFixed(filter, fixedInputs())));
    }
}

TEST_F(FixedSimulation, FollowsThePlainRecurrenceForSines) {
    for (std::size_t i = 0; i < 4; ++i) {
        make(kindOf(i));
        sine(filter.order, 123.4);
        EXPECT_THAT(fixedOutputs(), ElementsAreArray(plainFixed(filter, fixedInputs())));
    }
}

TEST_F(FixedSimulation, FollowsThePlainRecurrenceThroughOverflows) {
    make(kindOf(0));
    step(filter.order, -1, 1);
    const std::vector<std::int32_t> expected = plainFixed(filter, fixedInputs());
    EXPECT_THAT(fixedOutputs(), ElementsAreArray(expected));
    // The step overshoots: where it would have, its input stands instead.
    EXPECT_EQ(std::ranges::max(expected), highest);
}

TEST_F(FixedSimulation, StepsAfterTenSamples) {
    step(1, 0.25, -0.5);
    EXPECT_THAT(fixedInputs().first(10), Each(static_cast<std::int32_t>(0.25 * fullScale)));
    EXPECT_THAT(fixedInputs().subspan(10), Each(static_cast<std::int32_t>(-0.5 * fullScale)));
}

TEST_F(FixedSimulation, TruncatesStepLevelsTowardZero) {
    step(1, 0.5, -0.5);
    EXPECT_EQ(fixedInputs()[0], 4194303);
    EXPECT_EQ(fixedInputs()[10], -4194303);
}

TEST_F(FixedSimulation, SinesStayBelowFullScale) {
    sine(1, 250);
    EXPECT_THAT(fixedInputs().first(2), ElementsAre(0, 7989150));
    EXPECT_EQ(fixedInputs()[3], -7989150);
}

TEST_F(FixedSimulation, SinesAccumulateTheirPhase) {
    sine(1, 77.7);
    double phase = 0;
    for (const std::int32_t input : fixedInputs()) {
        ASSERT_EQ(input, static_cast<std::int32_t>(std::sin(phase) * 7989150.0));
        phase += 2 * pi * 77.7 / fs;
    }
}

TEST_F(FixedSimulation, RoundsProductsDown) {
    fill({0, 0.5}, {});
    step(1, 0.5, -0.5);
    EXPECT_EQ(fixedOutputs()[0], 2097151);    // of 2097151.5
    EXPECT_EQ(fixedOutputs()[10], -2097152);  // of -2097151.5
}

TEST_F(FixedSimulation, TruncatesCoefficientsTowardZero) {
    fill({0, -1.9 / 16777216}, {});
    step(1, 1, 1);
    // -1 of 2^24, times 8388607: -0.49999994 rounded down at each of two shifts.
    EXPECT_EQ(fixedOutputs()[0], -1);
    fill({0, 0.9 / 16777216}, {});
    step(1, 1, 1);
    EXPECT_EQ(fixedOutputs()[0], 0);
}

TEST_F(FixedSimulation, GivesTheHighestCoefficientToTheNewestSample) {
    fill({0.5, 0.25, 0.125}, {});
    step(2, 0, 0.5);
    EXPECT_THAT(fixedOutputs().subspan(9, 5), ElementsAre(0, 524287, 1572863, 3670015, 3670015));
}

TEST_F(FixedSimulation, GivesTheHighestFeedbackCoefficientToTheSampleBefore) {
    fill({0, 0, 0.5}, {0.125, 0.25});
    step(2, 0, 0.5);
    EXPECT_THAT(fixedOutputs().subspan(9, 4), ElementsAre(0, 2097151, 2621439, 3014655));
}

TEST_F(FixedSimulation, PassesTheInputOnWhenTheOutputOverflows) {
    fill({0, 2}, {});
    step(1, 0.4, 0.6);
    const auto before = static_cast<std::int32_t>(0.4 * fullScale);
    EXPECT_EQ(fixedOutputs()[9], 2 * before);
    EXPECT_EQ(fixedOutputs()[10], static_cast<std::int32_t>(0.6 * fullScale));
}

TEST_F(FixedSimulation, PassesTheInputOnWhenTheOutputUnderflows) {
    fill({0, 2}, {});
    step(1, 0.4, -0.6);
    EXPECT_EQ(fixedOutputs()[10], static_cast<std::int32_t>(-0.6 * fullScale));
}

TEST_F(FixedSimulation, TakesItsInputsForItsOutputsAfterAnOverflow) {
    // Without feedback of its own past the output is 3 of the input, and one before last counts a half.
    fill({0, 0, 3}, {-4, 0});
    step(2, 0, 0.3);
    const std::int32_t level = fixedInputs()[10];
    // Samples 10 and 11 give 3 * 0.3. Sample 12 is short of nothing: 3 * 0.3 - 4 * 0.9 falls below the lowest.
    EXPECT_NEAR(fixedOutputs()[11], 3 * level, 2);
    EXPECT_EQ(fixedOutputs()[12], level);
    // One sample later the output before last is an input, not 3 * 0.3: no overflow.
    EXPECT_NEAR(fixedOutputs()[13], 3 * level - 4 * level, 4);
}

TEST_F(FixedSimulation, KeepsTheLargestAndTheSmallestOutput) {
    // 47 * 178481 is the largest, 2 * -4194304 the smallest.
    fill({0, 47}, {});
    step(1, 178481.5 / fullScale, 0);
    EXPECT_EQ(fixedOutputs()[0], highest);
    fill({0, 2}, {});
    step(1, -4194304.5 / fullScale, 0);
    EXPECT_EQ(fixedOutputs()[0], lowest);
}

TEST_F(FixedSimulation, WithoutAGainLeavesTheCoefficientsAsTheyAre) {
    fill({0, 0.5}, {}, 0);
    step(1, 0.5, 0.5);
    EXPECT_EQ(fixedOutputs()[0], 2097151);
}

class FirSimulation : public FixedSimulation {
  protected:
    void fillFir(std::initializer_list<double> coefficients) {
        std::ranges::copy(coefficients, filter.firCoefficients.begin());
    }
    void firStep(std::int32_t taps, double before, double after) { step(taps, before, after, firKind); }
};

TEST_F(FirSimulation, GivesTheHighestCoefficientToTheNewestSample) {
    fillFir({0.5, 0.25, 0.125});
    firStep(3, 0, 0.5);
    EXPECT_THAT(fixedOutputs().subspan(9, 5), ElementsAre(0, 524287, 1572863, 3670015, 3670015));
}

TEST_F(FirSimulation, DoesNotSaturate) {
    fillFir({2, 2});
    firStep(2, 1, 1);
    EXPECT_EQ(fixedOutputs()[999], 4 * highest);
}

TEST_F(FirSimulation, WithOneTapIsAFactor) {
    fillFir({0.25});
    firStep(1, 1, 1);
    EXPECT_THAT(fixedOutputs(), Each(2097151));
}

TEST_F(FirSimulation, TakesTwentySixTaps) {
    filter.firCoefficients.fill(1.0 / 32);
    firStep(26, 0, 1);
    // 26 products, each rounded down to 1/256, and all together once more.
    EXPECT_EQ(fixedOutputs()[9 + 26], fixedOutputs()[999]);
    EXPECT_LT(fixedOutputs()[9 + 25], fixedOutputs()[9 + 26]);
    EXPECT_NEAR(fixedOutputs()[999], 26.0 / 32 * fullScale, 1);
}

TEST_F(FirSimulation, CutsWhatIsBeyondTheArray) {
    filter.firCoefficients.fill(1.0 / 32);
    firStep(1000, 0, 1);
    EXPECT_NEAR(fixedOutputs()[999], 26.0 / 32 * fullScale, 1);
}

TEST_F(Simulation, CutsOrdersBeyondTheArrays) {
    for (const bool floatSimulation : {true, false}) {
        filter.floatSimulation = floatSimulation;
        filter.gain = 1;
        filter.rawX[30] = 0.5;
        step(1000, 0.5, 0.5);
        step(-1, 0.5, 0.5);
    }
    EXPECT_THAT(floatOutputs(), Each(0.0F));
}

TEST(RootMeanSquare, OfFloatsIsAFloat) {
    std::array<float, 500> samples{};
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = i % 2 == 0 ? 1.0F : -2.0F;
    EXPECT_EQ(rootMeanSquare(std::span<const float, 500>(samples)), static_cast<float>(std::sqrt(2.5)));
}

TEST(RootMeanSquare, OfIntegersIsTruncated) {
    std::array<std::int32_t, 500> samples{};
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = i % 2 == 0 ? 1 : -2;
    EXPECT_EQ(rootMeanSquare(std::span<const std::int32_t, 500>(samples)), 1);
}

TEST(RootMeanSquare, OfTheLargestIntegersDoesNotOverflow) {
    std::array<std::int32_t, 500> samples{};
    samples.fill(highest);
    EXPECT_NEAR(rootMeanSquare(std::span<const std::int32_t, 500>(samples)), highest, 1);
}

}  // namespace
}  // namespace torvik::test
