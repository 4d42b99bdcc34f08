// Both sides of what the devices' coefficient format can hold.
#include <functional>
#include <initializer_list>
#include <tuple>
#include <utility>

#include "filter/filter_bench.h"

namespace torvik::test {
namespace {

using namespace torvik::option;

constexpr double largestGain = 3200.0;
constexpr double coefficientSumLimit = 64.0;

double coefficientSum(const Dfilter& filter) {
    double sum = 0;
    for (std::size_t i = 0; i <= filter.zZeros.count; ++i)
        sum += std::abs(filter.xCoefficients[i]);
    for (std::size_t i = 0; i < filter.zPoles.count; ++i)
        sum += std::abs(filter.yCoefficients[i]);
    return sum;
}

using DesignOf = std::function<Design(double)>;

class DeviceLimits : public FilterTest {
  protected:
    // Two neighbouring numbers, the first of which gives a design and the second none.
    std::pair<double, double> findLimit(double good, double bad, const DesignOf& designOf) {
        EXPECT_EQ(run(filter, designOf(good)), filter_error::none);
        EXPECT_NE(run(filter, designOf(bad)), filter_error::none);
        while (std::nextafter(good, bad) != bad) {
            const double middle = good + (bad - good) / 2;
            if (middle == good || middle == bad) break;
            (run(filter, designOf(middle)) == filter_error::none ? good : bad) = middle;
        }
        return {good, bad};
    }

    void expectGainLimit(double good, double bad, const DesignOf& designOf) {
        std::tie(good, bad) = findLimit(good, bad, designOf);
        EXPECT_EQ(run(filter, designOf(good)), filter_error::none);
        EXPECT_LE(filter.gain, largestGain);
        EXPECT_EQ(run(filter, designOf(bad)), filter_error::gainTooLarge);
        EXPECT_GT(filter.gain, largestGain);
        EXPECT_FALSE(filter.iirValid);
        EXPECT_EQ(messageOf(filter), "");
        limit = good;
    }

    double limit = 0;
};

// The gain of a low pass before the division is its prototype's polynomial, 1 at 0, at the cotangent of half the angle.
double cotangentAtLimit(std::initializer_list<Complex> poles) {
    double low = 1;
    double high = 100;
    for (int i = 0; i < 60; ++i) {
        const double middle = 0.5 * (low + high);
        Complex product = 1.0;
        for (const Complex& pole : poles)
            product *= (middle - pole) * (middle - std::conj(pole)) / std::norm(pole);
        (product.real() < largestGain ? low : high) = middle;
    }
    return low;
}

constexpr double relative = 1e-9;

TEST_F(DeviceLimits, ButterworthLowPassesReachTheGainLimitWhereTheirPolynomialDoes) {
    expectGainLimit(0.2, 0.01, [](double alpha) { return lowPassOf(butterworth, 4, alpha); });
    const double cotangent = cotangentAtLimit({std::polar(1.0, 0.625 * pi), std::polar(1.0, 0.875 * pi)});
    EXPECT_NEAR(limit, std::atan(1.0 / cotangent) / pi, relative);
}

TEST_F(DeviceLimits, BesselLowPassesReachTheGainLimitWhereTheirPolynomialDoes) {
    expectGainLimit(0.2, 0.01, [](double alpha) { return lowPassOf(bessel, 4, alpha); });
    const double cotangent = cotangentAtLimit({{-1.37006783055, 0.410249717494}, {-0.99520876435, 1.25710573945}});
    EXPECT_NEAR(limit, std::atan(1.0 / cotangent) / pi, relative);
}

TEST_F(DeviceLimits, HighPassesReachTheGainLimitAtTheOtherEnd) {
    for (const std::uint32_t prototype : {bessel, butterworth}) {
        expectGainLimit(0.2, 0.01, [=](double alpha) { return lowPassOf(prototype, 4, alpha); });
        const double lowPassLimit = limit;
        expectGainLimit(0.3, 0.49, [=](double alpha) { return highPassOf(prototype, 4, alpha); });
        EXPECT_NEAR(limit, 0.5 - lowPassLimit, relative);
    }
}

TEST_F(DeviceLimits, BandPassesReachTheGainLimitWhenTheyGetNarrow) {
    for (const std::uint32_t prototype : {bessel, butterworth})
        expectGainLimit(0.2, 0.1001, [=](double alpha2) { return bandPassOf(prototype, 2, 0.1, alpha2); });
}

TEST_F(DeviceLimits, BandStopsReachTheGainLimitWhenNothingIsLeft) {
    for (const std::uint32_t prototype : {bessel, butterworth})
        expectGainLimit(0.4, 0.4995, [=](double alpha2) { return bandStopOf(prototype, 2, 0.0039, alpha2); });
}

TEST_F(DeviceLimits, ExtraZerosNearTheReferenceFrequencyReachTheLimitOfTheSum) {
    const auto designOf = [](double alphaZ) {
        return Design{butterworth | lowPass | given | extraZeros, 2, 0.2, 0, {.alphaZ = alphaZ}};
    };
    const auto [good, bad] = findLimit(0.3, 0.001, designOf);
    EXPECT_EQ(run(filter, designOf(good)), filter_error::none);
    EXPECT_LT(coefficientSum(filter), coefficientSumLimit);
    EXPECT_EQ(run(filter, designOf(bad)), filter_error::coefficientsTooLarge);
    EXPECT_GE(coefficientSum(filter), coefficientSumLimit);
    EXPECT_FALSE(filter.iirValid);
    EXPECT_EQ(messageOf(filter), "");
}

TEST_F(DeviceLimits, BandStop_LowerCutoffZero_HasNoGain) {
    for (const std::uint32_t prototype : {bessel, butterworth})
        EXPECT_EQ(run(filter, bandStopOf(prototype, 2, 0.0, 0.2)), filter_error::coefficientsTooLarge);
}

TEST_F(DeviceLimits, AGainWithoutAValueIsNoGainTooLarge) {
    // The only pole and the reference frequency are the same: 0 / 0 with a zero that is there too.
    EXPECT_EQ(run(filter, {butterworth | highPass | given | matchedZ | extraZeros, 1, 0.0, 0, {.alphaZ = 0.5}}),
              filter_error::coefficientsTooLarge);
}

}  // namespace
}  // namespace torvik::test
