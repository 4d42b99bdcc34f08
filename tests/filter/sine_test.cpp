// The quick sine of test signals against the exact one.
#include "filter/sine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "filter/doubled_angle.h"

namespace torvik::test {
namespace {

double exactSine(double angle) {
    return onUnitCircle(Doubled(angle) / doubled::pi).imaginary.rounded();
}

void expectExact(double angle) {
    // Next to multiples of pi the reduction of the angle limits both.
    constexpr double ofReduction = 1e-28;
    const double expected = exactSine(angle);
    EXPECT_NEAR(sine(angle), expected, 1e-15 * std::abs(expected) + ofReduction) << angle;
}

TEST(Sine, IsRightToAlmostTheLastDigitOfADouble) {
    for (double angle = -40; angle < 40; angle += 0.00719)
        expectExact(angle);
}

TEST(Sine, IsAsExactNextToMultiplesOfPi) {
    for (int k = -1000; k <= 1000; ++k)
        expectExact(k * std::numbers::pi);
}

TEST(Sine, GivesTheSamplesOfEveryTestSignal) {
    int different = 0;
    for (int k = 0; k <= 1000; k += 10) {
        double phase = 0;
        for (int n = 0; n < 1000; ++n, phase += 2 * std::numbers::pi * k / 2000)
            different += static_cast<float>(sine(phase)) != static_cast<float>(exactSine(phase)) ? 1 : 0;
    }
    EXPECT_EQ(different, 0);
}

TEST(Sine, IsRightUpToItsFarthestAngle) {
    for (const double angle : {farthestSineAngle, -farthestSineAngle, farthestSineAngle - 1.25})
        EXPECT_NEAR(sine(angle), exactSine(angle), 1e-15) << angle;
}

}  // namespace
}  // namespace torvik::test
