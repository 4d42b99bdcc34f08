// Designs with cut-off frequencies that nobody should ask for.
#pragma once

#include <cmath>
#include <limits>

#include "filter/filter_bench.h"

namespace torvik::test {

inline constexpr double oddAlphas[] = {
    std::numeric_limits<double>::quiet_NaN(),
    std::numeric_limits<double>::infinity(),
    -std::numeric_limits<double>::infinity(),
    0.0,
    -0.0,
    -0.1,
    std::numeric_limits<double>::denorm_min(),
    1e-300,
    1e-9,
    0.2,
    0.25,
    0.5,
    0.5000000000000001,
    1.0,
    1e18,
    std::numeric_limits<double>::max(),
};

// Every pair of these (equal and swapped ones among them) with every prototype, kind and way to the z-plane.
template <class Check>
void forEachOddDesign(Check check) {
    using namespace option;
    constexpr std::uint32_t kinds[] = {
        bessel | lowPass | given,       bessel | highPass | given,      bessel | bandPass | given,
        bessel | bandStop | given,      butterworth | lowPass | given,  butterworth | highPass | given,
        butterworth | bandPass | given, butterworth | bandStop | given, chebyshev | lowPass | given,
        chebyshev | highPass | given,   chebyshev | bandPass | given,   chebyshev | bandStop | given,
        resonator | bandPass | cutoffs, resonator | bandStop | cutoffs, resonator | allPass | cutoffs,
        proportionalIntegral | given,
    };
    for (const std::uint32_t kind : kinds) {
        const std::int32_t order = (kind & proportionalIntegral) != 0 ? 1 : 2;
        for (const std::uint32_t way : {std::uint32_t{0}, noPrewarp, matchedZ, extraZeros}) {
            if ((kind & resonator) != 0 && (way & (noPrewarp | matchedZ)) != 0) continue;
            for (const double alpha1 : oddAlphas) {
                for (const double alpha2 : oddAlphas) {
                    check(Design{kind | way,
                                 order,
                                 alpha1,
                                 alpha2,
                                 {.chebyshevRipple = -1, .qFactor = alpha2, .alphaZ = alpha1}});
                }
            }
        }
    }
}

}  // namespace torvik::test
