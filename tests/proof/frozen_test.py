"""A measurement application that is starved and stopped at a full bus loses nothing, or counts what it loses.

frozen_test.py READER [RUNS]: READER is the command line of frozen_reader. As many busy processes as there are processors
take their time from it, and it is stopped for a while, RUNS times in one stream.
"""
import contextlib
import os
import shlex
import signal
import subprocess
import sys
import time
import unittest

READER = shlex.split(sys.argv.pop(1))
RUNS = int(sys.argv.pop(1)) if len(sys.argv) > 1 and sys.argv[1].isdigit() else 1
# A frame of eight bytes takes 123 bits of the bus at 1 Mbit/s.
FRAMES_PER_SECOND = 1_000_000 / 123
QUEUE_LENGTH = 32_767


@contextlib.contextmanager
def busy_processors():
    """As many processes that only count as there are processors."""
    processes = [subprocess.Popen([sys.executable, "-c", "while True: pass"]) for _ in range(os.cpu_count())]
    try:
        yield processes
    finally:
        for process in processes:
            process.kill()
            process.wait()


def stopped_reader(seconds):
    """What the reader tells of a stream in which it was stopped for so long, RUNS times."""
    with subprocess.Popen(READER, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True) as reader:
        try:
            first = reader.stdout.readline()
            if first.strip() != "streaming":
                raise AssertionError(f"the reader does not stream: {first!r}")
            for _ in range(RUNS):
                time.sleep(0.5)
                os.kill(reader.pid, signal.SIGSTOP)
                time.sleep(seconds)
                os.kill(reader.pid, signal.SIGCONT)
                time.sleep(1)
            reader.stdin.close()
            report = dict(line.split() for line in reader.stdout)
            if reader.wait(60) != 0:
                raise AssertionError(f"the reader failed with {reader.returncode}")
        finally:
            reader.kill()
    return {name: int(number) for name, number in report.items()}


class Frozen(unittest.TestCase):
    def stop(self, seconds):
        with busy_processors() as busy:
            report = stopped_reader(seconds)
            self.assertEqual([process.poll() for process in busy], [None] * len(busy))
        lost = report["framesOverrun"] + report["framesDiscarded"]
        print(f"stopped for {seconds} s, {RUNS} times: {report['framesPerSecond']} frames a second, "
              f"{report['valueFramesSent']} frames sent, {report['framesRead']} read, {report['framesOverrun']} overrun, "
              f"{report['framesDiscarded']} discarded; {report['setsRead']} sets read, {report['setsMissing']} missing, "
              f"{report['framesOfPartialSets']} frames of sets that were lost in part", flush=True)
        self.assertGreaterEqual(report["longestPauseMilliseconds"], seconds * 1000 - 20)
        self.assertGreater(report["framesPerSecond"], 0.98 * FRAMES_PER_SECOND)
        self.assertGreater(report["leastSetsOfADevice"], 20)
        self.check_every_frame(report, lost)
        return report, lost

    def check_every_frame(self, report, lost):
        """Every frame sent has one end, and the sets that are missing are those whose frames were lost."""
        self.assertEqual(report["answersSent"], 0)
        self.assertEqual(report["valueFramesSent"], report["framesRead"] + lost)
        self.assertEqual(report["framesReceived"], report["framesRead"])
        self.assertEqual((report["framesWithoutDevice"], report["framesNotRouted"]), (0, 0))
        self.assertEqual(report["framesRouted"], report["framesRead"])
        self.assertEqual(report["framesRouted"], report["framesStored"] + report["framesOfPartialSets"])
        self.assertEqual((report["framesInAssembly"], report["valuesStale"], report["valuesOverwritten"]), (0, 0, 0))
        self.assertEqual((report["valuesWrong"], report["setsOutOfOrder"], report["devicesCountedOtherwise"]), (0, 0, 0))
        self.assertEqual(6 * report["setsRead"], report["framesStored"])
        self.assertEqual(6 * report["setsMissing"], lost + report["framesOfPartialSets"])

    def test_nothing_is_lost_in_three_seconds(self):
        report, lost = self.stop(3)
        self.assertEqual((lost, report["setsMissing"], report["framesOfPartialSets"]), (0, 0, 0))
        self.assertEqual(report["overrunsReported"], 0)

    def test_what_is_lost_in_ten_seconds_is_counted_to_the_frame(self):
        report, lost = self.stop(10)
        self.assertGreaterEqual(report["overrunsReported"], RUNS)
        # What the queue does not hold is lost, and what it holds with the reset after it.
        self.assertGreater(lost, RUNS * 9.9 * FRAMES_PER_SECOND)
        self.assertGreater(report["framesOverrun"], RUNS * (9.9 * FRAMES_PER_SECOND - QUEUE_LENGTH))
        self.assertGreaterEqual(report["framesDiscarded"], RUNS * QUEUE_LENGTH)


if __name__ == "__main__":
    unittest.main(verbosity=2)
