"""What the tests of the tool share: starting it, benches of simulated amplifiers, reading its CSV.

The environment names the programs: TORVIK_TOOL and TORVIK_EXAMPLE are command lines (under Wine with its starter in
front), TORVIK_ADAPTER_FOLDER is where the virtual adapter stands.
"""
import contextlib
import csv
import os
import pathlib
import shlex
import subprocess
import sys
import tempfile
import time
import unittest

TOOL = shlex.split(os.environ["TORVIK_TOOL"])
EXAMPLE = shlex.split(os.environ["TORVIK_EXAMPLE"])
ADAPTER_FOLDER = os.environ["TORVIK_ADAPTER_FOLDER"]
ON_WINDOWS = TOOL[-1].endswith(".exe")
ADAPTER_LIBRARY = "PCANBasic.dll" if ON_WINDOWS else "libpcanbasic.so"

only_linux = unittest.skipIf(ON_WINDOWS, "needs Linux's terminals and devices")

SUCCESS, CODE_UNKNOWN, USAGE, NO_ADAPTER, DEVICE_FAILED, STREAM_FAILED, OUTPUT_FAILED, DIFFERS = range(8)
VALUES_LOST, INTERRUPTED = 10, 130


def environment(**additions):
    """The environment without any adapter library in reach, and with a few variables more."""
    cleaned = {name: value for name, value in os.environ.items()
               if name not in ("LD_LIBRARY_PATH", "WINEPATH", "TORVIK_VIRTUAL_BENCH")}
    return cleaned | additions


def run(*arguments, env=None, **options):
    """Runs the tool to its end. Texts come with plain line ends on both systems."""
    return subprocess.run([*TOOL, *arguments], capture_output=True, text=True, timeout=120, env=env or environment(),
                          stdin=subprocess.DEVNULL, check=False, **options)


@contextlib.contextmanager
def started(*arguments, env=None, **options):
    """The tool while it runs; it is ended when the test leaves it running."""
    settings = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, "stdin": subprocess.DEVNULL} | options
    process = subprocess.Popen([*TOOL, *arguments], env=env or environment(), **settings)
    try:
        yield process
    finally:
        if process.poll() is None:
            process.kill()
        process.wait()
        for stream in (process.stdout, process.stderr):
            if stream:
                stream.close()


def rows(text):
    """The values below the CSV's header line, as numbers."""
    return [[float(field) for field in row] for row in list(csv.reader(text.splitlines()))[1:]]


def values(text, channels):
    """The measured values alone."""
    return [row[2:2 + channels] for row in rows(text)]


class ToolTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def path(self, name):
        """The path of a file in the test's folder, as the tool takes it."""
        path = self.folder / name
        return f"Z:{path}" if ON_WINDOWS else str(path)

    def bench(self, text):
        """The path of a bench file with this text."""
        (self.folder / "bench.toml").write_text(text)
        return self.path("bench.toml")

    def assert_ended(self, result, code):
        self.assertEqual(result.returncode, code, f"stdout:\n{result.stdout}\nstderr:\n{result.stderr}")

    def assert_failure(self, result, code, *parts):
        """A failure says what was tried, why, and the next thing to try, and gives no data."""
        self.assert_ended(result, code)
        self.assertRegex(result.stderr, r"(?m)^torvik: .+ failed$")
        self.assertRegex(result.stderr, r"(?m)^  next:    .+")
        for part in parts:
            self.assertIn(part, result.stderr)


def wait_until(condition, seconds=20):
    """Whether the condition came true in time."""
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            return False
        time.sleep(0.02)
    return True


def main():
    # A build under a sanitizer or under Wine is slow: its output is looked at only when a test fails.
    unittest.main(argv=[sys.argv[0], "-v", *sys.argv[1:]])
