"""Random designs of all kinds and orders, and every edge of the cut-offs, against the same designs in 50 digits.

usage: random_designs_test.py DESIGN_FILTER [COUNT]

DESIGN_FILTER reads designs and prints their coefficients, see design_filter.cpp. Checked are the code, the gain and all
coefficients. TORVIK_SEED replays the designs of a run.
"""

import math
import os
import random
import sys
import unittest
from collections import Counter

from mpmath import mpf

from designs_in_50_digits import (BAND_PASS, BAND_STOP, BESSEL, BUTTERWORTH, CHEBYSHEV, EPSILON, GAIN_TOO_LARGE,
                                  HIGH_PASS, KINDS, LOW_PASS, NAMES, Design, Reference, Worst, error, run_designer)

COUNT = int(sys.argv[2]) if len(sys.argv) > 2 else 400
SEED = int(os.environ.get("TORVIK_SEED") or random.SystemRandom().randrange(2**32))

NEAREST = 0.5  # epsilons of the largest coefficient that rounding alone may cost
HIGHEST_ORDER = {BESSEL: 10, BUTTERWORTH: 15, CHEBYSHEV: 15}
NEAR_ZERO = [5e-324, 1e-300, 1e-100, 1e-20, 1e-15, 1e-9, 3e-7]
NEAR_HALF = [0.5, math.nextafter(0.5, 0), 0.5 - 1e-15, 0.5 - 1e-9, 0.5 - 3e-7]


def tolerance(design):
    """Band passes whose upper cut-off is half the sampling frequency lose a digit; the poles of Chebyshev are doubles."""
    if design.prototype == CHEBYSHEV:
        return 8 * design.order + 1 / (10 ** (-design.ripple / 10) - 1)
    return 4 if design.kind == BAND_PASS and 0.5 - max(design.alpha1, design.alpha2) < 1e-14 else NEAREST


def random_cutoff(generator):
    """Uniform, or logarithmic towards either end of the axis."""
    where = generator.random()
    if where < 0.4:
        return generator.uniform(1e-6, 0.5)
    distance = 10 ** generator.uniform(-18, -0.5)
    if where < 0.7:
        return distance
    return 0.5 - distance if where < 0.97 else 0.5


def random_cutoffs(generator, band):
    alpha1 = random_cutoff(generator)
    if not band:
        return alpha1, alpha1
    alpha2 = random_cutoff(generator)
    if generator.random() < 0.3:
        alpha2 = min(alpha1 * (1 + 10 ** generator.uniform(-9, 0)), 0.5)
    if alpha1 == alpha2:
        return random_cutoffs(generator, band)
    cutoffs = min(alpha1, alpha2), max(alpha1, alpha2)
    return cutoffs[::-1] if generator.random() < 0.03 else cutoffs


def random_design(generator):
    prototype, kind = generator.choice(list(NAMES)), generator.choice(list(KINDS))
    band = kind in (BAND_PASS, BAND_STOP)
    # Half of them are of the order that devices are given.
    order = (2 if band else 4) if generator.random() < 0.5 else generator.randint(1, HIGHEST_ORDER[prototype])
    ripple = -(10 ** generator.uniform(-2, 1)) if prototype == CHEBYSHEV else 0.0
    return Design(prototype, kind, order, *random_cutoffs(generator, band), ripple, generator.random() < 0.85)


def edges(prototype):
    """Every pair of cut-offs at the ends of the axis, at them and away from them."""
    alphas = [0.0] + NEAR_ZERO + [0.1, 0.25, 0.4] + NEAR_HALF
    designs = [Design(prototype, kind, 4, alpha, alpha) for kind in (LOW_PASS, HIGH_PASS) for alpha in alphas]
    for kind in (BAND_PASS, BAND_STOP):
        designs += [Design(prototype, kind, 2, low, high) for low in alphas for high in alphas if low != high]
    return designs


def has_digits(design, reference):
    """Whether the polynomials of a band pass have any at its centre, in twice a double's precision.

    What becomes of the others is left to chance: their exact gain is above the limit, but a few of them are accepted.
    """
    if design.kind != BAND_PASS:
        return True
    scale = sum(map(abs, reference.bottom)) / abs(reference.bottom_at_reference)
    return scale * EPSILON**2 < 0.001


def errors(result, reference):
    """Of x, and of y with its leading coefficient: the only other one of order 1 may be 0."""
    return error(result.x, reference.x), error(result.y + [-1], reference.y + [mpf(-1)])


class Comparison(unittest.TestCase):
    def compare(self, designs):
        counts, worst = Counter(), {}
        for design, result in zip(designs, run_designer(sys.argv[1], designs)):
            reference = Reference(design)
            outcome = self.compared(design, result, reference)
            counts[KINDS[design.kind], outcome] += 1
            if outcome == "accepted":
                for name, value in zip("xy", errors(result, reference)):
                    key = (NAMES[design.prototype], KINDS[design.kind], name)
                    worst.setdefault(key, Worst()).offer(value, design)
        for key in sorted(counts):
            print(f"{counts[key]:6} {key[0]}: {key[1]}")
        for key in sorted(worst):
            print(f"{' '.join(key)}: {worst[key]}")
        return counts

    def compared(self, design, result, reference):
        """What has become of one design."""
        if not has_digits(design, reference):
            self.assertEqual(reference.code(), GAIN_TOO_LARGE, str(design))
            return "without digits at the centre"
        self.assertEqual(result.code, reference.code(), f"{design}: gain {result.gain}, exactly {reference.gain}")
        if result.code != 0:
            return f"0x{result.code:X}"
        allowed = tolerance(design)
        self.assertLessEqual(abs(mpf(result.gain) / reference.gain - 1), allowed * EPSILON * 2, str(design))
        self.assertLessEqual(max(errors(result, reference)), allowed, str(design))
        return "accepted"


class RandomDesignsTest(Comparison):
    def test_random_designs_are_those_of_50_digits(self):
        generator = random.Random(SEED)
        counts = self.compare([random_design(generator) for _ in range(COUNT)])
        print(f"{COUNT} random designs; TORVIK_SEED={SEED}")
        for kind in KINDS.values():
            self.assertGreater(counts[kind, "accepted"], COUNT / 20)
            self.assertGreater(counts[kind, f"0x{GAIN_TOO_LARGE:X}"], COUNT / 100)
        self.assertLess(counts["bandpass", "without digits at the centre"], COUNT / 10)


class EdgesTest(Comparison):
    def test_every_edge_is_that_of_50_digits(self):
        for prototype in (BESSEL, BUTTERWORTH):
            counts = self.compare(edges(prototype))
            for kind in KINDS.values():
                self.assertGreater(counts[kind, "accepted"], 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
