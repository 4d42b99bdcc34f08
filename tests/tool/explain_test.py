"""torvik explain, and what the command line refuses: no device and no adapter is needed."""
from tool_runner import CODE_UNKNOWN, SUCCESS, USAGE, ToolTest, main, run


class Explain(ToolTest):
    def test_tells_text_meaning_and_advice(self):
        result = run("explain", "235")
        self.assert_ended(result, SUCCESS)
        self.assertIn("TORVIKLIB: timeout while waiting for other cmd to finish [235]", result.stdout)
        self.assertRegex(result.stdout, r"meaning: +another command held this device")
        self.assertRegex(result.stdout, r"what to try: +repeat the call")
        self.assertEqual(result.stderr, "")

    def test_takes_hexadecimal_codes(self):
        self.assertEqual(run("explain", "0xEB").stdout, run("explain", "235").stdout)

    def test_tells_all_meanings_of_a_shared_number(self):
        result = run("explain", "0x40")
        self.assertIn("CAN Adapter: receive queue was read too late [64]", result.stdout)
        self.assertIn("device: unknown command", result.stdout)
        self.assertIn("CAN adapter: receive queue was read too late", result.stdout)

    def test_takes_adapter_states_apart(self):
        result = run("explain", "0x14")
        self.assert_ended(result, SUCCESS)
        self.assertIn("says several things at once", result.stdout)
        self.assertIn("'light' limit", result.stdout)
        self.assertIn("bus-off", result.stdout)

    def test_tells_codes_that_the_library_has_no_text_for(self):
        result = run("explain", "0x30000209")
        self.assert_ended(result, SUCCESS)
        self.assertIn("Unknown Error. Code: 0x30000209", result.stdout)
        self.assertRegex(result.stdout, r"meaning: +the gain .* above 3200")
        self.assertRegex(result.stdout, r"what to try: +choose a higher cut-off frequency")

    def test_zero_is_no_error(self):
        result = run("explain", "0")
        self.assert_ended(result, SUCCESS)
        self.assertIn("no error exists", result.stdout)

    def test_an_unknown_code_has_an_exit_code_of_its_own(self):
        self.assert_failure(run("explain", "0x12345678"), CODE_UNKNOWN, "Unknown Error. Code: 0x12345678")

    def test_lists_all_codes_without_a_code(self):
        result = run("explain")
        self.assert_ended(result, SUCCESS)
        self.assertEqual(len(result.stdout.splitlines()), 1 + 116)
        self.assertRegex(result.stdout, r"(?m)^0x30000114 +library +CAN-ID already in use$")


class Usage(ToolTest):
    def assert_refused(self, *arguments, says):
        result = run(*arguments)
        self.assert_ended(result, USAGE)
        self.assertIn(says, result.stderr)
        self.assertIn("next:", result.stderr)
        self.assertEqual(result.stdout, "")

    def test_no_command(self):
        self.assert_refused(says="subcommand is required")

    def test_unknown_command(self):
        self.assert_refused("stroll", says="stroll")

    def test_unknown_option(self):
        self.assert_refused("info", "--colour", says="--colour")

    def test_text_that_is_no_code(self):
        self.assert_refused("explain", "soon", says="'soon' is not a code")

    def test_impossible_bit_rate(self):
        self.assert_refused("info", "--baud", "30000", says="1000000, 800000")

    def test_unknown_adapter(self):
        self.assert_refused("info", "--adapter", "serial", says="usb, pci, pccard, handle1")

    def test_device_number_out_of_range(self):
        self.assert_refused("info", "--device", "40", says="1..39")

    def test_identifier_out_of_range(self):
        self.assert_refused("info", "--command-id", "0x800", says="1..2047")

    def test_equal_identifiers(self):
        self.assert_refused("info", "--command-id", "0x101", says="different identifiers")

    def test_unknown_protocol_kind(self):
        self.assert_refused("info", "--protocol", "8", says="neither 16 nor 32")

    def test_no_sets(self):
        self.assert_refused("stream", "--count", "0", says="--count")

    def test_no_time(self):
        self.assert_refused("stream", "--seconds", "0", says="--seconds")
        self.assert_refused("stream", "--seconds", "1,5", says="--seconds")

    def test_help_goes_to_standard_output_and_tells_the_exit_codes(self):
        for arguments in (["--help"], ["stream", "--help"], ["config", "load", "--help"],
                          ["settings", "load", "--help"]):
            result = run(*arguments)
            self.assert_ended(result, SUCCESS)
            self.assertIn("130  interrupted", result.stdout)
            self.assertEqual(result.stderr, "")

    def test_version(self):
        self.assertEqual(run("--version").stdout, "torvik 1.17 (library 1.17)\n")


if __name__ == "__main__":
    main()
