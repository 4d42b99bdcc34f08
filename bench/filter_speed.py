#!/usr/bin/python3
"""How much faster than SciPy and NumPy the library is: filter_speed.py BUILD_DIRECTORY [--strict] [ROUNDS]

In each round both sides design every kind of filter, simulate and write a frequency response of 1,000 lines, and write
the same lines once more without simulating, in turn and repeatedly; the ratio of the shortest times is that of the
round, and the median of all rounds counts. The results of both sides are compared first.
"""
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

import numpy
from scipy import signal

BUILD = pathlib.Path(sys.argv[1])
STRICT = "--strict" in sys.argv[2:]  # exit code 3 when a goal is missed
ROUNDS = next((int(word) for word in sys.argv[2:] if word.isdigit()), 15)
REPETITIONS, DESIGNS, FILES = 10, 60, 3  # so many designs take about as long as one of SciPy's

BESSEL, BUTTERWORTH, GIVEN = 0x1, 0x2, 0x1400
# Name, option, order, cut-offs as fractions of the sampling frequency.
KINDS = [("lowpass", 0x20, 4, [0.1]), ("highpass", 0x40, 4, [0.1]),
         ("bandpass", 0x80, 2, [0.1, 0.2]), ("bandstop", 0x100, 2, [0.1, 0.2])]
FS, F_START, F_STOP, LINES = 1000.0, 1.0, 499.0, 1000  # at 500 Hz the test signal is nothing but rounding
SILENCE = -320.0

goals_met = []


class Library:
    """Measures itself in a process of its own."""

    def __init__(self):
        self.process = subprocess.Popen([BUILD / "bench/filter_times"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        text=True)

    def ask(self, order):
        self.process.stdin.write(order + "\n")
        self.process.stdin.flush()
        answer = self.process.stdout.readline().split()
        if not answer:
            sys.exit(f"not measured: {order}")
        return [float(number) for number in answer]

    def design(self, prototype, kind, count):
        _, option, order, cutoffs = kind
        numbers = f"{cutoffs[0]} {cutoffs[-1]}"
        return self.ask(f"design {count} {prototype | option | GIVEN} {order} {numbers}")


def scipy_design(prototype, kind):
    name, _, order, cutoffs = kind
    corners = [2 * alpha for alpha in cutoffs] if len(cutoffs) > 1 else 2 * cutoffs[0]
    if prototype == BUTTERWORTH:
        return signal.butter(order, corners, name)
    return signal.bessel(order, corners, name, norm="mag")


def simulate(b, a):
    """The amplitudes that the library's simulation finds, all frequencies at once."""
    frequencies = numpy.linspace(F_START, F_STOP, LINES)
    phases = 2 * numpy.pi / FS * frequencies[:, None] * numpy.arange(1000)
    inputs = numpy.sin(phases).astype(numpy.float32)
    outputs = signal.lfilter(b.astype(numpy.float32), a.astype(numpy.float32), inputs, axis=1)
    mean_squares = (numpy.mean(numpy.square(part, dtype=numpy.float64), axis=1)
                    for part in (outputs[:, 500:], inputs[:, :500]))
    ratios = numpy.sqrt(numpy.divide(*mean_squares))
    return frequencies, 20 * numpy.log10(ratios, out=numpy.full(LINES, SILENCE / 20), where=ratios > 2.3e-16)


def save(path, frequencies, amplitudes):
    heading = f"Frequency response of IIR low pass 4th order. Cutoff freq: {0.1 * FS:.3f} Sampling freq: {FS:.1f}\n"
    numpy.savetxt(path, numpy.column_stack((frequencies, amplitudes)), fmt="%.2f", delimiter="\t",
                  header=heading + "f [Hz]\tAmplitude [dB]", comments="")


def seconds(action, *arguments):
    begun = time.perf_counter()
    action(*arguments)
    return time.perf_counter() - begun


def ratio_of_best(pairs):
    """Of the times of both sides in turn: the shortest ones, which other programs have interrupted least."""
    ours, theirs = zip(*pairs)
    return min(theirs) / min(ours)


def report(name, ratios, goal):
    ratio = statistics.median(ratios)
    quarter = len(ratios) // 4
    middle = sorted(ratios)[quarter:len(ratios) - quarter]
    print(f"{name:<68} {ratio:>8.2f}  {middle[0]:>7.2f} .. {middle[-1]:<7.2f}  >= {goal:<5} "
          f"{'met' if ratio >= goal else 'missed'}", flush=True)
    goals_met.append(ratio >= goal)


def check_design(numbers, b, a, name):
    """The library's coefficients stand by rising power, and it scales a band pass at another frequency."""
    x, y = numbers[1:len(b) + 1], numbers[len(b) + 1:]
    scale = max(x, key=abs) / max(b[::-1], key=abs)
    if not (numpy.allclose(x, b[::-1] * scale, atol=1e-9) and abs(scale - 1) < 0.1 and
            numpy.allclose(y, -a[:0:-1], atol=1e-9)):
        sys.exit(f"the designs of {name} differ")


def measure_designs(library):
    for prototype, name, goal in ((BUTTERWORTH, "butter", 50), (BESSEL, "bessel", 100)):
        for kind in KINDS:
            check_design(library.design(prototype, kind, 1), *scipy_design(prototype, kind), f"{name} {kind[0]}")
            ratios = []
            for _ in range(ROUNDS):
                pairs = [(library.design(prototype, kind, DESIGNS)[0], seconds(scipy_design, prototype, kind))
                         for _ in range(REPETITIONS)]
                ratios.append(ratio_of_best(pairs))
            report(f"design of a {kind[0]}: time of scipy.signal.{name} to the library's", ratios, goal)


def check_files(ours, theirs):
    heading, rows = ours.read_text().split("\n", 2)[:2], numpy.loadtxt(ours, skiprows=2)
    if heading != theirs.read_text().split("\n", 2)[:2]:
        sys.exit("the headings differ")
    expected = numpy.loadtxt(theirs, skiprows=2)
    # What single precision leaves of the signal far down in the stop band is noise.
    loud = expected[:, 1] > -90
    if rows.shape != (LINES, 2) or not numpy.allclose(rows[:, 0], expected[:, 0], atol=0.011):
        sys.exit("the frequencies differ")
    if loud.sum() < 300 or not numpy.allclose(rows[loud, 1], expected[loud, 1], atol=0.05):
        sys.exit("the amplitudes differ")


def measure_files(library, directory):
    ours, theirs = directory / "ours.txt", directory / "theirs.txt"
    b, a = signal.butter(4, 0.2)

    def write_response():
        save(theirs, *simulate(b, a))

    library.ask(f"response {ours}")
    write_response()
    check_files(ours, theirs)
    written, rows = ours.read_bytes(), simulate(b, a)
    wholes, writings = [], []
    for _ in range(ROUNDS):
        whole, writing = [], []
        for _ in range(FILES):
            # New files: emptying an old one may wait for the disk.
            ours.unlink()
            theirs.unlink()
            whole.append((library.ask(f"response {ours}")[0], seconds(write_response)))
            theirs.unlink()
            writing.append((library.ask(f"writing {ours}")[0], seconds(save, theirs, *rows)))
        wholes.append(ratio_of_best(whole))
        writings.append(ratio_of_best(writing))
    if ours.read_bytes() != written:
        sys.exit("the lines are not written as they were")
    report("frequency file of 1,000 lines: time of numpy, scipy to the library's", wholes, 1)
    report("writing of 1,000 lines alone: time of numpy.savetxt to the library's", writings, 5)


library = Library()
measure_designs(library)
with tempfile.TemporaryDirectory() as folder:
    measure_files(library, pathlib.Path(folder))
sys.exit(0 if all(goals_met) or not STRICT else 3)
