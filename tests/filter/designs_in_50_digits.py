"""Filter designs in 50 digits or more, made from the definitions of the filters alone, and the designer to compare with."""

import math
import subprocess

from mpmath import mp, mpc, mpf

mp.dps = 50
EPSILON = 2.0**-52

BESSEL, BUTTERWORTH, CHEBYSHEV = 0x1, 0x2, 0x4
LOW_PASS, HIGH_PASS, BAND_PASS, BAND_STOP = 0x20, 0x40, 0x80, 0x100
GIVEN = 0x1400  # order and cut-offs
NO_PREWARP = 0x4000
KINDS = {LOW_PASS: "lowpass", HIGH_PASS: "highpass", BAND_PASS: "bandpass", BAND_STOP: "bandstop"}
NAMES = {BESSEL: "Bessel", BUTTERWORTH: "Butterworth", CHEBYSHEV: "Chebyshev"}

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
    def __init__(self, prototype, kind, order, alpha1, alpha2, ripple=0.0, prewarped=True):
        self.prototype, self.kind, self.order = prototype, kind, order
        self.alpha1, self.alpha2 = alpha1, alpha2
        self.ripple, self.prewarped = ripple, prewarped
        self.band = kind in (BAND_PASS, BAND_STOP)

    def line(self):
        options = self.prototype | self.kind | GIVEN | (0 if self.prewarped else NO_PREWARP)
        return f"{options} {self.order} {self.alpha1!r} {self.alpha2!r} {self.ripple!r} 0 0 0\n"

    def __str__(self):
        cutoffs = f"{self.alpha1!r}" + (f" .. {self.alpha2!r}" if self.band else "")
        ripple = f" with {-self.ripple!r} dB" if self.prototype == CHEBYSHEV else ""
        prewarped = "" if self.prewarped else ", not prewarped"
        return f"{NAMES[self.prototype]} {KINDS[self.kind]} of order {self.order}{ripple} at {cutoffs}{prewarped}"


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


def circle_poles(order):
    """Of a Butterworth filter."""
    angles = [mp.pi * (2 * k + order + 1) / (2 * order) for k in range(order)]
    return [mpc(mp.cos(angle), mp.sin(angle)) for angle in angles]


def prototype_poles(design):
    order = design.order
    if design.prototype == BUTTERWORTH:
        return circle_poles(order)
    if design.prototype == CHEBYSHEV:
        ripple = mp.sqrt(mpf(10) ** (-mpf(design.ripple) / 10) - 1)
        y = mp.asinh(1 / ripple) / order
        return [mpc(pole.real * mp.sinh(y), pole.imag * mp.cosh(y)) for pole in circle_poles(order)]
    poles = []
    for row_order, real, imaginary in BESSEL_POLES:
        if row_order == order:
            pole = mpc(mpf(real), mpf(imaginary))
            poles += [pole] if pole.imag == 0 else [pole, mp.conj(pole)]
    return poles


def analogue_frequency(design, alpha):
    """In radians, for a sampling frequency of 1."""
    if not design.prewarped:
        return 2 * mp.pi * mpf(alpha)
    if alpha == 0.5:
        # The tangent has no value; that of the double nearest to the right angle counts.
        return 2 * mp.tan(mpf(math.pi / 2))
    return 2 * mp.tan(mp.pi * mpf(alpha))


def analogue(design):
    """Poles and zeros in the s-plane."""
    w1, w2 = (analogue_frequency(design, alpha) for alpha in (design.alpha1, design.alpha2))
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


def digits_needed(design):
    """50 are left when roots this close to each other and to the ends of the axis have been subtracted."""
    alphas = [design.alpha1, design.alpha2] if design.band else [design.alpha1]
    distances = [abs(distance) for alpha in alphas for distance in (alpha, 0.5 - alpha)]
    distances += [abs(design.alpha2 - design.alpha1)] if design.band else []
    decades = max([-math.log10(distance) for distance in distances if distance != 0] + [17])
    return 50 + 4 * math.ceil(decades)


def reference_point(design):
    """Where a design that is no band stop is scaled to a gain of 1."""
    if design.kind == BAND_PASS:
        return mp.expj(mp.pi * (mpf(design.alpha1) + mpf(design.alpha2)))
    return {LOW_PASS: mpf(1), HIGH_PASS: mpf(-1)}[design.kind]


class Reference:
    """The same design; its gain is computed from the roots."""

    def __init__(self, design):
        with mp.workdps(digits_needed(design)):
            poles, zeros = analogue(design)
            self.poles = [(2 + pole) / (2 - pole) for pole in poles]
            self.zeros = [(2 + zero) / (2 - zero) for zero in zeros]
            self.zeros += [mpf(-1)] * (len(self.poles) - len(self.zeros))
            self.top, self.bottom = expand(self.zeros), expand(self.poles)
            self.gain = abs(self.gain_of(design))
            if design.kind != BAND_STOP:
                self.bottom_at_reference = mp.fprod(reference_point(design) - pole for pole in self.poles)
            self.x = [coefficient / self.gain for coefficient in self.top]
            self.y = [-coefficient for coefficient in self.bottom[:-1]]
            self.sum = sum(abs(coefficient) for coefficient in self.x + self.y)

    def ratio(self, z):
        """Of the polynomials; NaN when a pole and a zero are there."""
        top, bottom = (mp.fprod(z - root for root in roots) for roots in (self.zeros, self.poles))
        if bottom != 0:
            return top / bottom
        return mp.inf if top != 0 else mp.nan

    def gain_of(self, design):
        if design.kind == BAND_STOP:
            return mp.sqrt(self.ratio(mpf(1)) * self.ratio(mpf(-1)))
        return self.ratio(reference_point(design))

    def code(self):
        """A gain that is NaN exceeds no limit, and a sum that is NaN keeps none."""
        if self.gain > LARGEST_GAIN:
            return GAIN_TOO_LARGE
        return 0 if self.sum < SUM_LIMIT else SUM_TOO_LARGE


def error(computed, exact):
    """The largest error in epsilons of the largest coefficient."""
    scale = max(abs(value) for value in exact)
    return float(max(abs(mpf(value) - right) for value, right in zip(computed, exact)) / scale / EPSILON)


class Worst:
    """The largest error so far and whose it was."""

    def __init__(self):
        self.error, self.design = 0.0, None

    def offer(self, value, design):
        if value > self.error:
            self.error, self.design = value, design

    def __str__(self):
        return f"{self.error:.4g} epsilon ({self.design})"
