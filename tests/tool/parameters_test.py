"""torvik list, show, get, set, zero, units and settings, with a simulated amplifier."""
import json

from tool_runner import DEVICE_FAILED, DIFFERS, SUCCESS, USAGE, ToolTest, main, run

THREE_CHANNELS = '[[amplifier]]\nchannels = 3\nserial = 4711\nfirmware = 0x00031234\nfrequency = 250\n'
NO_RESTART = "[[amplifier]]\nfirmware = 0x00030008\n"
ONE_RANGE_TYPE_3 = "[[amplifier]]\nchannels = 1\nranges = [[3, 250000]]\n"
STILL = ('[[amplifier]]\nchannels = 2\nunit = "counts"\n[[amplifier.signal]]\noffset = 1234\n'
         "[[amplifier.signal]]\noffset = -77\n")


def simulated(*arguments):
    return run(*arguments, "--simulate")


class ParameterTest(ToolTest):
    def on_bench(self, text, *arguments):
        return run(*arguments, f"--simulate={self.bench(text)}")

    def assert_output(self, result, text):
        self.assert_ended(result, SUCCESS)
        self.assertEqual(result.stdout, text)
        self.assertEqual(result.stderr, "")


class List(ParameterTest):
    def test_needs_no_device(self):
        self.assert_ended(run("list"), SUCCESS)

    def test_tells_name_access_place_values_unit_and_meaning(self):
        self.assertRegex(run("list").stdout,
                         r"(?m)^zero-signal +get, set +channel 1\.\.8 +-2147483648\.\.2147483647 +counts +signal that")

    def test_tells_what_can_only_be_read_or_written(self):
        lines = run("list").stdout
        self.assertRegex(lines, r"(?m)^firmware-version +get +- ")
        self.assertRegex(lines, r"(?m)^blocking +set +- ")

    def test_tells_what_restarts_the_device(self):
        for line in run("list").stdout.splitlines():
            restarts = line.split()[0] in ("mode", "input-type", "input-range", "offered-range", "sensitivity",
                                           "output-type", "output-offset", "sampling-frequency")
            self.assertEqual("restarts the device" in line, restarts, line)

    def test_show_tells_whatever_can_be_read_but_long_and_derived_things(self):
        readable = {line.split()[0] for line in run("list").stdout.splitlines()[1:] if "get" in line[23:33]}
        told = {name for group in json.loads(simulated("show", "--json").stdout).values() for name in group}
        self.assertEqual(readable - told, {"sensor-memory", "command-known", "offered-range"})
        self.assertEqual(told - readable, set())


class Show(ParameterTest):
    def test_tells_values_of_the_device_and_of_its_channels(self):
        result = self.on_bench(THREE_CHANNELS, "show")
        self.assert_ended(result, SUCCESS)
        for line in (r"  serial-number +4711", r"  firmware-version +0x31234", r"  sampling-frequency +250 \(Hz\)",
                     r"  user-scale +1 +1 +1", r"  input-range +10 +10 +10 \(of the input type\)",
                     r"  offered-ranges 3 +1:10 1:5 1:2\.5 1:1 3:2\.5 \(of the input type\)",
                     r"  transmitted-channels +3"):
            self.assertRegex(result.stdout, f"(?m)^{line}$")
        self.assertEqual(result.stderr, "")

    def test_a_calibration_of_zeros_is_one_line_and_whole_in_json(self):
        lines = [line for line in simulated("show").stdout.splitlines() if line.startswith("  calibration")]
        self.assertEqual(lines, ["  calibration                 none: all values are 0"])
        told = json.loads(simulated("show", "--json").stdout)["input"]["calibration"]["places"]
        self.assertEqual(told["48.7"], {"value": 0})

    def test_tells_every_group(self):
        headings = [line for line in simulated("show").stdout.splitlines() if line and not line.startswith(" ")]
        self.assertEqual(headings, ["identity", "mode", "input", "scaling", "unit", "output", "rate", "can"])

    def test_tells_the_same_as_json(self):
        told = json.loads(self.on_bench(THREE_CHANNELS, "show", "--json").stdout)
        self.assertEqual(told["identity"]["serial-number"], {"value": 4711})
        self.assertEqual(told["rate"]["sampling-frequency"], {"unit": "Hz", "value": 250})
        self.assertEqual(told["scaling"]["user-scale"]["places"], {n: {"value": 1} for n in ("1", "2", "3")})


class Get(ParameterTest):
    def test_prints_the_value_alone(self):
        self.assert_output(simulated("get", "serial-number"), "1000001\n")

    def test_prints_one_channel(self):
        self.assert_output(simulated("get", "unit", "2"), "mV/V\n")

    def test_prints_all_channels_with_their_numbers(self):
        self.assert_output(self.on_bench(THREE_CHANNELS, "get", "input-type"), "1 1\n2 1\n3 1\n")

    def test_takes_pairs(self):
        self.assert_output(simulated("get", "counter-setting", "2.15"), "0\n")

    def test_ranges_of_type_3_are_told_in_thousandths(self):
        self.assert_output(self.on_bench(ONE_RANGE_TYPE_3, "get", "input-range", "1"), "2.5\n")

    def test_tells_whether_a_command_is_known(self):
        self.assert_output(simulated("get", "command-known", "0x2B"), "1\n")
        self.assert_output(simulated("get", "command-known", "0xFF"), "0\n")

    def test_prints_the_sensor_memory(self):
        self.assertEqual(bytes.fromhex(simulated("get", "sensor-memory", "1").stdout), bytes(range(0x10, 0x50)))

    def test_a_refusal_is_a_failure(self):
        self.assert_failure(simulated("get", "can-setting", "200"), DEVICE_FAILED, "reading can-setting of index 200",
                            "0x51")

    def test_a_calibration_index_without_a_value_is_a_failure(self):
        self.assert_failure(simulated("get", "calibration", "6.0"), DEVICE_FAILED, "keeps no value")

    def test_an_unknown_name_is_told_with_similar_ones(self):
        self.assert_failure(simulated("get", "scale"), USAGE, "user-scale, output-scale")

    def test_a_place_that_there_is_not_is_refused(self):
        self.assert_failure(simulated("get", "input-type", "9"), USAGE, "channel 1..8")
        self.assert_failure(simulated("get", "serial-number", "1"), USAGE)

    def test_what_can_only_be_written_is_refused(self):
        self.assert_failure(simulated("get", "blocking"), USAGE, "only be written", "torvik set blocking VALUE\n")
        self.assert_failure(simulated("get", "output-value", "1"), USAGE, "only be written",
                            "torvik set output-value PLACE VALUE, where the place is channel 1..8, or 'all'\n")


class Set(ParameterTest):
    def assert_set(self, *words):
        self.assert_output(simulated("set", *words), "")

    def test_values_read_back_as_they_were_set(self):
        for words in (("serial-number", "123456"), ("transmit-mode", "1", "0x8001"), ("zero-signal", "2", "-5"),
                      ("user-offset", "3", "-1.5e-3"), ("user-scale", "1", "0.1"), ("noise-cut", "6", "0.25"),
                      ("unit", "1", "kN"), ("unit", "7", "user2"), ("user-text", "2", "abcdefg"),
                      ("output-scale", "1", "3"), ("analogue-filter", "65535"), ("filters-on", "0xFFFF"),
                      ("filters-on", "0x8102"), ("counter-setting", "2.15", "4294967295"),
                      ("transmitted-channels", "3"), ("can-setting", "5", "0xFFFFFFFF"), ("calibration", "0.7", "0.1"),
                      ("calibration", "8.0", "-2147483648")):
            with self.subTest(words=words):
                self.assert_set(*words)

    def test_values_that_restart_the_device_read_back_as_they_were_set(self):
        for words in (("input-type", "1", "3"), ("input-range", "1", "2.5"), ("sampling-frequency", "62.5"),
                      ("output-offset", "2", "0.1"), ("sensitivity", "1", "2"), ("offered-range", "1.2", "3")):
            with self.subTest(words=words):
                self.assert_set(*words)

    def test_the_bytes_of_an_output_type_keep_their_order(self):
        self.assert_set("output-type", "1", "0x1234")

    def test_an_entry_of_the_transmit_mapping_keeps_its_form(self):
        for entry in ("0x0123", "0xFFFF", "0x8001"):
            self.assert_set("transmit-mapping", "16", entry)

    def test_a_range_of_type_3_is_written_as_it_is_told(self):
        self.assert_output(self.on_bench(ONE_RANGE_TYPE_3, "set", "input-range", "1", "0.5"), "")

    def test_all_channels_are_set_at_once(self):
        self.assert_set("user-scale", "all", "2.5")

    def test_write_only_parameters_are_sent(self):
        for words in (("blocking", "1"), ("output-value", "1", "65535"), ("identifier-command", "0x01020304"),
                      ("new-operating-hours", "12.5")):
            with self.subTest(words=words):
                self.assert_set(*words)

    def test_a_value_that_the_device_rounds_has_an_exit_code_of_its_own(self):
        self.assert_failure(simulated("set", "input-range", "1", "2.504"), DIFFERS, "now tells 2.5")

    def test_the_unit_of_channel_8_is_set_but_not_read_back(self):
        result = simulated("set", "unit", "8", "kN")
        self.assert_ended(result, SUCCESS)
        self.assertIn("cannot be read back", result.stderr)

    def test_a_refusal_by_the_device_is_a_failure(self):
        self.assert_failure(simulated("set", "input-type", "1", "9"), DEVICE_FAILED, "setting input-type of channel 1",
                            "0x52")

    def test_firmware_without_restart_is_told(self):
        result = self.on_bench(NO_RESTART, "set", "sampling-frequency", "50")
        self.assert_ended(result, SUCCESS)
        self.assertIn("knows no restart", result.stderr)

    def test_firmware_without_input_types_is_a_failure(self):
        self.assert_failure(self.on_bench(NO_RESTART, "set", "input-type", "1", "3"), DEVICE_FAILED, "0x30000062")

    def test_values_outside_their_range_are_refused_without_a_device(self):
        for words in (("serial-number", "0"), ("output-type", "1", "0x10000"), ("user-offset", "1", "0,5"),
                      ("user-text", "1", "123456789"), ("unit", "1", "furlong")):
            with self.subTest(words=words):
                self.assert_failure(run("set", *words), USAGE, f"'{words[-1]}' is no value")

    def test_numbers_that_are_not_finite_are_refused_without_a_device(self):
        for words in (("user-scale", "1", "nan"), ("user-scale", "all", "inf"), ("output-offset", "1", "infinity"),
                      ("sampling-frequency", "nan")):
            with self.subTest(words=words):
                self.assert_failure(run("set", *words), USAGE, f"'{words[-1]}' is no value", "give a finite number")

    def test_a_channel_that_is_missing_or_too_much_is_refused(self):
        self.assert_failure(run("set", "user-scale", "2"), USAGE, "'all'")
        self.assert_failure(run("set", "serial-number", "1", "2"), USAGE, "no place")
        self.assert_failure(run("set", "user-scale", "1", "2", "3"), USAGE, "a place and a value")

    def test_help_tells_its_words_one_by_one(self):
        result = run("set", "--help")
        self.assert_ended(result, SUCCESS)
        self.assertIn("\nUsage: torvik set [OPTIONS] PARAMETER [PLACE] VALUE\n", result.stdout)
        for word in ("PARAMETER REQUIRED", "PLACE", "VALUE REQUIRED"):
            self.assertRegex(result.stdout, f"(?m)^  {word}  +[a-z]")

    def test_words_that_are_missing_are_told(self):
        self.assert_failure(run("set", "user-scale"), USAGE,
                            "torvik set user-scale PLACE VALUE, where the place is channel 1..8, or 'all'")
        result = run("set")
        self.assert_ended(result, USAGE)
        self.assertIn("PARAMETER is required", result.stderr)

    def test_what_can_only_be_read_is_refused(self):
        self.assert_failure(run("set", "firmware-version", "1"), USAGE, "only be read")


class Zero(ParameterTest):
    def test_takes_all_channels(self):
        self.assert_output(self.on_bench(STILL, "zero"),
                           "channel 1 zero-signal 1234 counts\nchannel 2 zero-signal -77 counts\n")

    def test_takes_one_channel(self):
        self.assert_output(self.on_bench(STILL, "zero", "2"), "channel 2 zero-signal -77 counts\n")

    def test_refuses_a_channel_that_there_cannot_be(self):
        self.assert_ended(run("zero", "9"), USAGE)


class Units(ParameterTest):
    def test_the_table_needs_no_device(self):
        lines = run("units").stdout.splitlines()
        self.assertEqual(len(lines), 1 + 47 + 2)
        self.assertEqual(lines[1].split(), ["0", "mV/V", "mV/V"])
        self.assertEqual(lines[47].split(), ["46", "kWh", "kWh"])

    def test_tells_the_units_of_the_channels(self):
        result = self.on_bench(THREE_CHANNELS, "units", "--channels")
        self.assert_ended(result, SUCCESS)
        self.assertEqual(result.stdout.splitlines()[:3], ["channel 1 mV/V", "channel 2 mV/V", "channel 3 mV/V"])


class Settings(ParameterTest):
    def test_a_set_is_stored(self):
        self.assert_output(simulated("settings", "store", "3"), "")

    def test_a_set_is_loaded(self):
        self.assert_output(simulated("settings", "load", "0"), "")

    def test_the_factory_set_is_loaded(self):
        self.assert_output(simulated("settings", "load", "1"), "")

    def test_a_set_that_the_device_protects_is_a_failure(self):
        self.assert_failure(simulated("settings", "store", "1"), DEVICE_FAILED, "storing the present settings as set 1")

    def test_a_set_that_there_is_not_is_a_failure(self):
        self.assert_failure(simulated("settings", "load", "200"), DEVICE_FAILED, "loading settings set 200")

    def test_a_number_beyond_a_byte_is_refused(self):
        self.assert_ended(run("settings", "load", "256"), USAGE)

    def test_firmware_without_restart_is_told(self):
        result = self.on_bench(NO_RESTART, "settings", "load", "2")
        self.assert_ended(result, SUCCESS)
        self.assertIn("knows no restart", result.stderr)


if __name__ == "__main__":
    main()
