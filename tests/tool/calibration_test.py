"""torvik calibration: files checked without a device, loaded into simulated six-axis amplifiers, shown, compared."""
import json
import os
import pathlib
import re
import shutil
import unittest

from tool_runner import (DEVICE_FAILED, DIFFERS, ON_WINDOWS, SUCCESS, USAGE, ToolTest, main, run)

FILE_PROBLEMS = 9
SAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples" / "calibration"
NAMES = ["version0", "version2", "version3-forces", "version3-force-and-torques", "version4-matrix-b",
         "version4-single-axis"]

# Steady bridge signals of a six-axis sensor; forces and torques are sent.
SENSOR = """
[[amplifier]]
value_type = "float32"
frequency = 1000
calibrated = true
firmware = {firmware}
""" + "\n".join(f"[[amplifier.signal]]\noffset = {signal}" for signal in (0.5, -0.25, 0.125, 0.25, -0.5, 0.75))
NEW, WITHOUT_MODEL, WITHOUT_FORMAT, WITHOUT_SLOTS = "0x00040000", "0x0003002F", "0x0003002E", "0x0003000A"

not_under_wine = unittest.skipIf(ON_WINDOWS, "many starts take too long under Wine")


class CalibrationTest(ToolTest):
    def setUp(self):
        super().setUp()
        for file in SAMPLES.iterdir():
            shutil.copy(file, self.folder)

    def sample(self, name):
        # The matrix file is looked for in the folder in front of the last backslash on Windows.
        path = self.path(f"{name}.ini")
        return path.replace("/", "\\") if ON_WINDOWS else path

    def changed(self, name, pattern, replacement):
        """A sample of which a part was written otherwise."""
        text = (self.folder / f"{name}.ini").read_text()
        changed = re.sub(pattern, replacement, text)
        self.assertNotEqual(changed, text)
        (self.folder / "changed.ini").write_text(changed)
        return self.sample("changed")

    def calibration(self, *arguments, firmware=NEW):
        return run("calibration", *arguments, f"--simulate={self.bench(SENSOR.format(firmware=firmware))}")


class Check(CalibrationTest):
    def test_tells_values_defaults_and_notes_with_their_lines(self):
        result = run("calibration", "check", self.sample("version0"))
        self.assert_ended(result, SUCCESS)
        for line in (r" +5 +\[SensorPara\] sn +SN-00001001",
                     r" +- +default +\[SensorPara\] OutScaleFactor +5 +\(missing\)",
                     r" +19 +note +\[GeometricalOffset\] OffsetY +0 +\(negative offsets become 0\)",
                     r" +1 +row 0 +-12\.0416 0\.2215 12\.183 -0\.1902 0\.0471 -0\.116"):
            self.assertRegex(result.stdout, f"(?m)^{line}$")
        self.assertRegex(result.stdout, r"(?m)^\d+ values, \d+ defaults, 1 note, 0 problems$")

    def test_every_problem_is_told_with_file_line_and_reason(self):
        path = self.changed("version2", r"InScaleFactor .*\nNxMax .*\n", "Nxmax = 50\n")
        (self.folder / "version2-matrix.txt").write_text("1 2 3 4 5 6\n" * 5)
        result = run("calibration", "check", path)
        self.assert_ended(result, FILE_PROBLEMS)
        self.assertEqual(result.stdout.count("PROBLEM"), 3)
        self.assertIn(f"\n{path}: [SensorPara] InScaleFactor: missing (code 0x30000108)\n", result.stdout)
        self.assertIn(f"\n{path}: [SensorPara] NxMax: missing (code 0x30000108)\n", result.stdout)
        self.assertIn("version2-matrix.txt: row 5: the file has too few rows (code 0x30000108)\n", result.stdout)
        self.assertIn("(not read: is NxMax meant?)", result.stdout)

    def test_a_date_is_told_with_all_its_digits(self):
        result = run("calibration", "check", self.changed("version2", "calibrationDate.*", "calibrationDate=7.3.2024"))
        self.assert_ended(result, SUCCESS)
        self.assertRegex(result.stdout, r"(?m)\[SensorPara\] calibrationDate +2024-03-07$")

    def test_a_wrong_value_is_told_with_its_line(self):
        result = run("calibration", "check", self.changed("version2", "NzMax .*", "NzMax = 100 N"))
        self.assert_ended(result, FILE_PROBLEMS)
        self.assertRegex(result.stdout, r"changed\.ini:14: \[SensorPara\] NzMax: no number \(code 0x30000108\)")

    @not_under_wine
    def test_all_samples_are_without_problems(self):
        for name in NAMES:
            result = run("calibration", "check", self.sample(name))
            self.assert_ended(result, SUCCESS)
            self.assertIn(", 0 problems\n", result.stdout)
            # The third unit of that sensor is one of a torque, but forceUnit is for the outputs 0 to 2.
            unread = re.findall(r"(?m)^ +\d+ +note +\[\S+\] (\S+) .*not read", result.stdout)
            self.assertEqual(unread, ["torqueUnit"] if name == "version3-force-and-torques" else [])

    def test_a_file_that_is_not_there_is_a_failure(self):
        self.assert_failure(run("calibration", "check", self.sample("nowhere")), USAGE, "there is no such file")

    def test_a_folder_or_a_pipe_is_a_failure(self):
        self.assert_failure(run("calibration", "check", "."), USAGE, "a folder, a pipe or a device, not a file")
        if ON_WINDOWS:
            return
        os.mkfifo(self.folder / "pipe.ini")
        pipe = self.sample("pipe")
        self.assert_failure(run("calibration", "check", pipe), USAGE, "not a file")
        self.assert_failure(self.calibration("load", pipe, "--slot", "1"), USAGE, "not a file")

    def test_a_matrix_file_that_is_a_folder_is_a_problem(self):
        result = run("calibration", "check", self.changed("version2", "(?m)^Matrix *=.*", "Matrix=inner"))
        self.assertNotIn("not a file", result.stdout)
        (self.folder / "inner").mkdir()
        result = run("calibration", "check", self.sample("changed"))
        self.assert_ended(result, FILE_PROBLEMS)
        self.assertIn("inner: a folder, a pipe or a device, not a file (code 0x30000108)", result.stdout)


class Load(CalibrationTest):
    def test_tells_what_was_written_and_that_it_reads_back(self):
        result = self.calibration("load", self.sample("version4-matrix-b"), "--slot", "3")
        self.assert_ended(result, SUCCESS)
        self.assertRegex(result.stdout, r"^'.*version4-matrix-b\.ini' written to slot 3 in \d+\.\d{3} s\n")
        for line in ("serial number   40000007", "model name      SIX-200N-8Nm", "date            2025-11-21",
                     "units           N N N Nm Nm Nm", "format          6 inputs, 6 outputs, matrix B (word 0x1)",
                     "matrix          36 elements", "matrix B        36 elements, 12 factors", "zero signals    6"):
            self.assertIn(f"\n  {line}\n", result.stdout)
        self.assertRegex(result.stdout, r"\nread back in \d+\.\d{3} s: nothing differs\n$")
        self.assertEqual(result.stderr, "")

    @not_under_wine
    def test_every_sample_reads_back(self):
        for name in NAMES:
            with self.subTest(name=name):
                result = self.calibration("load", self.sample(name), "--slot", "127")
                self.assert_ended(result, SUCCESS)
                self.assertIn(": nothing differs\n", result.stdout)

    def test_what_the_firmware_does_not_keep_differs(self):
        path = self.changed("version4-matrix-b", "SensorModel=.*", "SensorModel=OTHER")
        result = self.calibration("load", path, "--slot", "1", firmware=WITHOUT_MODEL)
        self.assert_ended(result, DIFFERS)
        self.assertIn("1 differ\n  model name: OTHER in the file, not kept by the device's firmware\n", result.stdout)

    def test_the_values_of_the_stream_change_with_the_calibration(self):
        result = self.calibration("load", self.sample("version2"), "--slot", "1", "--values", "0.5")
        self.assert_ended(result, SUCCESS)
        self.assertEqual(result.stderr, "")
        rows = re.findall(r"(?m)^(\d) +(\S+) +(\S+) +\S+$", result.stdout)
        before, after = ([float(row[column]) for row in rows] for column in (1, 2))
        signals = [0.5, -0.25, 0.125, 0.25, -0.5, 0.75]
        self.assertEqual(before, signals)
        lines = (SAMPLES / "version2-matrix.txt").read_text().replace("D", "e").replace("d", "e").splitlines()[:6]
        matrix = [[float(number) for number in line.split()] for line in lines]
        # Input scale 2; the offset (0, 0, 0.0095) makes torques of the lateral forces.
        forces = [sum(a * 2 * b for a, b in zip(row, signals)) for row in matrix]
        expected = forces[:3] + [forces[3] - (0 * forces[2] - 0.0095 * forces[1]),
                                 forces[4] - (0.0095 * forces[0] - 0 * forces[2]), forces[5]]
        for got, wanted in zip(after, expected, strict=True):
            self.assertAlmostEqual(got, wanted, delta=1e-4 * abs(wanted))

    def test_values_that_stay_signals_are_told_as_such(self):
        still = self.bench(SENSOR.format(firmware=NEW).replace("calibrated = true\n", ""))
        for simulation in (f"--simulate={still}", "--simulate"):
            result = run("calibration", "load", self.sample("version2"), "--slot", "1", "--values", "0.5", simulation)
            self.assert_ended(result, SUCCESS)
            self.assertIn("torvik: the values did not become what the calibration makes of the signals", result.stderr)
            self.assertIn("calibrated = true", result.stderr)

    def test_matrix_b_and_zero_signals_do_not_pass_for_signals(self):
        result = self.calibration("load", self.sample("version4-matrix-b"), "--slot", "1", "--values", "0.5")
        self.assert_ended(result, SUCCESS)
        self.assertEqual(result.stderr, "")

    def test_a_smaller_sensor_is_refused_by_firmware_that_knows_6x6_only(self):
        result = self.calibration("load", self.sample("version3-force-and-torques"), "--slot", "1",
                                  firmware=WITHOUT_FORMAT)
        self.assert_failure(result, USAGE, "the file is for 4 inputs and 3 outputs", "0x0003002E", "6 x 6 only",
                            "0x0003002F", "--as-6x6")
        self.assertEqual(result.stdout, "")

    def test_a_smaller_sensor_is_loaded_there_when_told_so(self):
        # The device refuses units.
        path = self.changed("version3-force-and-torques", "(force|torque)Unit=.*\n", "")
        result = self.calibration("load", path, "--slot", "1", "--as-6x6", firmware=WITHOUT_FORMAT)
        self.assert_ended(result, SUCCESS)
        self.assertIn("\n  matrix          36 elements\n", result.stdout)
        self.assertIn(": nothing differs\n", result.stdout)

    def test_firmware_that_selects_no_slots_is_told(self):
        result = self.calibration("load", self.sample("version0"), "--slot", "0", firmware=WITHOUT_SLOTS)
        self.assertIn("selects no slots", result.stdout)
        self.assertEqual(re.findall(r"(?m)^  (.*): .* not kept", result.stdout), ["zero signal 0", "zero signal 3"])
        self.assert_ended(result, DIFFERS)

    def test_a_file_with_problems_is_told_before_the_device_is_opened(self):
        path = self.changed("version2", "NzMax .*", "NzMax = -1")
        result = run("calibration", "load", path, "--slot", "1")
        self.assert_failure(result, FILE_PROBLEMS, "changed.ini:14: [SensorPara] NzMax: it has to be above 0",
                            "torvik calibration check")

    def test_what_the_device_refuses_is_a_failure_with_its_code(self):
        result = self.calibration("load", self.sample("version2"), "--slot", "1", firmware=WITHOUT_FORMAT)
        self.assert_failure(result, DEVICE_FAILED, "into slot 1 of the device", "0x40")

    def test_slots_that_there_are_not_are_refused(self):
        result = self.calibration("load", self.sample("version2"), "--slot", "128")
        self.assert_ended(result, USAGE)
        self.assertIn("0..127", result.stderr)


class Show(CalibrationTest):
    def test_tells_the_calibration_that_the_device_uses(self):
        result = self.calibration("show")
        self.assert_ended(result, SUCCESS)
        self.assertTrue(result.stdout.startswith(
            "Calibration slot 0 of the device: no calibration, only the unit matrix\n"))
        for line in (r"  serial number   0", r"  model name      none", r"  date            none",
                     r"  size            6 inputs, 6 outputs \(format word 0x0\)",
                     r"  offsets         X 0, Y 0, Z 0", r"  0 +mV/V +1 +1 +0 +0 +0 +0 +0",
                     r"  zero signals +0 +0 +0 +0 +0 +0"):
            self.assertRegex(result.stdout, f"(?m)^{line}$")

    def test_tells_the_same_as_json(self):
        told = json.loads(self.calibration("show", "--slot", "5", "--json").stdout)
        self.assertEqual((told["slot"], told["serial-number"], told["inputs"], told["outputs"]), (5, 0, 6, 6))
        self.assertEqual(told["matrix"], [[1 if row == column else 0 for column in range(6)] for row in range(6)])
        self.assertEqual(told["maxima"], [1] * 6)
        self.assertEqual(told["zero-signals"], [0] * 6)
        self.assertEqual(told["model-name"], "")
        self.assertIsNone(told["matrix-b"])

    def test_what_old_firmware_does_not_keep_is_told(self):
        told = json.loads(self.calibration("show", "--slot", "5", "--json", firmware=WITHOUT_FORMAT).stdout)
        for name in ("model-name", "date", "units", "zero-signals", "matrix-b"):
            self.assertIsNone(told[name])
        self.assertIn("not kept by the device's firmware", self.calibration("show", firmware=WITHOUT_FORMAT).stdout)


class Compare(CalibrationTest):
    def test_tells_value_by_value_what_differs(self):
        result = self.calibration("compare", self.sample("version2"), "--slot", "2")
        self.assert_ended(result, DIFFERS)
        lines = result.stdout.splitlines()
        self.assertIn("serial number: 20250017 in the file, 0 in the device", lines)
        self.assertIn("matrix row 0, column 0: 15 in the file, 1 in the device", lines)
        self.assertIn("maximum 5: 5 in the file, 1 in the device", lines)
        self.assertIn("year: 2025 in the file, 0 in the device", lines)
        self.assertNotIn("output scale", result.stdout)

    def test_a_model_name_that_the_device_has_not_is_told_as_none(self):
        result = self.calibration("compare", self.sample("version4-matrix-b"))
        self.assertIn("model name: SIX-200N-8Nm in the file, none in the device\n", result.stdout)

    def test_tells_nothing_when_nothing_differs(self):
        (self.folder / "unit.txt").write_text("\n".join(" ".join("1" if row == column else "0" for column in range(6))
                                                        for row in range(6)) + "\n")
        maxima = "".join(f"{key}=1\n" for key in ("NxMax", "NyMax", "NzMax", "NmXMax", "NmyMax", "NmzMax"))
        (self.folder / "unit.ini").write_text(
            f"[SensorPara]\nMatrix=unit.txt\nOutScaleFactor=1\nInScaleFactor=1\n{maxima}")
        result = self.calibration("compare", self.sample("unit"))
        self.assert_ended(result, SUCCESS)
        self.assertEqual(result.stdout, "")


if __name__ == "__main__":
    main()
