#include <fstream>
#include <string>

#include "bench_file.hpp"
#include "open_adapter.hpp"
#include "support/temporary_folder.h"
#include "system_support.hpp"
#include "toml_file.hpp"

// Texts and files that would end or stop a host whose adapter reads them without limits.
namespace virtual_test {
namespace {

using torvik::test::temporaryFile;
using virtual_adapter::parseBench;
using virtual_adapter::readBenchFile;
using HostileBench = ClosedAdapter;

std::string repeated(std::string_view text, std::size_t times) {
    std::string all;
    for (std::size_t i = 0; i < times; ++i)
        all += text;
    return all;
}

std::string messageFor(const std::string& text) {
    const auto result = parseBench(text, "bench");
    return result.bench ? "understood" : result.message;
}

std::string written(const char* name, const std::string& text) {
    std::string path = temporaryFile(name);
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

TEST(BenchText, KeyOfTwentyThousandParts_IsRejectedWithItsPlace) {
    const std::string message = "bench:2:32: a key has more than 16 parts";
    EXPECT_EQ(messageFor("\n" + repeated("a.", 20'000) + "b = 1\n"), message);
    EXPECT_EQ(messageFor("\n" + repeated("a.", 100'000) + "b = 1\n"), message);
    EXPECT_EQ(messageFor("\n" + repeated("a .", 20'000) + "b = 1\n"), "bench:2:48: a key has more than 16 parts");
    EXPECT_EQ(messageFor("\n" + repeated("\"a\".", 20'000) + "b = 1\n"), "bench:2:64: a key has more than 16 parts");
}

TEST(BenchText, TableNameOfTwentyThousandParts_IsRejectedWithItsPlace) {
    EXPECT_EQ(messageFor("[" + repeated("a.", 20'000) + "b]\n"), "bench:1:33: a key has more than 16 parts");
    EXPECT_EQ(messageFor("[[" + repeated("a.", 20'000) + "b]]\n"), "bench:1:34: a key has more than 16 parts");
}

TEST(BenchText, KeyInInlineTableOfTwentyThousandParts_IsRejectedWithItsPlace) {
    EXPECT_EQ(messageFor("a = {x = 1.5, " + repeated("a.", 20'000) + "b = 1}\n"),
              "bench:1:46: a key has more than 16 parts");
}

TEST(BenchText, DeepValues_AreRejectedWithTheirPlace) {
    const std::string reason = ": arrays and inline tables are more than 16 deep";
    EXPECT_EQ(messageFor("a = " + repeated("[", 200)), "bench:1:21" + reason);
    EXPECT_EQ(messageFor("a = " + repeated("{b=", 200)), "bench:1:53" + reason);
    EXPECT_EQ(messageFor("a = " + repeated("[\n", 200)), "bench:17:1" + reason);
}

TEST(BenchText, LongKey_IsRejectedWithItsPlace) {
    const std::string reason = ": a key is longer than 128 bytes";
    EXPECT_EQ(messageFor("a = 1\n" + repeated("k", 129) + " = 1\n"), "bench:2:1" + reason);
    EXPECT_EQ(messageFor("'" + repeated("k", 129) + "' = 1\n"), "bench:1:1" + reason);
    EXPECT_EQ(messageFor("[" + repeated("k", 129) + "]\n"), "bench:1:2" + reason);
    EXPECT_EQ(messageFor("a = {b = [1], " + repeated("k", 129) + " = 1}\n"), "bench:1:15" + reason);
    EXPECT_EQ(messageFor(repeated("k", 128) + " = 1\n"), "bench:1:132: unknown key \"" + repeated("k", 128) + "\"");
}

TEST(BenchText, LettersBeyondAsciiOutsideQuotes_AreRejectedWithTheirPlace) {
    const std::string reason = ": characters beyond ASCII need quotes";
    EXPECT_EQ(messageFor("\n[[amplifier\xD2\x89]]\n"), "bench:2:12" + reason);
    EXPECT_EQ(messageFor("a\xC3\xA9 = 1\n"), "bench:1:2" + reason);
    EXPECT_EQ(messageFor("a = \xF3\xA0\x84\x80\n"), "bench:1:5" + reason);
    EXPECT_EQ(messageFor("\"\xC3\xA9\" = 1\n"), "bench:1:7: unknown key \"\xC3\xA9\"");
    EXPECT_EQ(messageFor("\xEF\xBB\xBF# \xC3\xA9\n[[amplifier]]\n"), "understood");
}

// Dots, brackets and long words inside values and comments are no structure.
TEST(BenchText, LongTextsInValuesAndComments_AreUnderstood) {
    const std::string many = repeated("a.[{", 100);
    for (const std::string& text : std::initializer_list<std::string>{
             "# " + many + "\n", "a = \"" + many + "\\\"" + many + "\" # " + many, "a = '" + many + "\\'",
             "a = \"\"\"" + many + "\n\"\"\\\"\"\"" + many + "\"\"\"\"\"\nb = 1",
             "a = '''" + many + "\n''" + many + "'''",
             "a = [\"" + many + "\",\n'" + many + "', 1.5, 1979-05-27T07:32:00.5]",
             "a = [ [1.5, 2.5], [3.5, 4.5], [1.1] ]",
             "[" + repeated("a.", 15) + "a]\n" + repeated("a.", 15) + "a = 1\n" + repeated("b.", 15) + "a = 1\n",
             "a = " + repeated("[", 16) + repeated("]", 16) + "\nb = " + repeated("[", 16) + repeated("]", 16)}) {
        EXPECT_NO_THROW(static_cast<void>(bounded_toml::parse(text))) << text;
    }
}

TEST(BenchText, MoreThanAMebibyte_IsRejected) {
    EXPECT_EQ(messageFor(repeated("#\n", 524'288)), "understood");
    EXPECT_EQ(messageFor(repeated("#\n", 524'288) + "#"), "bench: the file has more than 1048576 bytes");
    EXPECT_EQ(readBenchFile(written("large.toml", repeated("#\n", 524'288))).message, "");
    const std::string path = written("larger.toml", repeated("#\n", 524'288) + "#");
    EXPECT_EQ(readBenchFile(path).message, path + ": the file has more than 1048576 bytes");
}

TEST(BenchText, ControlCharactersOfKeys_AreShownAsNumbers) {
    EXPECT_EQ(messageFor("\"\\u001b[2J\\u0085\\u007F\" = 1\n"), "bench:1:27: unknown key \"\\x1B[2J\\x85\\x7F\"");
}

TEST_F(HostileBench, NumbersOutOfRange_AreRejected) {
    for (const char* const line : {"frequency = 0",
                                   "frequency = 1e300",
                                   "frequency = nan",
                                   "frequency = -inf",
                                   "frequency = 1e6001",
                                   "channels = 0",
                                   "channels = 9",
                                   "channels = 9223372036854775807",
                                   "channels = 9223372036854775808",
                                   "command = 0x800",
                                   "value = -1",
                                   "copies = 40",
                                   "copies = 0",
                                   "identifier_step = 2048",
                                   "answer_time_us = 10000001",
                                   "reset_time_ms = 10001",
                                   "seed = -1",
                                   "signal = [{amplitude = nan}]",
                                   "signal = [{frequency = 1e300}]",
                                   "signal = [{offset = 1e31}]",
                                   "signal = [{noise = inf}]",
                                   "ranges = [[1, 16777216]]",
                                   "command = 0x101",
                                   "serial = 4294967296"}) {
        EXPECT_EQ(virtualConfigure((std::string("[[amplifier]]\n") + line + "\n").c_str()), -1) << line;
    }
}

TEST_F(HostileBench, FolderInTheEnvironment_KeepsTheChannelClosedAndTheProcessAlive) {
    const std::string folder = std::filesystem::temp_directory_path().string();
    setEnvironment("TORVIK_VIRTUAL_BENCH", folder.c_str());
    EXPECT_EQ(virtualReset(), -1);
    EXPECT_EQ(CAN_Initialize(kUsb, kMegabit, 0, 0, 0), kIllegalData);
    EXPECT_EQ(CAN_Initialize(kUsb, kMegabit, 0, 0, 0), kIllegalData);
    EXPECT_STREQ(virtualMessage(), (folder + ": this is a folder").c_str());
    setEnvironment("TORVIK_VIRTUAL_BENCH", "");
    EXPECT_EQ(virtualReset(), 0);
    EXPECT_STREQ(virtualMessage(), "");
    EXPECT_EQ(CAN_Initialize(kUsb, kMegabit, 0, 0, 0), kOk);
}

}  // namespace
}  // namespace virtual_test
