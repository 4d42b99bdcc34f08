// Arithmetic in twice a double's precision against identities that doubles do not come near to.
#include "filter/doubled.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <numbers>

#include "filter/doubled_angle.h"

namespace torvik::test {
namespace {

constexpr double unit = 0x1p-104;

const Doubled third = Doubled(1.0) / 3.0;

// Relative to 1.
void expectNear(Doubled actual, Doubled expected, double tolerance = 8 * unit) {
    EXPECT_NEAR((actual - expected).rounded(), 0.0, tolerance);
}

TEST(Doubled, KeepsWhatASumOfDoublesLoses) {
    const Doubled sum = Doubled(1.0) + 0x1p-80;
    EXPECT_EQ(sum.high, 1.0);
    EXPECT_EQ(sum.low, 0x1p-80);
    EXPECT_EQ((sum - 1.0).rounded(), 0x1p-80);
}

TEST(Doubled, KeepsWhatAProductOfDoublesLoses) {
    const double a = 1.0 + 0x1p-52;
    const double b = 1.0 - 0x1p-52;
    const Doubled product = Doubled(a) * b;
    EXPECT_EQ(product.high, 1.0);
    EXPECT_EQ(product.low, -0x1p-104);
}

TEST(Doubled, RoundsToTheNearestDouble) {
    EXPECT_EQ(third.rounded(), 1.0 / 3.0);
    EXPECT_NE(third.low, 0.0);
    EXPECT_EQ((Doubled(1.0) + 0x1p-53 + 0x1p-80).rounded(), 1.0 + 0x1p-52);
}

TEST(Doubled, DividesAsItMultiplies) {
    expectNear(third * 3.0, 1.0);
    expectNear(third * third * 9.0, 1.0);
    expectNear(doubled::pi / doubled::pi, 1.0);
}

TEST(Doubled, TakesSquareRoots) {
    const Doubled root = sqrt(Doubled(2.0));
    EXPECT_EQ(root.rounded(), std::numbers::sqrt2);
    expectNear(root * root, 2.0);
    EXPECT_EQ(sqrt(Doubled(0.0)).rounded(), 0.0);
}

TEST(Doubled, DividesComplexNumbers) {
    const DoubledComplex a(third, doubled::pi);
    const DoubledComplex b(-doubled::pi, third * 0.5);
    const DoubledComplex back = a / b * b;
    expectNear(back.real, a.real);
    expectNear(back.imaginary, a.imaginary);
}

TEST(Doubled, TakesThePrincipalRootInEveryQuadrant) {
    for (const double real : {-2.0, 0.0, 3.0}) {
        for (const double imaginary : {-1.0, 0.0, 5.0}) {
            const DoubledComplex square(third * real, third * imaginary);
            const DoubledComplex root = sqrt(square);
            EXPECT_GE(root.real.rounded(), 0.0);
            expectNear((root * root).real, square.real);
            expectNear((root * root).imaginary, square.imaginary);
        }
    }
}

// Of the angles 24 digits are right.
constexpr double ofAngles = 1e-24;

TEST(Doubled, FindsPointsOfTheUnitCircle) {
    const Doubled half = sqrt(Doubled(0.5));
    for (int eighth = -16; eighth <= 16; ++eighth) {
        const DoubledComplex point = onUnitCircle(eighth / 4.0);
        const Doubled expected[] = {1.0, half, 0.0, -half, -1.0, -half, 0.0, half};
        expectNear(point.real, expected[eighth & 7], ofAngles);
        expectNear(point.imaginary, expected[(eighth + 6) & 7], ofAngles);
    }
}

TEST(Doubled, AddsAngles) {
    for (double angle = -2.5; angle < 2.5; angle += 0.0371) {
        const DoubledComplex once = onUnitCircle(angle);
        const DoubledComplex twice = onUnitCircle(2.0 * angle);
        expectNear((once * once).real, twice.real, 4 * ofAngles);
        expectNear((once * once).imaginary, twice.imaginary, 4 * ofAngles);
        expectNear(squaredMagnitude(once), 1.0, 2 * ofAngles);
    }
}

TEST(Doubled, KnowsTheTangentOfASmallAngleAndItsComplement) {
    for (const double angle : {0x1p-60, 0x1p-20, 0.125, 0.25}) {
        const Doubled small = tangent(angle);
        expectNear(small * tangent(Doubled(0.5) - angle), 1.0, 4 * ofAngles);
    }
}

TEST(Doubled, HasNoPointForAnInfiniteAngle) {
    EXPECT_TRUE(std::isnan(onUnitCircle(HUGE_VAL).real.rounded()));
    EXPECT_TRUE(std::isnan(tangent(static_cast<double>(NAN)).rounded()));
    EXPECT_EQ(onUnitCircle(0x1p1000).real.rounded(), 1.0);
}

}  // namespace
}  // namespace torvik::test
