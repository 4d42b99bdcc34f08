// Angles in twice a double's precision, in half-turns, so that they need no rounding.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>

#include "filter/doubled.h"

namespace torvik {

namespace doubled {

// The point of the unit circle at an angle from 0 to 1/2, by the power series of the exponential function.
constexpr DoubledComplex pointBySeries(Doubled halfTurns) {
    constexpr int terms = 32;
    const DoubledComplex angle(0.0, pi * halfTurns);
    DoubledComplex term = 1.0;
    DoubledComplex sum = 1.0;
    for (int k = 1; k < terms; ++k) {
        term = term * angle * (Doubled(1.0) / k);
        sum = sum + term;
    }
    return sum;
}

// The points at every 32nd of a right angle.
inline constexpr int pointsPerRightAngle = 32;
inline constexpr std::array<DoubledComplex, pointsPerRightAngle> firstQuadrant = [] {
    std::array<DoubledComplex, pointsPerRightAngle> points{};
    for (std::size_t k = 0; k < points.size(); ++k)
        points[k] = pointBySeries(Doubled(static_cast<double>(k)) / (2.0 * pointsPerRightAngle));
    return points;
}();

// Of an angle up to half of a 32nd of a right angle. The end of the series needs no more than doubles: with them the
// result has 24 right digits.
constexpr DoubledComplex pointCloseToOne(Doubled halfTurns) {
    constexpr Doubled sixth{1.0 / 6, 9.25185853854297066e-18};
    constexpr Doubled twentyFourth{1.0 / 24, 2.31296463463574266e-18};
    const Doubled angle = pi * halfTurns;
    const Doubled square = angle * angle;
    const double x = square.high;
    const double endOfSine = x * (1.0 / 120 - x * (1.0 / 5040 - x * (1.0 / 362880)));
    const double endOfCosine = x * (1.0 / 720 - x * (1.0 / 40320 - x * (1.0 / 3628800)));
    return {1.0 - square * (0.5 - square * (twentyFourth - endOfCosine)),
            angle - angle * (square * (sixth - endOfSine))};
}

}  // namespace doubled

// The point of the unit circle at an angle; NaN for an infinite one.
constexpr DoubledComplex onUnitCircle(Doubled halfTurns) {
    using doubled::pointsPerRightAngle;
    Doubled turn = halfTurns;
    if (!(turn.high >= -2.0 && turn.high <= 2.0)) {
        turn = Doubled(std::remainder(turn.high, 2.0)) + std::remainder(turn.low, 2.0);
        if (std::isnan(turn.high)) return {turn, turn};
    }
    const double steps = turn.high * (2.0 * pointsPerRightAngle);
    const int nearest = static_cast<int>(steps + (steps < 0 ? -0.5 : 0.5));
    const DoubledComplex rest = doubled::pointCloseToOne(turn - nearest / (2.0 * pointsPerRightAngle));
    const auto step = static_cast<unsigned>(nearest);
    const DoubledComplex point = rest * doubled::firstQuadrant[step % pointsPerRightAngle];
    switch (step / pointsPerRightAngle % 4) {
        case 0:
            return point;
        case 1:
            return {-point.imaginary, point.real};
        case 2:
            return -point;
        default:
            return {point.imaginary, -point.real};
    }
}

// Infinite or NaN at right angles.
inline Doubled tangent(Doubled halfTurns) {
    const DoubledComplex point = onUnitCircle(halfTurns);
    return point.imaginary / point.real;
}

}  // namespace torvik
