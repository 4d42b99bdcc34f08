#include <cmath>
#include <numbers>

#include "filter/design_steps.h"
#include "filter/filter_options.h"
#include "filter/text_buffer.h"

namespace torvik {

namespace {

using std::numbers::pi;

Complex evaluate(const Polynomial& polynomial, Complex z) {
    Complex sum = 0.0;
    for (std::size_t i = polynomial.degree + 1; i-- > 0;)
        sum = sum * z + polynomial.coefficients[i];
    return sum;
}

bool requireReal(Dfilter& filter, const Polynomial& polynomial) {
    constexpr double tolerance = 1e-10;
    for (std::size_t i = 0; i <= polynomial.degree; ++i) {
        if (std::abs(polynomial.coefficients[i].imag()) <= tolerance) continue;
        fail(filter, filter_error::complexCoefficient);
        TextBuffer(std::span(filter.message).first(filter.message.size() - 1))
            .text("mkfilter: coeff of z^")
            .integer(static_cast<std::int64_t>(i))
            .text(" is not real; poles/zeros are not Complex conjugates");
        return false;
    }
    return true;
}

// The pole angle for which the phase at `theta` is 0, by bisection. False: not found.
bool findResonance(Dfilter& filter, double theta) {
    constexpr int steps = 50;
    constexpr double tolerance = 1e-10;
    const Polynomial top = expand(filter.zZeros);
    const double radius = std::exp(-theta / (2.0 * filter.qFactor));
    double low = 0.0;
    double high = pi;
    double middle = theta;
    for (int i = 0; i < steps; ++i) {
        const Complex pole = radius * onUnitCircle(middle);
        filter.zPoles.values[0] = pole;
        filter.zPoles.values[1] = std::conj(pole);
        const Complex response = evaluateRatio(top, expand(filter.zPoles), onUnitCircle(theta));
        const double phase = response.imag() / response.real();
        if (std::abs(phase) < tolerance) return true;
        (phase > 0 ? high : low) = middle;
        middle = 0.5 * (low + high);
    }
    return false;
}

}  // namespace

void fail(Dfilter& filter, std::uint32_t code) {
    filter.errorCode = code;
    filter.message.fill('\0');
}

Polynomial expand(const Roots& roots) {
    Polynomial product;
    auto& c = product.coefficients;
    c[0] = 1.0;
    for (std::size_t root = 0; root < roots.count; ++root) {
        const Complex w = roots.values[root];
        ++product.degree;
        for (std::size_t i = product.degree; i >= 1; --i)
            c[i] = c[i - 1] - w * c[i];
        c[0] = -w * c[0];
    }
    return product;
}

Complex evaluateRatio(const Polynomial& top, const Polynomial& bottom, Complex z) {
    return evaluate(top, z) / evaluate(bottom, z);
}

void placeResonator(Dfilter& filter) {
    const double theta = 2.0 * pi * filter.alpha1;
    filter.zZeros.add(1.0);
    filter.zZeros.add(-1.0);
    filter.zPoles.count = 2;
    if (!findResonance(filter, theta)) {
        fail(filter, filter_error::notConverged);
        TextBuffer(filter.message).text("mkfilter: warning: failed to converge");
        return;
    }
    if ((filter.options & option::bandStop) != 0) {
        filter.zZeros.values[0] = onUnitCircle(theta);
        filter.zZeros.values[1] = onUnitCircle(-theta);
    } else if ((filter.options & option::allPass) != 0) {
        for (std::size_t i = 0; i < 2; ++i)
            filter.zZeros.values[i] = filter.zPoles.values[i] / std::norm(filter.zPoles.values[i]);
    }
}

void addExtraZeros(Dfilter& filter) {
    if (filter.zZeros.count + 2 > maxPoleZero) {
        fail(filter, filter_error::tooManyZeros);
        TextBuffer(filter.message).text("mkfilter: too many zeros; can't do -Z");
        return;
    }
    const Complex zero = onUnitCircle(2.0 * pi * filter.alphaZ);
    filter.zZeros.add(zero);
    filter.zZeros.add(std::conj(zero));
    while (filter.zPoles.count < filter.zZeros.count)
        filter.zPoles.add(0.0);
}

bool expandPolynomials(Dfilter& filter) {
    const Polynomial top = expand(filter.zZeros);
    if (!requireReal(filter, top)) return false;
    const Polynomial bottom = expand(filter.zPoles);
    if (!requireReal(filter, bottom)) return false;
    filter.dcGain = evaluateRatio(top, bottom, 1.0);
    filter.centreGain = evaluateRatio(top, bottom, onUnitCircle(pi * (filter.alpha1 + filter.alpha2)));
    filter.hfGain = evaluateRatio(top, bottom, -1.0);
    const double leading = bottom.coefficients[bottom.degree].real();
    for (std::size_t i = 0; i <= top.degree; ++i)
        filter.rawX[i] = top.coefficients[i].real() / leading;
    for (std::size_t i = 0; i <= bottom.degree; ++i)
        filter.rawY[i] = -bottom.coefficients[i].real() / leading;
    return true;
}

}  // namespace torvik
