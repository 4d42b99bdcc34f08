// The steps of a design, in their order. Those that can fail leave errorCode and message.
#pragma once

#include "filter/dfilter.h"

namespace torvik {

// Sets optionsOk. Every check runs; the message is that of the last one that failed.
void checkOptions(Dfilter& filter);

void prewarp(Dfilter& filter);
void placePrototypePoles(Dfilter& filter);
void transformPrototype(Dfilter& filter);
void mapToZPlane(Dfilter& filter);

// Places poles and zeros of a resonator in the z-plane directly.
void placeResonator(Dfilter& filter);

void addExtraZeros(Dfilter& filter);

// Multiplies poles and zeros out to rawX and rawY and computes the gains. False: a coefficient is not real.
bool expandPolynomials(Dfilter& filter);

// Polynomials in z, by rising power.
struct Polynomial {
    std::array<Complex, maxPoleZero + 1> coefficients{};
    std::size_t degree = 0;
};
Polynomial expand(const Roots& roots);
Complex evaluateRatio(const Polynomial& top, const Polynomial& bottom, Complex z);

// The point of the unit circle at an angle.
Complex onUnitCircle(double angle);

void fail(Dfilter& filter, std::uint32_t code);

}  // namespace torvik
