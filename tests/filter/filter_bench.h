// Designs in few words, and what a designed filter does, computed from its coefficients alone.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <string>

#include "filter/filter_design.h"
#include "filter/filter_options.h"

namespace torvik::test {

inline constexpr double pi = std::numbers::pi;
inline constexpr double halfPower = std::numbers::sqrt2 / 2;  // -3.01 dB

// One design; cut-offs and extra zeros as fractions of the sampling frequency.
struct Design {
    std::uint32_t options = 0;
    std::int32_t order = 0;
    double alpha1 = 0;
    double alpha2 = 0;
    DesignValues values{};
};

inline constexpr std::uint32_t given = option::cutoffs | option::order;

inline Design lowPassOf(std::uint32_t prototype, std::int32_t order, double alpha) {
    return {prototype | option::lowPass | given, order, alpha};
}
inline Design highPassOf(std::uint32_t prototype, std::int32_t order, double alpha) {
    return {prototype | option::highPass | given, order, alpha};
}
inline Design bandPassOf(std::uint32_t prototype, std::int32_t order, double alpha1, double alpha2) {
    return {prototype | option::bandPass | given, order, alpha1, alpha2};
}
inline Design bandStopOf(std::uint32_t prototype, std::int32_t order, double alpha1, double alpha2) {
    return {prototype | option::bandStop | given, order, alpha1, alpha2};
}
inline Design resonatorOf(std::uint32_t kind, double alpha, double qFactor) {
    return {option::resonator | option::cutoffs | kind, 0, alpha, alpha, {.qFactor = qFactor}};
}

inline std::uint32_t run(Dfilter& filter, const Design& design) {
    const double cutoffs[] = {design.alpha1, design.alpha2};
    return designFilter(filter, design.options, design.order, cutoffs, design.values);
}

inline std::string messageOf(const Dfilter& filter) {
    return filter.message.data();
}

// The response at a fraction of the sampling frequency, from the coefficients that a device would be given: the x of
// higher index belong to newer samples, and y to the samples before the present one.
inline std::complex<double> responseAt(const Dfilter& filter, double alpha) {
    const std::complex<double> z = std::polar(1.0, 2.0 * pi * alpha);
    std::complex<double> top = 0;
    for (std::size_t i = filter.zZeros.count + 1; i-- > 0;)
        top = top * z + filter.xCoefficients[i];
    std::complex<double> bottom = 1;
    for (std::size_t i = filter.zPoles.count; i-- > 0;)
        bottom = bottom * z - filter.yCoefficients[i];
    return top / bottom;
}

inline double amplitudeAt(const Dfilter& filter, double alpha) {
    return std::abs(responseAt(filter, alpha));
}

inline double largestPoleRadius(const Dfilter& filter) {
    double largest = 0;
    for (std::size_t i = 0; i < filter.zPoles.count; ++i)
        largest = std::max(largest, std::abs(filter.zPoles.values[i]));
    return largest;
}

// Where the bilinear transform puts a digital frequency on the axis of analogue ones.
inline double warped(double alpha) {
    return std::tan(pi * alpha) / pi;
}

class FilterTest : public testing::Test {
  protected:
    void make(const Design& design) {
        ASSERT_EQ(run(filter, design), filter_error::none) << messageOf(filter);
        ASSERT_TRUE(filter.iirValid);
    }

    Dfilter filter;
};

}  // namespace torvik::test
