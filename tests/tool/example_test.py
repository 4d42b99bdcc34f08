"""examples/stream_values.c, as the README shows it."""
import subprocess

from tool_runner import ADAPTER_FOLDER, EXAMPLE, ToolTest, environment, main


def run_example(env):
    return subprocess.run(EXAMPLE, capture_output=True, text=True, timeout=120, env=env, check=False)


class Example(ToolTest):
    def test_prints_five_sets_of_six_values(self):
        result = run_example(environment(LD_LIBRARY_PATH=ADAPTER_FOLDER))
        self.assert_ended(result, 0)
        lines = result.stdout.splitlines()
        self.assertEqual(len(lines), 5)
        for number, line in enumerate(lines, 1):
            *numbers, word, last = line.split()
            self.assertEqual((word, last), ("set", str(number)))
            self.assertEqual(len([float(text) for text in numbers]), 6)

    def test_says_why_without_an_adapter(self):
        result = run_example(environment())
        self.assert_ended(result, 1)
        self.assertEqual(result.stderr, "no amplifier: CAN Adapter: unknow error [65536]\n")
        self.assertEqual(result.stdout, "")


if __name__ == "__main__":
    main()
