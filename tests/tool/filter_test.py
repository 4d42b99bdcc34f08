"""torvik filter: designs against known values, plots, and the filters of a simulated amplifier."""
import math
import os
import re
import subprocess
import unittest
import xml.etree.ElementTree

from tool_runner import (DEVICE_FAILED, DIFFERS, NO_ADAPTER, ON_WINDOWS, OUTPUT_FAILED, SUCCESS, USAGE, ToolTest, environment,
                         main, only_linux, run)

NOT_DRAWN = 8
NOISE = """
[[amplifier]]
channels = 1
value_type = "float32"
frequency = 1000
[[amplifier.signal]]
offset = 0.5
noise = 0.1
"""
FIXED_POINT = "[[amplifier]]\nchannels = 1\nfrequency = 1000\nprotocol = 32\n"
needs_gnuplot = unittest.skipIf(ON_WINDOWS, "needs gnuplot, which Wine has not")
not_under_wine = unittest.skipIf(ON_WINDOWS, "many starts take too long under Wine")


def numbers(pattern, text):
    """The numbers that a pattern's groups match, line by line."""
    return [[float(number) for number in match] for match in re.findall(pattern, text)]


def coefficients(page):
    """Designed and held coefficients, x[0] to y[3]."""
    return numbers(r"(?m)^  [xy]\[\d\]   (\S+) +(\S+)$", page)


class Design(ToolTest):
    def design(self, *arguments):
        result = run("filter", "design", *arguments)
        self.assert_ended(result, SUCCESS)
        return result

    def test_a_quarter_of_the_sampling_frequency_gives_the_text_book_filter(self):
        # With the cut-off at fs / 4 the prewarped frequency is 1: all odd feedback coefficients vanish.
        page = self.design("lowpass", "butterworth", "250", "--rate", "1000").stdout
        designed = [pair[0] for pair in coefficients(page)]
        b0 = 0.09398085143379446
        for got, expected in zip(designed, [b0, 4 * b0, 6 * b0, 4 * b0, b0,
                                            -0.017664800872441926, 0.0, -0.4860288220682922, 0.0], strict=True):
            self.assertAlmostEqual(got, expected, delta=1e-13)
        poles = numbers(r"(?m)^  (\S+) [+-] (\S+) i   magnitude (\S+)$", page)
        self.assertEqual(len(poles), 4)
        for real, imaginary, magnitude in poles:
            self.assertAlmostEqual(real, 0.0, delta=1e-12)
            self.assertAlmostEqual(imaginary, magnitude, delta=1e-12)
        self.assertEqual(sorted({round(pole[2], 6) for pole in poles}),
                         [round(math.tan(math.pi / 16), 6), round(math.tan(3 * math.pi / 16), 6)])

    def test_half_power_points_delay_and_gain_are_told(self):
        page = self.design("lowpass", "butterworth", "50", "--rate", "1000").stdout
        self.assertRegex(page, r"-3 dB points, designed +50 Hz\n")
        self.assertRegex(page, r"Gain at 0 Hz  designed 1, in the device (0\.99|1)")
        delay = 2 * (math.sin(math.pi / 8) + math.sin(3 * math.pi / 8)) / (2 * math.tan(math.pi * 0.05))
        [[samples, milliseconds]] = numbers(r"Delay at 0 Hz  (\S+) samples, (\S+) ms", page)
        self.assertAlmostEqual(samples, delay, delta=1e-4)
        self.assertAlmostEqual(milliseconds, delay, delta=1e-4)

    def test_bands_have_two_half_power_points(self):
        page = self.design("bandstop", "butterworth", "45", "55", "--rate", "1000").stdout
        self.assertRegex(page, r"-3 dB points, designed +45 Hz, 55 Hz\n")

    def test_the_device_s_number_format_is_that_of_the_protocol_kind(self):
        page = self.design("highpass", "bessel", "100", "--rate", "1000", "--protocol", "32").stdout
        self.assertIn("protocol kind 32 holds them (24 fraction bits)", page)
        for designed, held in coefficients(page):
            self.assertEqual(held * 2**24, round(held * 2**24))
            self.assertAlmostEqual(designed, held, delta=2**-25)

    def test_the_sampling_frequency_is_the_device_s_unless_it_is_given(self):
        page = self.design("lowpass", "butterworth", "10", "--simulate").stdout
        self.assertIn("Sampling frequency 100 Hz (of the device)", page)
        self.assertEqual(coefficients(page),
                         coefficients(self.design("lowpass", "butterworth", "100", "--rate", "1000").stdout))

    def test_an_unstable_design_is_warned_of(self):
        result = self.design("lowpass", "butterworth", "900", "--rate", "1000")
        self.assertIn("warning: the filter is unstable", result.stderr)

    def test_a_design_that_devices_cannot_hold_is_refused_with_its_code(self):
        result = run("filter", "design", "lowpass", "butterworth", "0.01", "--rate", "1000")
        self.assert_failure(result, USAGE, "0x30000209", "choose a higher cut-off frequency")
        self.assertEqual(result.stdout, "")

    def test_cutoffs_that_are_none_are_told_as_such(self):
        for cutoff in ("0", "-5", "nan", "1000"):
            result = run("filter", "design", "lowpass", "butterworth", cutoff, "--rate", "1000")
            self.assert_failure(result, USAGE, "does not lie between 0 and half the sampling frequency, 500 Hz (code 0x3",
                                "give cut-off frequencies above 0 and below 500 Hz")
            self.assertNotIn("higher cut-off", result.stderr)

    @not_under_wine
    def test_odd_cutoffs_end_with_a_result_or_a_code(self):
        for f1, f2 in (("nan", "5"), ("inf", "5"), ("0", "5"), ("5", "5"), ("7", "5"), ("5", "1e300")):
            for kind in ("bandpass", "bandstop"):
                result = run("filter", "design", kind, "bessel", f1, f2, "--rate", "1000")
                self.assertIn(result.returncode, (SUCCESS, USAGE), (kind, f1, f2, result.stderr))
                self.assertTrue(result.stdout or "0x300002" in result.stderr, (kind, f1, f2))

    def test_wrong_use_is_refused(self):
        for arguments, says in ((["notch", "bessel", "5"], "'notch' is none of lowpass"),
                                (["lowpass", "elliptic", "5"], "'elliptic' is none of bessel"),
                                (["lowpass", "bessel", "soon"], "'soon' is not a frequency"),
                                (["lowpass", "bessel", "5", "--rate", "0"], "'0' is not a number above 0"),
                                (["lowpass", "bessel", "5", "6", "--rate", "100"], "leave F2 out"),
                                (["bandpass", "bessel", "5", "--rate", "100"], "F1 F2"),
                                (["lowpass", "bessel"], "F1")):
            result = run("filter", "design", *arguments)
            self.assert_ended(result, USAGE)
            self.assertIn(says, result.stderr)
            self.assertEqual(result.stdout, "")

    def test_without_a_rate_a_device_is_needed(self):
        for result in (run("filter", "design", "lowpass", "bessel", "5"),
                       run("filter", "plot", self.path("low.png"), "lowpass", "bessel", "5")):
            self.assert_failure(result, NO_ADAPTER, "without --rate", "give the sampling frequency with --rate HZ",
                                "or --simulate")


class Plot(ToolTest):
    def plot(self, name, *arguments, **options):
        return run("filter", "plot", self.path(name), "lowpass", "butterworth", "10", *arguments, **options)

    def text_rows(self, name):
        return [[float(field) for field in line.split("\t")]
                for line in (self.folder / name).read_text().splitlines()
                if re.match(r"^-?[\d.]+\t-?[\d.]+$", line)]

    def assert_response_files(self):
        step = self.text_rows("low-step.txt")
        self.assertGreaterEqual(len(step), 20)
        self.assertAlmostEqual(step[-1][1], 1.0, delta=0.02)
        frequencies = self.text_rows("low-frequency.txt")
        self.assertEqual(len(frequencies), 500)
        self.assertAlmostEqual(min(frequencies, key=lambda row: abs(row[0] - 10))[1], -3.01, delta=0.2)

    @needs_gnuplot
    def test_draws_png(self):
        result = self.plot("low.png", "--rate", "100")
        self.assert_ended(result, SUCCESS)
        self.assertEqual(len(result.stdout.splitlines()), 4)
        picture = (self.folder / "low.png").read_bytes()
        self.assertTrue(picture.startswith(b"\x89PNG\r\n"))
        self.assertGreater(len(picture), 4000)
        self.assert_response_files()

    @needs_gnuplot
    def test_draws_svg_with_ideal_and_device_in_both_panels(self):
        result = self.plot("low.svg", "--rate", "100")
        self.assert_ended(result, SUCCESS)
        picture = xml.etree.ElementTree.parse(self.folder / "low.svg")
        labels = ["".join(label.itertext()).strip() for label in picture.iter("{http://www.w3.org/2000/svg}text")]
        for words, times in (("Step response", 1), ("Frequency response", 1), ("ideal", 2), ("in the device", 2)):
            self.assertEqual(labels.count(words), times, words)

    @needs_gnuplot
    def test_the_device_s_files_are_the_same_as_those_without_a_device(self):
        self.assert_ended(self.plot("low.png", "--rate", "100"), SUCCESS)
        self.assert_ended(self.plot("device.png", "--simulate"), SUCCESS)
        for kind in ("step", "frequency"):
            self.assertEqual((self.folder / f"device-{kind}.txt").read_text(),
                             (self.folder / f"low-{kind}.txt").read_text())

    @needs_gnuplot
    def test_Plot_AgainFromItsCommands_DrawsTheSamePicture(self):
        self.assert_ended(self.plot("low.svg", "--rate", "100"), SUCCESS)
        picture = (self.folder / "low.svg").read_bytes()
        (self.folder / "low.svg").unlink()
        subprocess.run(["gnuplot", "-c", "low.gnuplot", "low.svg"], cwd=self.folder, check=True)
        self.assertEqual((self.folder / "low.svg").read_bytes(), picture)

    @not_under_wine
    def test_Plot_NameWithAControlCharacter_IsRejected(self):
        for character in "\n\r\t\x01\x1b\x7f":
            result = self.plot(f"low{character}system 'touch {self.path('made')}'{character}.png", "--rate", "100")
            self.assert_failure(result, USAGE, "contains a control character")
            self.assertEqual(list(self.folder.iterdir()), [])

    @needs_gnuplot
    def test_Plot_NameThatGnuplotCouldInterpret_IsOnlyAName(self):
        for name in ("|touch made;", "<touch made;", "-e 'system \"touch made\"'", "'.system('touch made').'",
                     "`touch made`", "$(touch made)", "~", '"', "@ARG1", "%d"):
            # Relative: nothing before the name keeps gnuplot from interpreting its first character.
            result = run("filter", "plot", "--rate", "100", "--", f"{name}.png", "lowpass", "butterworth", "10",
                         cwd=self.folder)
            self.assert_ended(result, SUCCESS)
            self.assertFalse((self.folder / "made").exists(), name)
            self.assertTrue((self.folder / f"{name}.png").read_bytes().startswith(b"\x89PNG\r\n"), name)

    def test_without_gnuplot_it_says_what_to_install(self):
        # Under Wine there is none; its starter needs the path.
        no_gnuplot = environment() if ON_WINDOWS else environment(PATH=self.path("nowhere"))
        result = self.plot("low.png", "--rate", "100", env=no_gnuplot)
        self.assert_failure(result, NOT_DRAWN, "there is no program gnuplot", "gnuplot-nox")
        self.assertFalse((self.folder / "low.png").exists())
        self.assert_response_files()

    @only_linux
    def test_Plot_ThatGnuplotDoesNotFinish_KeepsTheOldPicture(self):
        gnuplot = self.folder / "gnuplot"
        gnuplot.write_text("#!/bin/sh\necho half >\"$3\"\nexit 3\n")  # of: gnuplot -c COMMANDS PICTURE
        gnuplot.chmod(0o755)
        (self.folder / "low.png").write_text("old")
        result = self.plot("low.png", "--rate", "100",
                           env=environment(PATH=f"{self.folder}{os.pathsep}{os.environ['PATH']}"))
        self.assert_failure(result, NOT_DRAWN, "exit code 3")
        self.assertEqual((self.folder / "low.png").read_text(), "old")
        self.assertIn("set output ARG1", (self.folder / "low.gnuplot").read_text())
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()),
                         ["gnuplot", "low-frequency.txt", "low-step.txt", "low.gnuplot", "low.png"])

    @only_linux
    def test_Plot_WithoutRoomForItsFiles_KeepsTheOldOnes(self):
        import resource
        (self.folder / "low-step.txt").write_text("old")
        result = self.plot("low.png", "--rate", "100",
                           preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100)))
        self.assert_failure(result, OUTPUT_FAILED, "low-step.txt")
        self.assertEqual((self.folder / "low-step.txt").read_text(), "old")
        self.assertEqual([path.name for path in self.folder.iterdir()], ["low-step.txt"])

    def test_other_formats_are_refused(self):
        self.assert_failure(self.plot("low.gif", "--rate", "100"), USAGE, "neither .png nor .svg")

    def test_a_folder_that_is_not_there_is_told_with_the_system_s_code(self):
        self.assert_failure(self.plot("nowhere/low.png", "--rate", "100"), OUTPUT_FAILED, "0x3100000", "check the path")


class Device(ToolTest):
    def load(self, *arguments, bench=NOISE):
        return run("filter", "load", *arguments, "--simulate", self.bench(bench))

    def test_a_loaded_filter_is_read_back(self):
        page = run("filter", "design", "lowpass", "butterworth", "60", "--rate", "1000").stdout
        result = self.load("2", "lowpass", "butterworth", "60")
        self.assert_ended(result, SUCCESS)
        self.assertIn("IIR filter 2: off low pass, order 4, 60 Hz\n", result.stdout)
        shown = re.findall(r"(?m)^  [xy]\[\d\]   (.+)$", result.stdout)
        self.assertEqual(len(shown), 9)
        for text, (_, held) in zip(shown, coefficients(page), strict=True):
            self.assertAlmostEqual(float(text), held, delta=2**-24)
        self.assertTrue(any(text.startswith("-") for text in shown))

    @not_under_wine
    def test_every_kind_is_loaded_in_both_protocol_kinds(self):
        for bench, protocol in ((NOISE, "16"), (FIXED_POINT, "32")):
            for kind, cutoffs in (("lowpass", ["100"]), ("highpass", ["100"]), ("bandpass", ["50", "100"]),
                                  ("bandstop", ["50", "100"])):
                result = self.load("1", kind, "bessel", *cutoffs, "--on", "--protocol", protocol, bench=bench)
                self.assert_ended(result, SUCCESS)
                self.assertIn("IIR filter 1: on", result.stdout)
                self.assertIn(" to 100 Hz" if len(cutoffs) == 2 else "100 Hz", result.stdout)

    def test_the_stream_s_noise_drops(self):
        result = self.load("1", "lowpass", "butterworth", "50", "--noise", "2")
        self.assert_ended(result, SUCCESS)
        [[before, after]] = numbers(r"(?m)^1 +(\S+) +(\S+) +\S+ dB$", result.stdout)
        # Evenly spread noise of half the width 0.1; of its band the filter passes 1.026 x 50 of 500 Hz.
        self.assertAlmostEqual(before, 0.1 / math.sqrt(3), delta=0.004)
        self.assertAlmostEqual(after / before, math.sqrt(1.026 * 50 / 500), delta=0.06)

    def test_show_tells_the_filters_of_both_banks(self):
        result = run("filter", "show", "--simulate")
        self.assert_ended(result, SUCCESS)
        lines = result.stdout.splitlines()
        self.assertEqual([line.split(":")[0] for line in lines],
                         [f"{bank} filter {number}" for bank in ("IIR", "FIR") for number in range(1, 9)])
        self.assertTrue(all(line.endswith(": off none (order 0)") for line in lines))

    def test_show_of_one_filter_tells_the_coefficients_of_its_order(self):
        for bank in ([], ["--fir"]):
            result = run("filter", "show", "3", *bank, "--simulate")
            self.assertEqual(re.findall(r"(?m)^  ([xy]\[\d\]   .*)$", result.stdout), ["x[0]   1"])

    def test_filters_are_switched_on_and_off(self):
        self.assertRegex(run("filter", "on", "4", "--simulate").stdout, r"^IIR filter 4: on ")
        self.assertRegex(run("filter", "on", "8", "--fir", "--simulate").stdout, r"^FIR filter 8: on ")
        self.assertEqual(run("filter", "on", "--simulate").stdout.count(": on "), 8)
        self.assertEqual(run("filter", "off", "--simulate").stdout.count(": off "), 8)

    def test_numbers_beyond_the_bank_are_refused(self):
        for arguments in (["on", "9"], ["show", "0"], ["load", "9", "lowpass", "bessel", "5"]):
            result = run("filter", *arguments, "--simulate")
            self.assert_ended(result, USAGE)
            self.assertIn("1..8", result.stderr)

    def test_an_unstable_filter_is_not_loaded(self):
        result = self.load("1", "lowpass", "butterworth", "900")
        self.assert_failure(result, USAGE, "the filter is unstable", "--force")
        self.assertEqual(result.stdout, "")

    def test_Load_WithTheWrongProtocolKind_SwitchesNothingOnAndAsksForTheRightOne(self):
        for bench, wrong, right in ((NOISE, "32", "16"), (FIXED_POINT, "16", "32")):
            result = self.load("1", "lowpass", "butterworth", "100", "--on", "--protocol", wrong, bench=bench)
            self.assert_failure(result, DIFFERS, "IIR filter 1: x[0]: 0.0048243", "the former filter has been written back",
                                "nothing has been stored", f"is '--protocol {wrong}' right for this device?",
                                f"it takes the numbers of protocol kind {right}")
            self.assertEqual(result.stdout, "")

    def test_what_the_library_refuses_is_a_failure(self):
        result = self.load("1", "lowpass", "butterworth", "900", "--force")
        self.assert_failure(result, DEVICE_FAILED, "0x30000100")


if __name__ == "__main__":
    main()
