#include <cmath>
#include <numbers>

#include "filter/design_steps.h"
#include "filter/doubled_angle.h"
#include "filter/filter_options.h"
#include "filter/polynomial.h"
#include "filter/reference_gain.h"
#include "filter/text_buffer.h"

namespace torvik {

namespace {

// The limits of the devices' coefficient format.
constexpr double largestGain = 3200.0;
constexpr double coefficientSumLimit = 64.0;

bool requireReal(Dfilter& filter, const Polynomial<DoubledComplex>& polynomial) {
    constexpr double tolerance = 1e-10;
    for (std::size_t i = 0; i <= polynomial.degree; ++i) {
        if (std::abs(polynomial.coefficients[i].imaginary.rounded()) <= tolerance) continue;
        fail(filter, filter_error::complexCoefficient);
        TextBuffer(std::span(filter.message).first(filter.message.size() - 1))
            .text("mkfilter: coeff of z^")
            .integer(static_cast<std::int64_t>(i))
            .text(" is not real; poles/zeros are not Complex conjugates");
        return false;
    }
    return true;
}

Polynomial<Complex> rounded(const Polynomial<DoubledComplex>& exact) {
    Polynomial<Complex> polynomial;
    polynomial.degree = exact.degree;
    for (std::size_t i = 0; i <= exact.degree; ++i)
        polynomial.coefficients[i] = exact.coefficients[i].rounded();
    return polynomial;
}

// A band stop whose gains at 0 Hz and at half the sampling frequency are both its gain far from the band. With a
// cut-off of 0 a pole and a zero lie at 0 Hz, and there is no such gain.
bool hasEqualEnds(const Dfilter& filter, const Placement& placement) {
    constexpr std::uint32_t others = option::resonator | option::matchedZ | option::extraZeros;
    return (filter.options & option::bandStop) != 0 && (filter.options & others) == 0 &&
           placement.warpedAlpha1.high != 0 && placement.warpedAlpha2.high != 0;
}

// The gain of such a band stop. The product of its poles in the s-plane is that of its zeros, so that at both ends only
// the denominators of the mapped roots remain. The ratio of the polynomials loses every digit at the end that is close
// to the band; these factors keep theirs.
DoubledComplex gainAtBothEnds(const Placement& placement) {
    DoubledComplex gain = 1.0;
    for (std::size_t i = 0; i < placement.sPoles.count; ++i)
        gain = gain * ((2.0 - placement.sPoles.values[i]) / (2.0 - placement.sZeros.values[i]));
    return gain;
}

// Leaves the gains in the filter: in doubles first, and those that are asked for as exactly as they can be, unless they
// are infinite.
class EvaluatedGains {
  public:
    EvaluatedGains(Dfilter& filter, const Placement& placement, const Polynomial<DoubledComplex>& top,
                   const Polynomial<DoubledComplex>& bottom)
        : filter_(filter),
          placement_(placement),
          top_(top),
          bottom_(bottom),
          middle_(doubled::exactSum(filter.alpha1, filter.alpha2)) {
        const auto roundedTop = rounded(top);
        const auto roundedBottom = rounded(bottom);
        const double angle = std::numbers::pi * middle_.rounded();
        filter.dcGain = evaluateRatio(roundedTop, roundedBottom, 1.0);
        filter.centreGain = evaluateRatio(roundedTop, roundedBottom, Complex(std::cos(angle), std::sin(angle)));
        filter.hfGain = evaluateRatio(roundedTop, roundedBottom, -1.0);
    }

    DoubledComplex dc() const { return keep(filter_.dcGain, atEnd(1.0)); }
    DoubledComplex centre() const {
        return keep(filter_.centreGain, evaluateRatio(top_, bottom_, onUnitCircle(middle_)));
    }
    DoubledComplex hf() const { return keep(filter_.hfGain, atEnd(-1.0)); }

  private:
    DoubledComplex atEnd(double z) const {
        return hasEqualEnds(filter_, placement_) ? gainAtBothEnds(placement_) : evaluateRatio(top_, bottom_, z);
    }

    static DoubledComplex keep(Complex& field, const DoubledComplex& gain) {
        if (isFinite(gain.real) && isFinite(gain.imaginary)) field = gain.rounded();
        return gain;
    }

    Dfilter& filter_;
    const Placement& placement_;
    const Polynomial<DoubledComplex>& top_;
    const Polynomial<DoubledComplex>& bottom_;
    Doubled middle_;  // in half-turns
};

struct KeptGains {
    const Dfilter& filter;

    Complex dc() const { return filter.dcGain; }
    Complex centre() const { return filter.centreGain; }
    Complex hf() const { return filter.hfGain; }
};

}  // namespace

void fail(Dfilter& filter, std::uint32_t code) {
    filter.errorCode = code;
    filter.message.fill('\0');
}

void addExtraZeros(Dfilter& filter, Placement& placement) {
    if (placement.zZeros.count + 2 > maxPoleZero) {
        fail(filter, filter_error::tooManyZeros);
        TextBuffer(filter.message).text("mkfilter: too many zeros; can't do -Z");
        return;
    }
    const DoubledComplex zero = onUnitCircle(Doubled(filter.alphaZ) * 2.0);
    placement.zZeros.add(zero);
    placement.zZeros.add(conjugate(zero));
    while (placement.zPoles.count < placement.zZeros.count)
        placement.zPoles.add(0.0);
}

std::uint32_t makeCoefficients(Dfilter& filter, const Placement& placement) {
    const auto top = expand(placement.zZeros.all());
    if (!requireReal(filter, top)) return filter.errorCode;
    const auto bottom = expand(placement.zPoles.all());
    if (!requireReal(filter, bottom)) return filter.errorCode;
    Doubled gain = magnitude(referenceGain(filter.options, EvaluatedGains(filter, placement, top, bottom)));
    if (!isFinite(gain)) gain = std::abs(referenceGain(filter.options, KeptGains{filter}));
    filter.gain = gain.rounded();
    for (std::size_t i = 0; i <= top.degree; ++i)
        filter.rawX[i] = top.coefficients[i].real.rounded();
    for (std::size_t i = 0; i <= bottom.degree; ++i)
        filter.rawY[i] = -bottom.coefficients[i].real.rounded();
    if (filter.gain > largestGain) return filter_error::gainTooLarge;
    double sum = 0;
    for (std::size_t i = 0; i <= top.degree; ++i) {
        // The only division; that of rawX by the gain would round twice before.
        filter.xCoefficients[i] = (top.coefficients[i].real / gain).rounded();
        sum += std::abs(filter.xCoefficients[i]);
    }
    for (std::size_t i = 0; i < bottom.degree; ++i) {
        filter.yCoefficients[i] = filter.rawY[i];
        sum += std::abs(filter.yCoefficients[i]);
    }
    // The comparisons with the limits are written for a NaN to fail.
    return sum < coefficientSumLimit ? filter_error::none : filter_error::coefficientsTooLarge;
}

}  // namespace torvik
