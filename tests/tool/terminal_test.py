"""torvik stream on a terminal (Linux): the live table, its end, and that the device is released on every way out."""
import os
import pathlib
import pty
import re
import signal
import struct
import fcntl
import termios
import unittest

from tool_runner import (INTERRUPTED, STREAM_FAILED, SUCCESS, ToolTest, environment, main, started, wait_until)

FAST = "[[amplifier]]\nfrequency = 1000\n"
STOPPING = "[[amplifier]]\nfrequency = 0.001\n"
CURSOR_SHOWN, CURSOR_HIDDEN, SCREEN_CLEARED = "\x1b[?25h", "\x1b[?25l", "\x1b[2J"


class Terminal:
    """A terminal of 100 columns on which the tool runs; collects what it draws."""

    def __init__(self):
        self.master, self.slave = pty.openpty()
        fcntl.ioctl(self.slave, termios.TIOCSWINSZ, struct.pack("HHHH", 30, 100, 0, 0))

    def close(self):
        os.close(self.master)

    def start(self, *arguments):
        controlling = lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0)
        context = started(*arguments, env=environment(TERM="xterm", LC_ALL="C"), stdin=self.slave, stdout=self.slave,
                          stderr=self.slave, start_new_session=True, preexec_fn=controlling)
        return context

    def press_ctrl_c(self):
        os.write(self.master, b"\x03")

    def read_to_end(self):
        """Everything until the last program on the terminal has ended."""
        os.close(self.slave)
        text = b""
        while True:
            try:
                portion = os.read(self.master, 65536)
            except OSError:
                return text.decode()
            text += portion


def screen_after(text):
    """The lines that stand on the terminal in the end: understands just what the table uses."""
    lines, row, column = [""], 0, 0
    for token in re.findall(r"\x1b\[\??[0-9]*[A-Za-z]|.|\r|\n", text, re.S):
        if token == "\r":
            column = 0
        elif token == "\n":
            row, column = row + 1, column
            while len(lines) <= row:
                lines.append("")
        elif token.endswith("A") and token.startswith("\x1b"):
            row -= int(token[2:-1])
        elif token == "\x1b[K":
            lines[row] = lines[row][:column]
        elif token == "\x1b[J":
            lines[row:] = [lines[row][:column]]
        elif not token.startswith("\x1b"):
            lines[row] = lines[row][:column].ljust(column) + token + lines[row][column + 1:]
            column += 1
    return lines


class LiveTable(ToolTest):
    def setUp(self):
        super().setUp()
        self.terminal = Terminal()
        self.addCleanup(self.terminal.close)

    def test_one_table_is_left_and_the_cursor_is_back(self):
        with self.terminal.start("stream", "--simulate", self.bench(FAST), "--seconds", "1.5") as process:
            text = self.terminal.read_to_end()
            self.assertEqual(process.wait(20), SUCCESS)
        screen = screen_after(text)
        self.assertRegex(screen[1], r"chan +value +min +max +mean +-\S+ +\S+")
        for channel in range(1, 7):
            self.assertRegex(screen[1 + channel], rf"^ +{channel}( +[+-][0-9.e+-]+){{4}}  [.#]+\|[.#]+$")
        self.assertRegex(screen[8], r"^\d+ sets/s, \d+ values/s \| \d+ sets in 1\.5 s \| buffer \d+ of 65534")
        self.assertRegex(screen[9], r"^torvik: \d+ sets, nothing lost$")
        self.assertEqual([line for line in screen[10:] if line], [])
        self.assertGreater(text.rfind(CURSOR_SHOWN), text.rfind(CURSOR_HIDDEN))

    def test_it_is_redrawn_in_place_without_clearing_the_screen(self):
        with self.terminal.start("stream", "--simulate", self.bench(FAST), "--seconds", "1.5"):
            text = self.terminal.read_to_end()
        self.assertNotIn(SCREEN_CLEARED, text)
        self.assertGreaterEqual(text.count("\x1b[9A"), 10)

    def test_ctrl_c_leaves_a_tidy_terminal(self):
        with self.terminal.start("stream", "--simulate", self.bench(FAST)) as process:
            seen = os.read(self.terminal.master, 65536)
            self.terminal.press_ctrl_c()
            text = seen.decode() + self.terminal.read_to_end()
            self.assertEqual(process.wait(20), INTERRUPTED)
        self.assertNotIn("^C", "\n".join(screen_after(text)))
        self.assertGreater(text.rfind(CURSOR_SHOWN), text.rfind(CURSOR_HIDDEN))

    def test_a_failure_is_told_below_the_table(self):
        with self.terminal.start("stream", "--simulate", self.bench(STOPPING), "--timeout", "0.5") as process:
            text = self.terminal.read_to_end()
            self.assertEqual(process.wait(20), STREAM_FAILED)
        screen = screen_after(text)
        self.assertRegex(screen[9], "^torvik: streaming measured values failed$")
        self.assertGreater(text.rfind(CURSOR_SHOWN), text.rfind(CURSOR_HIDDEN))

    def test_csv_can_be_had_on_a_terminal(self):
        with self.terminal.start("stream", "--simulate", self.bench(FAST), "--csv", "--count", "2"):
            text = self.terminal.read_to_end()
        self.assertEqual(len(text.splitlines()), 4)
        self.assertIn("torvik: 2 sets, nothing lost", text)
        self.assertNotIn("\x1b", text)


class ProgressBar(ToolTest):
    """A slow bus: at 20 kbit/s a command and its answer take some 13 ms."""

    def setUp(self):
        super().setUp()
        self.terminal = Terminal()
        self.addCleanup(self.terminal.close)

    def loading(self):
        file = pathlib.Path(__file__).resolve().parents[2] / "examples" / "calibration" / "version4-matrix-b.ini"
        bench = self.bench("[bus]\ntiming = true\n[[amplifier]]\ncalibrated = true\nfrequency = 5\n")
        return self.terminal.start("calibration", "load", str(file), "--slot", "1", "--baud", "20000", "--simulate",
                                   bench)

    def test_moves_with_the_answers_of_the_device_and_is_full_at_the_end(self):
        with self.loading() as process:
            text = self.terminal.read_to_end()
            self.assertEqual(process.wait(60), SUCCESS)
        counts = [int(count) for count in re.findall(r"writing +\[#*\.+\] (\d+) of about \d+ answers", text)]
        self.assertGreater(len(counts), 5)
        self.assertEqual(counts, sorted(counts))
        self.assertLess(counts[0], counts[-1])
        [[done, full]] = re.findall(r"writing +\[(#{30})\] (\d+) answers", text)
        self.assertGreaterEqual(int(full), counts[-1])
        [expected] = set(re.findall(r"writing .* of about (\d+) answers", text))
        self.assertAlmostEqual(int(full), int(expected), delta=4)
        self.assertRegex(text, r"reading back +\[#{30}\] \d+ answers")
        self.assertIn("nothing differs", text)

    def test_ctrl_c_waits_for_the_end_of_the_writing(self):
        with self.loading() as process:
            seen = b""
            while b"of about" not in seen:
                seen += os.read(self.terminal.master, 65536)
            self.terminal.press_ctrl_c()
            text = self.terminal.read_to_end()
            self.assertEqual(process.wait(60), INTERRUPTED)
        self.assertIn("waiting until this is complete", text)
        self.assertIn("written to slot 1", text)
        self.assertIn("the calibration was written, but not read back", text)
        self.assertNotIn("nothing differs", text)


@unittest.skipIf("RELEASE_WITNESS_LIBRARY" not in os.environ, "nothing can be preloaded into this build")
class Release(ToolTest):
    def setUp(self):
        super().setUp()
        self.notes = self.folder / "releases"
        self.env = environment(LD_PRELOAD=os.environ["RELEASE_WITNESS_LIBRARY"], RELEASE_WITNESS=str(self.notes))

    def released(self):
        return self.notes.exists() and self.notes.read_text().split() == ["0"]

    def test_the_device_is_released_when_the_stream_is_complete(self):
        with started("stream", "--simulate", self.bench(FAST), "--count", "3", env=self.env) as process:
            process.communicate(timeout=20)
        self.assertTrue(self.released())

    def test_the_device_is_released_after_ctrl_c(self):
        with started("stream", "--simulate", self.bench(FAST), env=self.env) as process:
            process.stdout.readline()
            self.assertFalse(self.released())
            process.send_signal(signal.SIGINT)
            process.communicate(timeout=20)
        self.assertTrue(self.released())

    def test_the_device_is_released_when_the_reader_goes_away(self):
        with started("stream", "--simulate", self.bench(FAST), env=self.env) as process:
            process.stdout.readline()
            process.stdout.close()
            process.stdout = None
            process.wait(20)
        self.assertTrue(self.released())

    def test_the_device_is_released_after_a_failure(self):
        with started("stream", "--simulate", self.bench(STOPPING), "--timeout", "0.2", env=self.env) as process:
            process.communicate(timeout=20)
        self.assertTrue(self.released())


if __name__ == "__main__":
    main()
