"""torvik info, and the ways in which a device cannot be opened."""
import os

from tool_runner import (ADAPTER_FOLDER, ADAPTER_LIBRARY, DEVICE_FAILED, NO_ADAPTER, SUCCESS, USAGE, ToolTest,
                         environment, main, only_linux, run, started)


class Info(ToolTest):
    def test_tells_identity_versions_and_channels(self):
        result = run("info", "--simulate")
        self.assert_ended(result, SUCCESS)
        for line in (r"Tool version +1\.17", r"Library version +1\.17", r"Adapter +usb \(simulated\)", r"Channels +6",
                     r"Interface ident 0 +\d+ \(0x[0-9A-F]{8}\)", r"Last protocol error +none"):
            self.assertRegex(result.stdout, f"(?m)^{line}$")
        self.assertEqual(result.stderr, "")

    def test_tells_serial_number_and_firmware_version(self):
        result = run("info", "--simulate", self.bench("[[amplifier]]\nserial = 4711\nfirmware = 0x0003002F\n"))
        self.assertRegex(result.stdout, r"(?m)^Serial number +4711$")
        self.assertRegex(result.stdout, r"(?m)^Firmware version +3\.47 \(0x0003002F\)$")

    def test_options_may_stand_before_the_command(self):
        self.assertEqual(run("--simulate", "info").stdout, run("info", "--simulate").stdout)

    def test_uses_the_bench_file(self):
        bench = self.bench("[[amplifier]]\nchannels = 3\ninterface_ident = [11, 22, 33, 305419896]\n")
        result = run("info", "--simulate", bench)
        self.assertRegex(result.stdout, r"(?m)^Channels +3$")
        self.assertRegex(result.stdout, r"(?m)^Interface ident 0 +11 ")
        self.assertRegex(result.stdout, r"(?m)^Interface ident 3 +305419896 \(0x12345678\)$")

    def test_uses_the_settings_given(self):
        bench = self.bench("[[amplifier]]\ncommand = 0x200\nanswer = 0x201\nvalue = 0x202\nchannels = 2\n")
        result = run("info", "--simulate", bench, "--command-id", "0x200", "--answer-id", "513", "--baud", "250000",
                     "--adapter", "pci", "--device", "7", "--protocol", "32", "--buffer", "5")
        self.assert_ended(result, SUCCESS)
        for line in (r"Adapter +pci \(simulated\)", r"Bit rate +250000 bit/s", r"Device number +7",
                     r"Command identifier +0x200", r"Answer identifier +0x201", r"Protocol kind +32", r"Channels +2"):
            self.assertRegex(result.stdout, f"(?m)^{line}$")

    def test_debug_lines_go_to_standard_error(self):
        result = run("info", "--simulate", "--debug")
        self.assertIn("Der CAN-Adapter ist initialisiert", result.stderr)
        self.assertEqual(result.stdout, run("info", "--simulate").stdout)


class WrongUse(ToolTest):
    def test_the_word_that_is_wrong_is_named(self):
        for words, says in ((["frob"], "there is no command 'frob'"),
                            (["calibration", "frob"], "there is no command 'frob'"),
                            (["info", "extra"], "'extra' is one word too many"),
                            (["stream", "--cnt", "3"], "there is no option '--cnt' here"),
                            (["info", "--device", "0", "extra"], "'0' is not a whole number of 1..39"),
                            (["set", "user-scale", "1", "-.5"], "'-.5' is no number"),
                            (["filter", "design", "lowpass", "bessel", "-.5"], "'-.5' is no number")):
            with self.subTest(words=words):
                result = run(*words)
                self.assert_ended(result, USAGE)
                self.assertIn(says, result.stderr)
                self.assertEqual(result.stdout, "")


class CannotOpen(ToolTest):
    def test_without_an_adapter_library(self):
        result = run("info")
        self.assert_failure(result, NO_ADAPTER, "opening device 1", "65536", "CAN Adapter: unknow error",
                            ADAPTER_LIBRARY, "--simulate")
        self.assertEqual(result.stdout, "")

    def test_an_adapter_library_in_reach_is_used_without_simulate(self):
        result = run("info", env=environment(LD_LIBRARY_PATH=ADAPTER_FOLDER))
        self.assert_ended(result, SUCCESS)
        self.assertRegex(result.stdout, r"(?m)^Adapter +usb$")

    def test_a_device_that_does_not_answer(self):
        result = run("info", "--simulate", "--command-id", "0x300", "--answer-id", "0x301")
        self.assert_failure(result, DEVICE_FAILED, "identifiers 0x300 and 0x301", "code 249, 0xF9", "supply")
        self.assertEqual(result.stdout, "")

    def test_a_bench_file_that_is_not_there(self):
        self.assert_failure(run("info", "--simulate", str(self.folder / "none.toml")), USAGE, "none.toml")

    def test_a_bench_file_with_a_mistake_is_told_with_its_line(self):
        bench = self.bench("[[amplifier]]\nchannels = 9\n")
        self.assert_failure(run("info", "--simulate", bench), USAGE, "bench.toml:2:", "channels")

    def test_a_folder_as_bench_file(self):
        self.assert_failure(run("info", "--simulate", self.path(".")), USAGE, "this is a folder")

    @only_linux
    def test_a_bench_from_a_pipe(self):
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        with started("info", "--simulate", str(pipe)) as process:
            pipe.write_text("[[amplifier]]\nserial = 4711\n")
            output, _ = process.communicate(timeout=60)
        self.assertEqual(process.returncode, SUCCESS)
        self.assertIn("4711", output.decode())


if __name__ == "__main__":
    main()
