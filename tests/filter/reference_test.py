"""Designs by the thousand against numerical libraries that are not ours: mpmath in 50 digits and SciPy in doubles.

usage: reference_test.py DESIGN_FILTER

DESIGN_FILTER reads designs and prints their coefficients, see design_filter.cpp. Errors are given in units of the
double's epsilon, relative to the largest coefficient of the same polynomial.
"""

import sys
import unittest

import numpy
from mpmath import mp, mpc, mpf
from scipy import signal

from designs_in_50_digits import (BAND_PASS, BAND_STOP, BESSEL, BUTTERWORTH, EPSILON, GAIN_TOO_LARGE, HIGH_PASS, KINDS,
                                  LARGEST_GAIN, LOW_PASS, NAMES, Design, Reference, Worst, error, prototype_poles,
                                  run_designer)

ROUNDING = 0.5  # epsilons between a number and the nearest double, at most


def scipy_butterworth(design):
    """SciPy's coefficients by rising power."""
    cutoffs = [2 * design.alpha1, 2 * design.alpha2] if design.band else 2 * design.alpha1
    b, a = signal.butter(design.order, cutoffs, KINDS[design.kind])
    return b[::-1], a[::-1]


def exact_scipy_numerator(design, reference):
    """What SciPy's numerator is in 50 digits: a band pass has its gain of 1 at the analogue centre."""
    if design.kind != BAND_PASS:
        return reference.x
    w1, w2 = (2 * mp.tan(mp.pi * mpf(alpha)) for alpha in (design.alpha1, design.alpha2))
    centre = mpc(0, mp.sqrt(w1 * w2))
    gain = abs(reference.ratio((2 + centre) / (2 - centre)))
    return [coefficient / gain for coefficient in reference.top]


def all_designs():
    """Logarithmic cut-offs from both ends of the axis, until every kind has failed."""
    designs = []
    for prototype in (BESSEL, BUTTERWORTH):
        for k in range(150):
            alpha = 0.49 * 10 ** (-k / 100)
            designs.append(Design(prototype, LOW_PASS, 4, alpha, alpha))
            designs.append(Design(prototype, HIGH_PASS, 4, 0.5 - alpha, 0.5 - alpha))
        alphas = [0.49 * 10 ** (-k / 6) for k in range(24)]
        for kind in (BAND_PASS, BAND_STOP):
            for low, high in ((low, high) for low in alphas for high in alphas if low < high):
                designs.append(Design(prototype, kind, 2, low, high))
                designs.append(Design(prototype, kind, 2, 0.5 - high, 0.5 - low))
            for alpha in alphas:
                designs.append(Design(prototype, kind, 2, alpha / 2, 0.5 - alpha / 2))
        for order in range(1, 7):
            designs.append(Design(prototype, LOW_PASS, order, 0.21, 0.21))
            designs.append(Design(prototype, HIGH_PASS, order, 0.21, 0.21))
            designs.append(Design(prototype, BAND_PASS, order, 0.12, 0.31))
            designs.append(Design(prototype, BAND_STOP, order, 0.12, 0.31))
    return designs


class ReferenceTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.designs = all_designs()
        cls.results = run_designer(sys.argv[1], cls.designs)
        cls.references = [Reference(design) for design in cls.designs]
        cls.succeeded = [triple for triple in zip(cls.designs, cls.results, cls.references) if triple[1].code == 0]
        print(f"{len(cls.designs)} designs, {len(cls.succeeded)} of them within the limits of the devices")

    def test_there_are_thousands_of_designs(self):
        self.assertGreaterEqual(len(self.designs), 2000)
        self.assertGreaterEqual(len(self.succeeded), 2000)
        for prototype in (BESSEL, BUTTERWORTH):
            for kind in KINDS:
                codes = {result.code for design, result in zip(self.designs, self.results)
                         if (design.prototype, design.kind) == (prototype, kind)}
                self.assertLessEqual({0, GAIN_TOO_LARGE}, codes)

    def test_coefficients_are_the_nearest_doubles(self):
        """Half an epsilon of the largest coefficient is what rounding alone may cost."""
        worst = {}
        for design, result, reference in self.succeeded:
            for name, computed, exact in (("input", result.x, reference.x), ("feedback", result.y, reference.y)):
                value = error(computed, exact)
                self.assertLessEqual(value, ROUNDING, (name, str(design)))
                worst.setdefault((name, design.prototype, design.kind), Worst()).offer(value, design)
        for key in sorted(worst):
            print(f"{key[0]} coefficients: {worst[key]}")

    def test_no_butterworth_design_is_worse_than_that_of_scipy(self):
        ours, theirs = (Worst(), Worst()), (Worst(), Worst())
        for design, result, reference in self.succeeded:
            if design.prototype == BUTTERWORTH:
                b, a = scipy_butterworth(design)
                input_error = error(result.x, reference.x)
                scipy_input = error(b, exact_scipy_numerator(design, reference))
                feedback_error, scipy_feedback = error(result.y, reference.y), error(-a[:-1], reference.y)
                # A band pass of SciPy's is scaled elsewhere, to other doubles: there its rounding may be the luckier.
                luck = ROUNDING if design.kind == BAND_PASS else 0
                self.assertLessEqual(input_error, max(scipy_input, luck), design)
                self.assertLessEqual(feedback_error, scipy_feedback, design)
                ours[0].offer(input_error, design)
                ours[1].offer(feedback_error, design)
                theirs[0].offer(scipy_input, design)
                theirs[1].offer(scipy_feedback, design)
        for name, own, other in zip(("input", "feedback"), ours, theirs):
            print(f"Butterworth {name}, ours:  {own}")
            print(f"Butterworth {name}, SciPy: {other}")

    def test_bessel_coefficients_are_those_of_scipy_as_far_as_the_table_goes(self):
        for design, result, _ in self.succeeded:
            if design.prototype == BESSEL and not design.band:
                _, a = signal.bessel(design.order, 2 * design.alpha1, KINDS[design.kind], norm="mag")
                numpy.testing.assert_allclose(result.y, -a[:0:-1], rtol=0, atol=1e-9 * max(abs(a)), err_msg=str(design))

    def test_bessel_table_is_that_of_scipy(self):
        for order in range(1, 11):
            _, expected, _ = signal.besselap(order, norm="mag")
            table = [complex(pole) for pole in prototype_poles(Design(BESSEL, LOW_PASS, order, 0, 0))]
            for pole in expected:
                self.assertLess(min(abs(pole - own) for own in table), 1e-9 * abs(pole))
            self.assertEqual(len(table), order)

    def test_every_bessel_order_comes_from_the_table(self):
        for order in range(1, 11):
            designs = [Design(BESSEL, LOW_PASS, order, alpha / 100, alpha / 100) for alpha in range(10, 40)]
            pairs = [(design, result) for design, result in zip(designs, run_designer(sys.argv[1], designs))
                     if result.code == 0]
            self.assertTrue(pairs, order)
            for design, result in pairs:
                # With the leading coefficient: the only other one of order 1 may be 0.
                self.assertLessEqual(error(result.y + [-1], Reference(design).y + [mpf(-1)]), ROUNDING, design)

    def test_codes_are_those_of_the_exact_gain_and_sum(self):
        for design, result, reference in zip(self.designs, self.results, self.references):
            self.assertEqual(result.code, reference.code(), design)


class LimitTest(unittest.TestCase):
    """Where designs begin to fail."""

    def designed(self, design):
        return run_designer(sys.argv[1], [design])[0]

    def limit(self, good, bad, fits):
        for _ in range(45):
            middle = (good + bad) / 2
            good, bad = (middle, bad) if fits(middle) else (good, middle)
        return good

    def test_the_gain_limit_begins_where_the_exact_gain_does(self):
        for prototype in (BESSEL, BUTTERWORTH):
            for kind, make, good, bad in (
                ("low pass", lambda alpha: Design(prototype, LOW_PASS, 4, alpha, alpha), 0.2, 0.01),
                ("high pass", lambda alpha: Design(prototype, HIGH_PASS, 4, alpha, alpha), 0.3, 0.49),
                ("band pass from 0.1", lambda alpha: Design(prototype, BAND_PASS, 2, 0.1, alpha), 0.2, 0.101),
                ("band stop from 0.0039", lambda alpha: Design(prototype, BAND_STOP, 2, 0.0039, alpha), 0.4, 0.4995),
            ):
                ours = self.limit(good, bad, lambda alpha: self.designed(make(alpha)).code == 0)
                exact = self.limit(good, bad, lambda alpha: Reference(make(alpha)).gain <= LARGEST_GAIN)
                print(f"gain limit of the {NAMES[prototype]} {kind}: {ours:.9f}, in 50 digits {exact:.9f}")
                self.assertAlmostEqual(ours, exact, delta=1e-9)

    def test_narrow_band_stops_keep_their_digits_however_low_they_are(self):
        for prototype in (BESSEL, BUTTERWORTH):
            designs = [Design(prototype, BAND_STOP, 2, 10 ** (-k / 20), 2 * 10 ** (-k / 20)) for k in range(20, 200)]
            for design, result in zip(designs, run_designer(sys.argv[1], designs)):
                self.assertEqual(result.code, 0, design)
                self.assertLessEqual(error(result.x, Reference(design).x), ROUNDING, design)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
