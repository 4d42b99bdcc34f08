#include <cmath>
#include <numbers>

#include "filter/design_steps.h"
#include "filter/filter_options.h"
#include "filter/polynomial.h"
#include "filter/text_buffer.h"

namespace torvik {

namespace {

using std::numbers::pi;

using Pair = std::array<Complex, 2>;

Complex pointAt(double angle) {
    return {std::cos(angle), std::sin(angle)};
}

// The poles for which the phase at `theta` is 0, by bisection of their angle. False: not found.
bool findResonance(double theta, double qFactor, const Pair& zeros, Pair& poles) {
    constexpr int steps = 50;
    constexpr double tolerance = 1e-10;
    const auto top = expand(std::span<const Complex>(zeros));
    const double radius = std::exp(-theta / (2.0 * qFactor));
    double low = 0.0;
    double high = pi;
    double middle = theta;
    for (int i = 0; i < steps; ++i) {
        const Complex pole = radius * pointAt(middle);
        poles = {pole, std::conj(pole)};
        const Complex response = evaluateRatio(top, expand(std::span<const Complex>(poles)), pointAt(theta));
        const double phase = response.imag() / response.real();
        if (std::abs(phase) < tolerance) return true;
        (phase > 0 ? high : low) = middle;
        middle = 0.5 * (low + high);
    }
    return false;
}

}  // namespace

void placeResonator(Dfilter& filter, Placement& placement) {
    const double theta = 2.0 * pi * filter.alpha1;
    Pair zeros = {1.0, -1.0};
    Pair poles;
    if (!findResonance(theta, filter.qFactor, zeros, poles)) {
        fail(filter, filter_error::notConverged);
        TextBuffer(filter.message).text("mkfilter: warning: failed to converge");
        return;
    }
    if ((filter.options & option::bandStop) != 0) {
        zeros = {pointAt(theta), pointAt(-theta)};
    } else if ((filter.options & option::allPass) != 0) {
        zeros = {poles[0] / std::norm(poles[0]), poles[1] / std::norm(poles[1])};
    }
    for (std::size_t i = 0; i < zeros.size(); ++i) {
        placement.zZeros.add(DoubledComplex(zeros[i]));
        placement.zPoles.add(DoubledComplex(poles[i]));
    }
}

}  // namespace torvik
