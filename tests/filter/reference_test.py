"""Designs by the thousand against numerical libraries that are not ours: mpmath in 50 digits and SciPy in doubles.

usage: reference_test.py DESIGN_FILTER

DESIGN_FILTER reads designs and prints their coefficients, see design_filter.cpp. Errors are given in units of the
double's epsilon, relative to the largest coefficient of the same polynomial.
"""

import subprocess
import sys
import unittest

import mpmath
import numpy
from mpmath import mp, mpc, mpf
from scipy import signal

mp.dps = 50
EPSILON = numpy.finfo(float).eps
ROUNDING = 0.5  # epsilons between a number and the nearest double, at most

BESSEL, BUTTERWORTH = 0x1, 0x2
LOW_PASS, HIGH_PASS, BAND_PASS, BAND_STOP = 0x20, 0x40, 0x80, 0x100
GIVEN = 0x1400  # order and cut-offs
KINDS = {LOW_PASS: "lowpass", HIGH_PASS: "highpass", BAND_PASS: "bandpass", BAND_STOP: "bandstop"}
NAMES = {BESSEL: "Bessel", BUTTERWORTH: "Butterworth"}

SUM_TOO_LARGE, GAIN_TOO_LARGE = 0x30000208, 0x30000209
LARGEST_GAIN, SUM_LIMIT = 3200, 64

# Order, real and imaginary part of the poles with a non-negative imaginary part.
BESSEL_POLES = [
    (1, "-1.0", "0.0"),
    (2, "-1.10160133059", "0.636009824757"),
    (3, "-1.32267579991", "0.0"),
    (3, "-1.04740916101", "0.999264436281"),
    (4, "-1.37006783055", "0.410249717494"),
    (4, "-0.99520876435", "1.25710573945"),
    (5, "-1.50231627145", "0.0"),
    (5, "-1.38087732586", "0.717909587627"),
    (5, "-0.957676548563", "1.47112432073"),
    (6, "-1.57149040362", "0.320896374221"),
    (6, "-1.3818580976", "0.971471890712"),
    (6, "-0.930656522947", "1.66186326894"),
    (7, "-1.68436817927", "0.0"),
    (7, "-1.61203876622", "0.589244506931"),
    (7, "-1.3789032168", "1.1915667778"),
    (7, "-0.909867780623", "1.83645135304"),
    (8, "-1.7574084004", "0.272867575103"),
    (8, "-1.63693941813", "0.822795625139"),
    (8, "-1.37384121764", "1.38835657588"),
    (8, "-0.892869718847", "1.99832584364"),
    (9, "-1.85660050123", "0.0"),
    (9, "-1.80717053496", "0.512383730575"),
    (9, "-1.65239648458", "1.03138956698"),
    (9, "-1.36758830979", "1.56773371224"),
    (9, "-0.878399276161", "2.14980052431"),
    (10, "-1.92761969145", "0.241623471082"),
    (10, "-1.84219624443", "0.727257597722"),
    (10, "-1.6618102414", "1.22110021857"),
    (10, "-1.36069227838", "1.73350574267"),
    (10, "-0.865756901707", "2.29260483098"),
]


class Design:
    def __init__(self, prototype, kind, order, alpha1, alpha2):
        self.prototype, self.kind, self.order = prototype, kind, order
        self.alpha1, self.alpha2 = alpha1, alpha2
        self.band = kind in (BAND_PASS, BAND_STOP)

    def line(self):
        options = self.prototype | self.kind | GIVEN
        return f"{options} {self.order} {self.alpha1!r} {self.alpha2!r} 0 0 0 0\n"

    def __str__(self):
        cutoffs = f"{self.alpha1:.6g}" + (f" .. {self.alpha2:.6g}" if self.band else "")
        return f"{NAMES[self.prototype]} {KINDS[self.kind]} of order {self.order} at {cutoffs}"


class Result:
    """What the designer has printed."""

    def __init__(self, line):
        numbers, _, y = line.partition("|")
        code, gain, *x = numbers.split()
        self.code, self.gain = int(code), float(gain)
        self.x, self.y = [float(text) for text in x], [float(text) for text in y.split()]


def run_designer(program, designs):
    """All designs through the program in one run."""
    text = "".join(design.line() for design in designs)
    done = subprocess.run([program], input=text, capture_output=True, text=True, check=True)
    results = [Result(line) for line in done.stdout.splitlines()]
    assert len(results) == len(designs)
    return results


def prototype_poles(design):
    order = design.order
    if design.prototype == BUTTERWORTH:
        angles = [mp.pi * (2 * k + order + 1) / (2 * order) for k in range(order)]
        return [mpc(mp.cos(angle), mp.sin(angle)) for angle in angles]
    poles = []
    for row_order, real, imaginary in BESSEL_POLES:
        if row_order == order:
            pole = mpc(mpf(real), mpf(imaginary))
            poles += [pole] if pole.imag == 0 else [pole, mp.conj(pole)]
    return poles


def analogue(design):
    """Poles and zeros in the s-plane, for a sampling frequency of 1."""
    w1, w2 = (2 * mp.tan(mp.pi * mpf(alpha)) for alpha in (design.alpha1, design.alpha2))
    poles = prototype_poles(design)
    if design.kind == LOW_PASS:
        return [w1 * pole for pole in poles], []
    if design.kind == HIGH_PASS:
        return [w1 / pole for pole in poles], [mpf(0)] * len(poles)
    centre, width = mp.sqrt(w1 * w2), w2 - w1
    halves = [pole * width / 2 if design.kind == BAND_PASS else width / pole / 2 for pole in poles]
    roots = [mp.sqrt(half**2 - centre**2) for half in halves]
    poles = [half + root for half, root in zip(halves, roots)] + [half - root for half, root in zip(halves, roots)]
    if design.kind == BAND_PASS:
        return poles, [mpf(0)] * design.order
    return poles, [mpc(0, centre)] * design.order + [mpc(0, -centre)] * design.order


def expand(roots):
    """Coefficients of the product of (z - root), by rising power."""
    coefficients = [mpf(1)]
    for root in roots:
        shifted = [mpf(0)] + coefficients
        coefficients = [above - root * below for above, below in zip(shifted, coefficients + [mpf(0)])]
    return [mp.re(coefficient) for coefficient in coefficients]


class Reference:
    """The same design in 50 digits."""

    def __init__(self, design):
        poles, zeros = analogue(design)
        self.poles = [(2 + pole) / (2 - pole) for pole in poles]
        self.zeros = [(2 + zero) / (2 - zero) for zero in zeros]
        self.zeros += [mpf(-1)] * (len(self.poles) - len(self.zeros))
        self.top, self.bottom = expand(self.zeros), expand(self.poles)
        self.gain = abs(self.gain_of(design))
        self.x = [coefficient / self.gain for coefficient in self.top]
        self.y = [-coefficient for coefficient in self.bottom[:-1]]
        self.sum = sum(abs(coefficient) for coefficient in self.x + self.y)

    def ratio(self, z):
        return mp.polyval(self.top[::-1], z) / mp.polyval(self.bottom[::-1], z)

    def gain_of(self, design):
        if design.kind == LOW_PASS:
            return self.ratio(mpf(1))
        if design.kind == HIGH_PASS:
            return self.ratio(mpf(-1))
        if design.kind == BAND_PASS:
            return self.ratio(mp.expj(mp.pi * (mpf(design.alpha1) + mpf(design.alpha2))))
        return mp.sqrt(self.ratio(mpf(1)) * self.ratio(mpf(-1)))


def error(computed, exact):
    """The largest error in epsilons of the largest coefficient."""
    scale = max(abs(value) for value in exact)
    return float(max(abs(mpf(value) - right) for value, right in zip(computed, exact)) / scale / EPSILON)


def reference_points(design):
    """Where a design is scaled to a gain of 1."""
    if design.kind == BAND_PASS:
        return [mp.expj(mp.pi * (mpf(design.alpha1) + mpf(design.alpha2)))]
    return {LOW_PASS: [mpf(1)], HIGH_PASS: [mpf(-1)], BAND_STOP: [mpf(1), mpf(-1)]}[design.kind]


def gain_condition(design, reference):
    """How much evaluating the polynomials there magnifies the rounding of their coefficients."""
    return float(max(sum(map(abs, polynomial)) / abs(mp.polyval(polynomial[::-1], z))
                     for z in reference_points(design) for polynomial in (reference.top, reference.bottom)))


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


class Worst:
    """The largest error so far and whose it was."""

    def __init__(self):
        self.error, self.design = 0.0, None

    def offer(self, value, design):
        if value > self.error:
            self.error, self.design = value, design

    def __str__(self):
        return f"{self.error:.4g} epsilon ({self.design})"


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
        for prototype in NAMES:
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
            expected = 0
            if reference.gain > LARGEST_GAIN:
                expected = GAIN_TOO_LARGE
            elif reference.sum >= SUM_LIMIT:
                expected = SUM_TOO_LARGE
            self.assertEqual(result.code, expected, design)


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
        for prototype in NAMES:
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

    def test_narrow_band_stops_keep_their_digits_down_to_a_50000th_of_the_sampling_frequency(self):
        for prototype in NAMES:
            alphas = [10 ** (-k / 20) for k in range(20, 95)]
            designs = [Design(prototype, BAND_STOP, 2, alpha, 2 * alpha) for alpha in alphas if alpha >= 2e-5]
            for design, result in zip(designs, run_designer(sys.argv[1], designs)):
                self.assertEqual(result.code, 0, design)
                self.assertLessEqual(error(result.x, Reference(design).x), ROUNDING, design)

    def test_band_stops_of_the_devices_order_meet_the_limit_of_the_sum_only_by_rounding(self):
        for prototype in NAMES:
            alphas = [10 ** (-k / 20) for k in range(40, 200)]
            designs = [Design(prototype, BAND_STOP, 2, alpha, 2 * alpha) for alpha in alphas]
            failed = [design for design, result in zip(designs, run_designer(sys.argv[1], designs))
                      if result.code == SUM_TOO_LARGE]
            self.assertTrue(failed)
            print(f"sum limit of {NAMES[prototype]} band stops an octave wide: from {failed[0].alpha1:.3g} down")
            for design in failed:
                reference = Reference(design)
                self.assertLess(reference.sum, SUM_LIMIT)
                self.assertGreater(gain_condition(design, reference) * EPSILON**2, 0.01)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
