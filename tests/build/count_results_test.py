"""Every kind of result counts as what it is: count_results_test.py COUNT-RESULTS.py"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

COUNT_RESULTS = sys.argv.pop(1)


class Results(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        for name in ("results", "googletest-programs"):
            (self.root / name).mkdir()

    def count(self, *tests):
        """Passed, failed and skipped of a run with these tests."""
        (self.root / "ctest.xml").write_text(f"<testsuite>{''.join(tests)}</testsuite>")
        failures = self.root / "failures.txt"
        printed = subprocess.run([sys.executable, COUNT_RESULTS, self.root, failures], capture_output=True, text=True,
                                 check=True).stdout
        passed, failed, skipped = (int(number) for number in printed.split())
        self.assertEqual(len(failures.read_text().splitlines()), failed)
        return passed, failed, skipped

    def count_cases(self, status, *cases):
        """The same for a GoogleTest program with these cases."""
        (self.root / "googletest-programs/cases").touch()
        (self.root / "results/cases.xml").write_text(f"<testsuites>{''.join(cases)}</testsuites>")
        return self.count(test(status, "cases"))

    def test_checks_that_pass_and_fail(self):
        self.assertEqual(self.count(test("run"), test("run"), test("fail")), (2, 1, 0))

    def test_a_check_that_is_left_out_on_purpose(self):
        self.assertEqual(self.count(test("disabled", reason="Disabled")), (0, 0, 1))
        self.assertEqual(self.count(test("notrun", reason="SKIP_RETURN_CODE=77")), (0, 0, 1))

    def test_a_check_whose_tool_is_missing(self):
        for reason in ("Unable to find executable", "Required Files Missing", "Fixture dependency failed"):
            self.assertEqual(self.count(test("notrun", reason=reason)), (0, 1, 0), reason)

    def test_skipped_cases_of_a_python_program(self):
        self.assertEqual(self.count(test("run", output="Ran 5 tests in 0.1s\n\nOK (skipped=2)\n")), (1, 0, 2))
        self.assertEqual(self.count(test("run", output="Ran 2 tests in 0.1s\n\nOK (skipped=2)\n")), (0, 0, 2))
        self.assertEqual(self.count(test("run", output="Ran 2 tests in 0.1s\n\nOK\n")), (1, 0, 0))

    def test_cases_of_a_program(self):
        cases = ('<testcase status="run" result="completed"/>', '<testcase status="run" result="skipped"/>',
                 '<testcase status="notrun" result="suppressed"/>',
                 '<testcase classname="A" name="b" status="run" result="completed"><failure/></testcase>')
        self.assertEqual(self.count_cases("run", *cases[:3]), (1, 0, 2))
        self.assertEqual(self.count_cases("fail", *cases), (1, 1, 2))

    def test_a_program_that_ends_without_a_failed_case(self):
        self.assertEqual(self.count_cases("fail", '<testcase status="run" result="completed"/>'), (1, 1, 0))

    def test_a_program_without_a_report(self):
        (self.root / "googletest-programs/name").touch()
        self.assertEqual(self.count(test("run")), (0, 1, 0))
        self.assertEqual(self.count(test("notrun", reason="Unable to find executable")), (0, 1, 0))


def test(status, name="name", reason=None, output=""):
    skipped = f'<skipped message="{reason}"/>' if reason else ""
    return f'<testcase name="{name}" status="{status}">{skipped}<system-out>{output}</system-out></testcase>'


if __name__ == "__main__":
    unittest.main()
