#include <cmath>
#include <numbers>
#include <span>
#include <string>

#include "filter_bytes.hpp"

namespace virtual_test {
namespace {

const std::string kOneChannel = "channels = 1\nvalue_type = 'float32'\nunit = 'counts'\n";

void load(std::uint8_t number, std::uint8_t type, std::span<const float> x, std::span<const float> y = {}) {
    ASSERT_EQ(ask({0x4C, number, type}), kAcknowledged);
    for (std::uint8_t i = 0; i < x.size(); ++i)
        ASSERT_EQ(askWithFloat({0x50, number, static_cast<std::uint8_t>(i | (type & kFir))}, x[i]), kAcknowledged);
    for (std::uint8_t i = 0; i < y.size(); ++i)
        ASSERT_EQ(askWithFloat({0x50, number, static_cast<std::uint8_t>(i | kOutput)}, y[i]), kAcknowledged);
}

void switchOn(std::uint32_t mask) {
    ASSERT_EQ(askWithNumber({0x52}, mask), kAcknowledged);
}

// An output of its own input and half its own past.
void loadDecay(std::uint8_t number) {
    load(number, 1, std::array{0.0F, 1.0F}, std::array{0.5F});
}

// A channel that constantly streams 100.
class FilteredStream : public QuickAmplifier {
  protected:
    void SetUp() override {
        QuickAmplifier::SetUp();
        configure(kOneChannel + "[[amplifier.signal]]\noffset = 100\n");
    }
};

TEST_F(FilteredStream, FilterThatWasNotLoadedChangesNothing) {
    switchOn(0xFFFF);
    EXPECT_EQ(nextValues(2), (std::vector{100.0F, 100.0F}));
}

TEST_F(FilteredStream, FilterThatIsOffChangesNothing) {
    loadDecay(1);
    EXPECT_EQ(nextValues(2), (std::vector{100.0F, 100.0F}));
}

TEST_F(FilteredStream, CoefficientsOfTheInputsStandOldestFirst) {
    load(1, 2, std::array{0.125F, 0.25F, 0.5F});
    switchOn(1);
    EXPECT_EQ(nextValues(4), (std::vector{50.0F, 75.0F, 87.5F, 87.5F}));
}

TEST_F(FilteredStream, CoefficientsOfTheOutputsStandOldestFirst) {
    load(1, 2, std::array{0.0F, 0.0F, 1.0F}, std::array{0.25F, 0.5F});
    switchOn(1);
    EXPECT_EQ(nextValues(4), (std::vector{100.0F, 150.0F, 200.0F, 237.5F}));
}

TEST_F(FilteredStream, FilterWithFiniteResponseUsesItsInputsAlone) {
    load(8, 0x82, std::array{0.25F, 0.0F, 0.5F});
    switchOn(0x8000);
    EXPECT_EQ(nextValues(4), (std::vector{50.0F, 50.0F, 75.0F, 75.0F}));
}

TEST_F(FilteredStream, FiltersStandOneBehindTheOther) {
    loadDecay(1);
    load(2, 0, std::array{3.0F});
    load(1, 0x81, std::array{-1.0F, 1.0F});
    switchOn(0x0103);
    EXPECT_EQ(nextValues(3), (std::vector{300.0F, 150.0F, 75.0F}));
}

TEST_F(FilteredStream, ChannelsDoNotMix) {
    configure(
        "channels = 2\nvalue_type = 'float32'\nunit = 'counts'\n"
        "[[amplifier.signal]]\noffset = 100\n[[amplifier.signal]]\noffset = -8\n");
    loadDecay(1);
    switchOn(1);
    EXPECT_EQ(nextValues(2), (std::vector{100.0F, -8.0F, 150.0F, -12.0F}));
}

TEST_F(FilteredStream, FilterForgetsItsPastWhenItIsSwitchedOn) {
    loadDecay(1);
    switchOn(1);
    EXPECT_EQ(nextValues(2), (std::vector{100.0F, 150.0F}));
    switchOn(0);
    switchOn(1);
    EXPECT_EQ(nextValues(2), (std::vector{100.0F, 150.0F}));
}

TEST_F(FilteredStream, FilterForgetsItsPastWhenItIsLoaded) {
    loadDecay(1);
    switchOn(1);
    EXPECT_EQ(nextValues(2), (std::vector{100.0F, 150.0F}));
    ASSERT_EQ(askWithFloat({0x50, 1, kOutput}, 0.25F), kAcknowledged);
    EXPECT_EQ(nextValues(2), (std::vector{100.0F, 125.0F}));
}

TEST_F(FilteredStream, FilterForgetsItsPastWithAReset) {
    loadDecay(1);
    switchOn(1);
    ASSERT_EQ(ask({0x7E, 0, 0}), kAcknowledged);
    EXPECT_EQ(nextValues(2), (std::vector{100.0F, 150.0F}));
    restart();
    EXPECT_EQ(nextValues(2), (std::vector{100.0F, 150.0F}));
}

TEST_F(FilteredStream, OtherSettingsLeaveAFiltersPastAlone) {
    loadDecay(1);
    switchOn(1);
    EXPECT_EQ(nextValues(2), (std::vector{100.0F, 150.0F}));
    ASSERT_EQ(askWithFloat({0x15, 1}, 2), kAcknowledged) << "user scale";
    loadDecay(2);
    EXPECT_EQ(nextValues(2), (std::vector{350.0F, 375.0F}));
}

TEST_F(FilteredStream, ZeroScaleAndOffsetFollowTheFilters) {
    load(1, 0, std::array{2.0F});
    switchOn(1);
    ASSERT_EQ(ask({0x0C, 1}), kAcknowledged);
    EXPECT_EQ(ask({0x02, 1}), toldNumber(200));
    ASSERT_EQ(askWithFloat({0x9B, 1}, 3), kAcknowledged);
    EXPECT_EQ(nextValues(1), (std::vector{3.0F}));
}

TEST_F(FilteredStream, RawValueIsTheNextFilteredOneAndLeavesTheFilterAlone) {
    loadDecay(1);
    switchOn(1);
    EXPECT_EQ(nextValues(1), (std::vector{100.0F}));
    EXPECT_EQ(ask({0x3A, 1}), toldFloat(150));
    EXPECT_EQ(ask({0x3A, 1}), toldFloat(150));
    EXPECT_EQ(nextValues(1), (std::vector{150.0F}));
}

TEST_F(FilteredStream, ControlFunctionTellsTheValueWithoutFilters) {
    loadDecay(1);
    switchOn(1);
    double value = 0;
    ASSERT_EQ(virtualValue(0, 0, 1, &value), 0);
    EXPECT_EQ(value, 100.0);
}

TEST_F(FilteredStream, FilterThatRunsAwayEndsInOverloads) {
    load(1, 1, std::array{0.0F, 1.0F}, std::array{-1e30F});
    switchOn(1);
    virtualSendSets(0, 40);
    const auto frames = drain();
    ASSERT_EQ(frames.size(), 40U);
    EXPECT_EQ(frames.front().data[1], 0x30);
    EXPECT_EQ(frames.back().data[1], 0x31);
}

// A Butterworth low pass of order 4 that cuts off at a tenth of the sampling frequency, in either protocol kind.
class LowPass : public QuickAmplifier, public testing::WithParamInterface<int> {
  protected:
    static constexpr double kCutoff = 0.1;
    static constexpr std::array kX{0.004824343357716231, 0.019297373430864923, 0.028946060146297387,
                                   0.019297373430864923, 0.004824343357716231};
    static constexpr std::array kY{-0.18737949236818488, 1.0546654058785676, -2.31398841441588, 2.3695130071820376};

    static std::uint32_t wordOf(double coefficient) {
        if (GetParam() == 16) return std::bit_cast<std::uint32_t>(static_cast<float>(coefficient));
        const auto magnitude = static_cast<std::uint32_t>(std::lround(std::abs(coefficient) * kOne));
        return magnitude | (coefficient < 0 ? kNegative : 0U);
    }
    static void loadLowPass() {
        ASSERT_EQ(ask({0x4C, 1, 4}), kAcknowledged);
        for (std::uint8_t i = 0; i < kX.size(); ++i)
            ASSERT_EQ(askWithNumber({0x50, 1, i}, wordOf(kX[i])), kAcknowledged);
        for (std::uint8_t i = 0; i < kY.size(); ++i)
            ASSERT_EQ(askWithNumber({0x50, 1, static_cast<std::uint8_t>(kOutput | i)}, wordOf(kY[i])), kAcknowledged);
        switchOn(1);
    }
    // The amplitude of a sine that fits the values without a rest.
    static double amplitude(std::span<const float> values, double frequency) {
        double sine = 0;
        double cosine = 0;
        for (std::size_t i = 0; i < values.size(); ++i) {
            const double angle = 2 * std::numbers::pi * frequency * static_cast<double>(i);
            sine += values[i] * std::sin(angle);
            cosine += values[i] * std::cos(angle);
        }
        return std::hypot(sine, cosine) * 2 / static_cast<double>(values.size());
    }
};

TEST_P(LowPass, StreamedSineHasTheDesignedAmplitude) {
    for (const int hertz : {10, 50, 90, 100, 120, 200, 300}) {
        configure(kOneChannel + "frequency = 1000\nprotocol = " + std::to_string(GetParam()) +
                  "\n[[amplifier.signal]]\nwave = 'sine'\namplitude = 1000\nfrequency = " + std::to_string(hertz) +
                  "\n");
        loadLowPass();
        const auto values = nextValues(1500);
        ASSERT_EQ(values.size(), 1500U);
        const double frequency = hertz / 1000.0;
        const double ratio = std::tan(std::numbers::pi * frequency) / std::tan(std::numbers::pi * kCutoff);
        const double expected = 1000 / std::sqrt(1 + std::pow(ratio, 8));
        const double measured = amplitude(std::span(values).last(1000), frequency);
        EXPECT_NEAR(20 * std::log10(measured / expected), 0, 0.01) << hertz << " Hz";
    }
}

INSTANTIATE_TEST_SUITE_P(EachProtocol, LowPass, testing::Values(16, 32),
                         [](const auto& row) { return "Kind" + std::to_string(row.param); });

}  // namespace
}  // namespace virtual_test
