"""torvik config: what a user sets on a device, saved to a file, loaded, compared."""
import os
import pathlib
import threading
import unittest

from tool_runner import (DEVICE_FAILED, DIFFERS, OUTPUT_FAILED, SUCCESS, USAGE, ON_WINDOWS, ToolTest, main,
                         only_linux, run)

TWO_CHANNELS = "[[amplifier]]\nchannels = 2\nserial = 4711\n"
OLD_FIRMWARE = "[[amplifier]]\nchannels = 2\nfirmware = 0x00030008\n"

# Two channels in another state than the simulated amplifier's first one, one setting of every parameter.
CHANGED = """
[device]
sampling-frequency = 62.5
analogue-filter = 3
filters-on = 0x8101
transmitted-channels = 2

[channel.1]
input-type = 3
input-range = 0.5
zero-signal = -12345
user-offset = 0.1
user-scale = 2.5
noise-cut = 1e-6
unit = "user1"
output-type = 0x1234
output-offset = -0.5
output-scale = 3.0

[channel.2]
unit = "°C"

[user-text]
1 = "µbar"

[counter-setting]
"2.15" = 7

[transmit-mapping]
2 = 0x8001
"""


class ConfigTest(ToolTest):
    def setUp(self):
        super().setUp()
        self.file = self.path("config.toml")

    def write(self, text):
        (self.folder / "config.toml").write_text(text, encoding="utf-8")

    def read(self):
        return (self.folder / "config.toml").read_bytes().decode()

    def config(self, verb, *options, bench=TWO_CHANNELS):
        return run("config", verb, self.file, *options, f"--simulate={self.bench(bench)}")


class Save(ConfigTest):
    def test_writes_what_a_user_sets(self):
        result = self.config("save")
        self.assert_ended(result, SUCCESS)
        self.assertEqual(result.stdout, "")
        text = self.read()
        for line in ("[device]", "sampling-frequency = 100.0", "filters-on = 0x0", "[channel.1]", "input-range = 10.0", 'unit = "mV/V"',
                     "[channel.2]", "output-type = 0x0", "[transmit-mapping]", '"2.15" = 0'):
            self.assertIn(f"\n{line}\n", text)
        self.assertNotIn("[channel.3]", text)
        self.assertNotIn("\r", text)

    def test_leaves_out_what_belongs_to_the_device(self):
        self.config("save", "--identifiers")
        for name in ("serial", "hours", "calibration", "4711"):
            self.assertNotIn(name, self.read())

    def test_identifiers_are_saved_on_request_only(self):
        self.config("save")
        self.assertNotIn("can-setting", self.read())
        self.config("save", "--identifiers")
        self.assertIn("[can-setting]\n0 = 0x100\n1 = 0x101\n2 = 0x102\n", self.read())

    def test_goes_to_standard_output_for_a_dash(self):
        self.config("save")
        result = run("config", "save", "-", f"--simulate={self.bench(TWO_CHANNELS)}")
        self.assertEqual(result.stdout, self.read())

    def test_a_file_that_cannot_be_written_is_a_failure(self):
        result = run("config", "save", self.path("none/config.toml"), "--simulate")
        self.assert_failure(result, OUTPUT_FAILED, "writing the configuration file")


class Replacement(ConfigTest):
    """An old file is replaced only by a complete new one."""

    OLD = "# the old file\n"

    def save(self, file=None, **options):
        return run("config", "save", file or self.file, f"--simulate={self.bench(TWO_CHANNELS)}", **options)

    def names(self):
        return sorted(path.name for path in self.folder.iterdir() if path.name != "bench.toml")

    def test_Save_OverAFile_ReplacesItAsAWhole(self):
        self.write(self.OLD)
        # Whoever has the old file open goes on with the old file.
        os.link(self.folder / "config.toml", self.folder / "opened.toml")
        self.assert_ended(self.save(), SUCCESS)
        self.assertIn("[device]", self.read())
        self.assertEqual((self.folder / "opened.toml").read_text(), self.OLD)
        self.assertEqual(self.names(), ["config.toml", "opened.toml"])

    @only_linux
    def test_Save_WithoutRoomForTheFile_KeepsTheOldOne(self):
        import resource
        self.write(self.OLD)
        result = self.save(preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (200, 200)))
        self.assert_failure(result, OUTPUT_FAILED, "writing the configuration file", "File too large")
        self.assertEqual(self.read(), self.OLD)
        self.assertEqual(self.names(), ["config.toml"])

    @only_linux
    def test_Save_ThroughASymbolicLink_ReplacesWhatItLeadsTo(self):
        (self.folder / "there").mkdir()
        for name in ("old.toml", "new.toml"):
            (self.folder / "config.toml").unlink(missing_ok=True)
            (self.folder / "config.toml").symlink_to(pathlib.Path("there") / name)
            if name == "old.toml":
                self.write(self.OLD)
            self.assert_ended(self.save(), SUCCESS)
            self.assertTrue((self.folder / "config.toml").is_symlink())
            self.assertFalse((self.folder / "there" / name).is_symlink())
            self.assertIn("[device]", (self.folder / "there" / name).read_text())
        self.assertEqual(sorted(path.name for path in (self.folder / "there").iterdir()), ["new.toml", "old.toml"])

    @only_linux
    def test_Save_OverAFile_KeepsItsPermissions(self):
        self.write(self.OLD)
        for mode in (0o600, 0o664):
            (self.folder / "config.toml").chmod(mode)
            self.assert_ended(self.save(), SUCCESS)
            self.assertEqual((self.folder / "config.toml").stat().st_mode & 0o7777, mode)

    @only_linux
    def test_Save_ToADevice_WritesItDirectly(self):
        self.assert_ended(self.save("/dev/null"), SUCCESS)
        self.assertTrue(pathlib.Path("/dev/null").is_char_device())
        self.assert_failure(self.save("/dev/full"), OUTPUT_FAILED, "No space left on device")
        self.assertTrue(pathlib.Path("/dev/full").is_char_device())

    @only_linux
    def test_Save_ToAPipe_WritesItDirectly(self):
        os.mkfifo(self.folder / "pipe")
        got = []
        reader = threading.Thread(target=lambda: got.append((self.folder / "pipe").read_text()))
        reader.start()
        self.assert_ended(self.save(self.path("pipe")), SUCCESS)
        reader.join()
        self.assertIn("[device]", got[0])
        self.assertTrue((self.folder / "pipe").is_fifo())

    @unittest.skipUnless(ON_WINDOWS, "the name of a device on Windows alone")
    def test_Save_ToNul_MakesNoFile(self):
        self.assert_ended(self.save("NUL"), SUCCESS)
        self.assertFalse(pathlib.Path("NUL").exists())

    def test_Save_ToAFolder_IsAFailure(self):
        (self.folder / "config.toml").mkdir()
        self.assert_failure(self.save(), OUTPUT_FAILED, "writing the configuration file")
        self.assertEqual(self.names(), ["config.toml"])


class Load(ConfigTest):
    def test_writes_every_parameter_and_reads_it_back(self):
        self.write(CHANGED)
        result = self.config("load")
        self.assert_ended(result, SUCCESS)
        self.assertEqual(result.stdout, "")
        self.assertIn("17 of 18 settings written, all read back: 0 differ", result.stderr)

    def test_writes_nothing_that_the_device_holds_already(self):
        self.config("save")
        self.assertIn("torvik: 0 of ", self.config("load").stderr)

    def test_what_the_device_rounds_is_told_with_an_exit_code_of_its_own(self):
        self.write("[channel.2]\ninput-range = 2.504\nuser-scale = 2.0\n")
        result = self.config("load")
        self.assert_ended(result, DIFFERS)
        self.assertEqual(result.stdout, "input-range of channel 2: 2.504 in the file, 2.5 in the device\n")

    def test_what_the_device_refuses_is_told_and_the_rest_is_set(self):
        self.write("[channel.1]\ninput-type = 9\nuser-scale = 2.0\n")
        result = self.config("load")
        self.assert_ended(result, DIFFERS)
        self.assertEqual(result.stdout, "input-type of channel 1: 9 in the file, 1 in the device\n")
        self.assertIn("input-type of channel 1 cannot be set to 9", result.stderr)
        self.assertIn("1 of 2 settings written", result.stderr)

    def test_what_a_restart_takes_back_is_set_after_it(self):
        self.write("[device]\nsampling-frequency = 50.0\n[channel.1]\nuser-scale = 2.0\nzero-signal = 5\n")
        self.assert_ended(self.config("load"), SUCCESS)

    def test_identifiers_are_left_alone_unless_asked_for(self):
        self.write("[can-setting]\n2 = 0x300\n")
        result = self.config("load")
        self.assert_ended(result, SUCCESS)
        self.assertIn("1 CAN settings of the file are left alone without --identifiers", result.stderr)
        self.assertIn("0 of 0 settings written", result.stderr)

    def test_identifiers_are_written_on_request(self):
        self.write("[can-setting]\n2 = 0x300\n")
        result = self.config("load", "--identifiers")
        self.assert_ended(result, SUCCESS)
        self.assertIn("1 of 1 settings written, all read back: 0 differ", result.stderr)

    def test_firmware_without_restart_is_told(self):
        self.write("[device]\nsampling-frequency = 50.0\n")
        result = self.config("load", bench=OLD_FIRMWARE)
        self.assert_ended(result, SUCCESS)
        self.assertIn("knows no restart", result.stderr)

    def test_a_mistake_in_the_file_is_told_before_the_device_is_opened(self):
        self.write("[device]\nanalogue-filter = 65536\n")
        self.assert_failure(run("config", "load", self.file), USAGE, "config.toml:2:", "0..65535")

    def test_a_number_that_is_not_finite_is_refused_before_the_device_is_opened(self):
        self.write("[channel.1]\nuser-scale = inf\n")
        for verb in ("load", "diff"):
            self.assert_failure(run("config", verb, self.file), USAGE, "config.toml:2:14: inf is no value for user-scale",
                                "give a finite number")

    def test_Load_OfAHostileFile_ShowsItsTextsWithoutControlCharacters(self):
        for text, shown in (('[device]\n"\\u001b[2J\\n\\u009b" = 1\n', '"\\x1B[2J\\x0A\\x9B"'),
                            ('[channel.1]\nunit = "\\u001b[2J"\n', '"\\u001B[2J"'),
                            ('[device]\n\x1b[2J = 1\n', "config.toml:2:")):
            self.write(text)
            result = run("config", "load", self.file)
            self.assert_failure(result, USAGE, shown)
            self.assertFalse(set(result.stderr) - {"\n"} & set(map(chr, [*range(32), *range(127, 160)])), result.stderr)

    def test_Load_OfAFileWithAHostileName_ShowsItWithoutControlCharacters(self):
        result = run("config", "load", self.path("none-\x1b[2J.toml"))
        self.assert_failure(result, USAGE, "none-\\x1B[2J.toml' failed")

    def test_a_missing_file_is_told(self):
        self.assert_failure(run("config", "load", self.file), USAGE, "there is no such file")

    def test_a_folder_is_rejected_with_its_cause(self):
        self.assert_failure(run("config", "load", self.path(".")), USAGE, "this is a folder")

    @only_linux
    def test_an_endless_file_is_rejected_with_its_cause(self):
        self.assert_failure(run("config", "load", "/dev/zero"), USAGE, "/dev/zero: the file has more than 1048576 bytes")

    def test_a_device_that_does_not_answer_is_a_failure(self):
        self.write("[device]\nanalogue-filter = 1\n")
        self.assert_failure(self.config("load", "--command-id", "0x300", "--answer-id", "0x301"), DEVICE_FAILED)


class Diff(ConfigTest):
    def test_tells_nothing_when_nothing_differs(self):
        self.config("save")
        result = self.config("diff")
        self.assert_ended(result, SUCCESS)
        self.assertEqual((result.stdout, result.stderr), ("", ""))

    def test_tells_other_filters_that_are_on(self):
        self.write("[device]\nfilters-on = 0x81\n")
        result = self.config("diff")
        self.assert_ended(result, DIFFERS)
        self.assertEqual(result.stdout, "filters-on: 0x81 in the file, 0x0 in the device\n")

    def test_tells_what_differs_and_changes_nothing(self):
        self.write('[device]\nanalogue-filter = 3\n[channel.2]\nuser-scale = 2.0\nunit = "kN"\n')
        result = self.config("diff")
        self.assert_ended(result, DIFFERS)
        self.assertEqual(result.stdout.splitlines(),
                         ["user-scale of channel 2: 2 in the file, 1 in the device",
                          "unit of channel 2: kN in the file, mV/V in the device",
                          "analogue-filter: 3 in the file, 0 in the device"])

    def test_what_the_device_does_not_tell_differs(self):
        self.write('[channel.8]\nunit = "kN"\n')
        result = self.config("diff")
        self.assert_ended(result, DIFFERS)
        self.assertEqual(result.stdout, "unit of channel 8: kN in the file, not told by the device\n")


if __name__ == "__main__":
    main()
