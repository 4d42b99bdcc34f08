"""The comparison of two runs of `transcript` sees every kind of difference."""
import pathlib
import shutil
import tempfile
import unittest

import compare_transcripts

EXPORTS = "EXPORTS\n  TORVIKread\n  TORVIKgetFrequency\n  TORVIKgetStatistics\n"
CALLS = "TORVIKread(1, 1) = 1\n  out 3FF0000000000000\nTORVIKgetFrequency(1) = 0\n  wire 100 0 80 8A\n"
END = "end: 4000 calls, 5000 frames, 6000 floating-point numbers\n"
RESPONSE = "f [Hz]\tAmplitude [dB]\n4.00\t-0.01\n500.00\t-37.33\n"


class Comparison(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        for system in ("linux", "windows"):
            (self.root / system).mkdir()
            self.write(system, "transcript.txt", CALLS + END)
            self.write(system, "step.txt", RESPONSE)
            self.write(system, "tool-list.txt", "name\n", "\n")
        (self.root / "exports.def").write_text(EXPORTS)

    def write(self, system, name, text, line_end=None):
        content = text.replace("\n", line_end or {"linux": "\n", "windows": "\r\n"}[system])
        (self.root / system / name).write_bytes(content.encode())

    def compare(self):
        return compare_transcripts.compare(*(self.root / name for name in ("linux", "windows", "exports.def")))

    def assert_different(self):
        with self.assertRaises(compare_transcripts.Difference):
            self.compare()

    def test_equal_runs(self):
        self.assertEqual(self.compare(), "4000 calls of 2 exports: 5000 frames and 6000 floating-point numbers identical; "
                                         "2 other texts of 4 lines identical")

    def test_a_byte_on_the_wire(self):
        self.write("windows", "transcript.txt", (CALLS + END).replace("80 8A", "80 8B"))
        self.assert_different()

    def test_the_last_bit_of_a_value(self):
        self.write("windows", "transcript.txt", (CALLS + END).replace("3FF0000000000000", "3FF0000000000001"))
        self.assert_different()

    def test_a_call_more(self):
        self.write("linux", "transcript.txt", CALLS + CALLS + END)
        self.assert_different()

    def test_an_export_that_nobody_called(self):
        (self.root / "exports.def").write_text(EXPORTS + "  TORVIKstopTX\n")
        self.assert_different()

    def test_transcripts_without_their_end(self):
        for system in ("linux", "windows"):
            self.write(system, "transcript.txt", CALLS)
        self.assert_different()

    def test_the_last_digit_of_a_printed_number(self):
        self.write("windows", "step.txt", RESPONSE.replace("-37.33", "-37.34"))
        self.assert_different()

    def test_the_last_digit_of_the_tools_numbers(self):
        self.write("linux", "tool-list.txt", "9.99\n", "\n")
        self.write("windows", "tool-list.txt", "10.00\n", "\n")
        self.assert_different()

    def test_a_word(self):
        self.write("windows", "step.txt", RESPONSE.replace("Hz", "hz"))
        self.assert_different()

    def test_a_response_file_that_is_missing(self):
        (self.root / "windows/step.txt").unlink()
        self.assert_different()

    def test_no_response_files(self):
        for system in ("linux", "windows"):
            (self.root / system / "step.txt").unlink()
        self.assert_different()

    def test_the_line_ends_of_the_other_system(self):
        self.write("windows", "step.txt", RESPONSE, "\n")
        self.assert_different()

    def test_the_tool_with_line_ends_of_its_system(self):
        self.write("windows", "tool-list.txt", "name\n", "\r\n")
        self.assert_different()

    def test_a_run_that_is_missing(self):
        shutil.rmtree(self.root / "windows")
        with self.assertRaises(OSError):
            self.compare()


if __name__ == "__main__":
    unittest.main()
