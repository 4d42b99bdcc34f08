"""torvik stream into a pipe or a file: plain CSV."""
import os
import signal
import time
import unittest

from tool_runner import (INTERRUPTED, ON_WINDOWS, OUTPUT_FAILED, STREAM_FAILED, SUCCESS, VALUES_LOST, ToolTest,
                         environment, main, only_linux, rows, run, started, values)

CONSTANT = """
[[amplifier]]
channels = 3
frequency = 1000
value_type = "float32"
[[amplifier.signal]]
offset = 0.5
[[amplifier.signal]]
offset = -0.25
[[amplifier.signal]]
offset = 100.125
"""
FAST = "[[amplifier]]\nfrequency = 1000\n"
SILENT = "[[amplifier]]\nfrequency = 0.001\n"
STOPPED = "[[amplifier]]\nfrequency = 1000\nstreaming = false\n"


class Csv(ToolTest):
    def test_count_gives_exactly_so_many_lines_below_the_header(self):
        for count in (1, 7, 500):
            result = run("stream", "--simulate", self.bench(FAST), "--count", str(count))
            self.assert_ended(result, SUCCESS)
            lines = result.stdout.splitlines()
            self.assertEqual(lines[0], "set,seconds," + ",".join(f"channel{n}" for n in range(1, 7)))
            self.assertEqual(len(lines), 1 + count)
            self.assertEqual([row[0] for row in rows(result.stdout)], list(range(1, count + 1)))
            self.assertEqual(result.stderr, f"torvik: {count} sets, nothing lost\n")

    def test_values_stand_in_the_columns_of_their_channels(self):
        result = run("stream", "--simulate", self.bench(CONSTANT), "--count", "20")
        self.assertEqual(values(result.stdout, 3), [[0.5, -0.25, 100.125]] * 20)

    def test_integer_values_are_fractions_of_full_scale(self):
        bench = self.bench('[[amplifier]]\nchannels = 1\nvalue_type = "int16"\nunit = "counts"\n'
                           "[[amplifier.signal]]\noffset = 12345\n")
        result = run("stream", "--simulate", bench, "--count", "1")
        self.assertEqual(values(result.stdout, 1), [[12345 * (2.1 / 65535)]])

    def test_seconds_never_run_backwards(self):
        seconds = [row[1] for row in rows(run("stream", "--simulate", self.bench(FAST), "--count", "300").stdout)]
        self.assertEqual(seconds, sorted(seconds))

    def test_seconds_end_the_stream(self):
        begin = time.monotonic()
        result = run("stream", "--simulate", self.bench(FAST), "--seconds", "0.5")
        self.assertGreaterEqual(time.monotonic() - begin, 0.5)
        self.assert_ended(result, SUCCESS)
        self.assertGreater(len(rows(result.stdout)), 50)
        self.assertLessEqual(len(rows(result.stdout)), 1500)

    def test_whichever_limit_comes_first_ends_the_stream(self):
        result = run("stream", "--simulate", self.bench(FAST), "--seconds", "60", "--count", "3")
        self.assert_ended(result, SUCCESS)
        self.assertEqual(len(rows(result.stdout)), 3)

    def test_status_adds_a_column_for_each_channel(self):
        result = run("stream", "--simulate", self.bench(CONSTANT), "--count", "2", "--status")
        self.assertEqual(result.stdout.splitlines()[0],
                         "set,seconds,channel1,channel2,channel3,status1,status2,status3")
        self.assertEqual([row[5:] for row in rows(result.stdout)], [[0, 0, 0]] * 2)

    def test_debug_lines_do_not_mix_with_the_values(self):
        result = run("stream", "--simulate", self.bench(CONSTANT), "--count", "5", "--debug")
        self.assertEqual(values(result.stdout, 3), [[0.5, -0.25, 100.125]] * 5)
        self.assertIn("Der CAN-Adapter ist initialisiert", result.stderr)

    def test_a_buffer_of_one_value_delivers(self):
        result = run("stream", "--simulate", self.bench(CONSTANT), "--count", "5", "--buffer", "1")
        self.assertEqual(values(result.stdout, 3), [[0.5, -0.25, 100.125]] * 5)


class Faults(ToolTest):
    def test_a_device_that_does_not_send_is_told_to(self):
        result = run("stream", "--simulate", self.bench(STOPPED), "--count", "10")
        self.assert_ended(result, SUCCESS)
        self.assertEqual(len(rows(result.stdout)), 10)
        self.assertIn("told to send", result.stderr)

    def test_no_values_within_the_time_out(self):
        result = run("stream", "--simulate", self.bench(SILENT), "--timeout", "0.3")
        self.assert_failure(result, STREAM_FAILED, "streaming measured values", "no complete set", "--timeout")
        self.assertEqual(len(result.stdout.splitlines()), 1)

    def test_no_values_in_the_time_asked_for(self):
        result = run("stream", "--simulate", self.bench(SILENT), "--seconds", "0.3")
        self.assert_failure(result, STREAM_FAILED, "no complete set")

    def test_a_reader_that_goes_away_ends_the_stream_quietly(self):
        with started("stream", "--simulate", self.bench(FAST)) as process:
            for _ in range(3):
                process.stdout.readline()
            process.stdout.close()
            process.stdout = None
            errors = process.stderr.read()
            self.assertEqual(process.wait(20), SUCCESS)
            self.assertEqual(errors, b"")

    def test_values_lost_to_a_slow_reader_are_told(self):
        with started("stream", "--simulate", self.bench("[[amplifier]]\nfrequency = 5000\n"), "--buffer", "20",
                     "--count", "20000") as process:
            time.sleep(2)
            output, errors = process.communicate(timeout=60)
            self.assertEqual(process.returncode, VALUES_LOST)
        self.assertIn(b"values lost", errors)
        self.assertRegex(errors.decode(), "torvik: 20000 sets, but there are losses\r?\n  output: +[0-9]+ values gone")
        numbers = [row[0] for row in rows(output.decode())]
        self.assertEqual(numbers, list(range(1, len(numbers) + 1)))

    @only_linux
    def test_a_full_disk_is_a_failure_of_the_output(self):
        with open("/dev/full", "wb") as full:
            with started("stream", "--simulate", stdout=full) as process:
                errors = process.stderr.read().decode()
                self.assertEqual(process.wait(20), OUTPUT_FAILED)
        self.assertIn("writing to standard output failed", errors)


@unittest.skipIf("BUS_DISTURBER_LIBRARY" not in os.environ, "nothing can be preloaded into this build")
class LossesOnTheBus(ToolTest):
    def report(self, bench, sets, disturbance):
        """What the tool says at the end of so many sets when the bus was disturbed after the first ones."""
        env = environment(LD_PRELOAD=os.environ["BUS_DISTURBER_LIBRARY"], BUS_DISTURBANCE=disturbance)
        with started("stream", "--simulate", self.bench(bench), "--count", str(sets), env=env) as process:
            process.stdout.readline()
            process.stdout.readline()
            process.send_signal(signal.SIGUSR1)
            errors = process.communicate(timeout=60)[1].decode()
            self.assertEqual(process.returncode, VALUES_LOST, errors)
        self.assertIn(f"torvik: {sets} sets, but there are losses\n", errors)
        return errors

    def test_a_few_sets_that_are_missing_are_counted(self):
        errors = self.report("[[amplifier]]\nfrequency = 1000\nchannels = 1\n", 2000, "skip-first-channel 3")
        self.assertIn("  bus:     3 sets missing by their numbers\n", errors)
        self.assertIn("  bus:     1 times the sets' numbers jumped; losses by jumps back or over 32767 are not counted\n", errors)

    def test_a_gap_too_long_for_the_sets_numbers_is_a_loss_of_unknown_size(self):
        errors = self.report("[[amplifier]]\nfrequency = 20000\nchannels = 1\n", 40000, "skip-first-channel 40000")
        self.assertIn("  bus:     1 times the sets' numbers jumped; how many sets were lost is not known\n", errors)
        self.assertNotIn("missing by their numbers", errors)

    def test_a_bus_that_was_off_may_have_lost_frames(self):
        errors = self.report("[[amplifier]]\nfrequency = 100\n", 100, "bus-off 2")
        self.assertIn("  adapter: 2 times the bus was off; frames may be lost\n", errors)


class Interruption(ToolTest):
    def interrupt(self, process, number=signal.SIGINT):
        """Sends the signal (Wine passes SIGINT on as Ctrl-C) and tells how long the end took."""
        begin = time.monotonic()
        process.send_signal(number)
        process.wait(20)
        return time.monotonic() - begin

    def test_ctrl_c_ends_with_whole_lines_and_its_own_exit_code(self):
        with started("stream", "--simulate", self.bench(FAST)) as process:
            head = process.stdout.readline() + process.stdout.readline()
            begin = time.monotonic()
            process.send_signal(signal.SIGINT)
            rest = process.stdout.read()
            errors = process.stderr.read()
            self.assertEqual(process.wait(20), INTERRUPTED)
            self.assertLess(time.monotonic() - begin, 5)
            text = (head + rest).decode()
            self.assertTrue(text.endswith("\n"))
            self.assertEqual({len(row) for row in rows(text)}, {8})
            self.assertRegex(errors.decode(), "^torvik: [0-9]+ sets, nothing lost\r?\n$")

    @unittest.skipIf(ON_WINDOWS, "Wine does not take back a write into a pipe that nobody reads")
    def test_ctrl_c_ends_the_tool_when_nobody_takes_its_output(self):
        with started("stream", "--simulate", self.bench(FAST)) as process:
            time.sleep(3)
            self.assertIsNone(process.poll())
            self.assertLess(self.interrupt(process), 5)
            self.assertEqual(process.returncode, INTERRUPTED)

    @only_linux
    def test_the_request_to_end_counts_like_ctrl_c(self):
        with started("stream", "--simulate", self.bench(FAST)) as process:
            process.stdout.readline()
            self.assertLess(self.interrupt(process, signal.SIGTERM), 5)
            self.assertEqual(process.returncode, INTERRUPTED)


if __name__ == "__main__":
    main()
