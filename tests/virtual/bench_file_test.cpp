#include "bench_file.hpp"

#include <cstdlib>
#include <filesystem>
#include <string>

#include "open_adapter.hpp"
#include "system_support.hpp"
#include "value_stream.hpp"

namespace virtual_test {
namespace {

using namespace virtual_adapter;
using ConfiguredAdapter = ClosedAdapter;

std::string refusalOfFile(const std::string& text) {
    const BenchResult result = parseBench(text, "bench");
    return result.bench ? "understood" : result.message;
}

BenchConfig understood(const std::string& text) {
    const BenchResult result = parseBench(text, "bench");
    EXPECT_TRUE(result.bench) << result.message;
    return result.bench.value_or(BenchConfig{});
}

TEST(BenchFile, AmplifierWithoutKeysIsTheDefaultOne) {
    const BenchConfig bench = understood("[[amplifier]]\n");
    ASSERT_EQ(bench.amplifiers.size(), 1U);
    EXPECT_EQ(bench.amplifiers[0].commandId, 0x100U);
    EXPECT_EQ(bench.amplifiers[0].firmware, 0x00040000U);
    EXPECT_EQ(bench.amplifiers[0].signals.size(), 6U);
    EXPECT_FALSE(bench.timing);
}

TEST(BenchFile, EveryKeyIsTaken) {
    const BenchConfig bench = understood(R"(
        [bus]
        timing = true
        [[amplifier]]
        command = 0x300
        answer = 0x310
        value = 0x320
        channels = 3
        firmware = 0x0003000A
        protocol = 32
        mode = 0x80
        interface_ident = [1, 2, 3, 4]
        seed = 99
        value_type = "float32"
        unit = "counts"
        calibrated = true
        streaming = false
        frequency = 12.5
        answer_time_us = 230
        reset_time_ms = 50
        serial = 4294967295
        ranges = [[1, 1000], [255, 16777215]]
          [[amplifier.signal]]
          wave = "ramp"
          amplitude = 2
          offset = -1.5
          frequency = 0.5
          noise = 0.25
    )");
    ASSERT_EQ(bench.amplifiers.size(), 1U);
    const AmplifierConfig& amplifier = bench.amplifiers[0];
    EXPECT_TRUE(bench.timing);
    EXPECT_EQ(amplifier.commandId, 0x300U);
    EXPECT_EQ(amplifier.answerId, 0x310U);
    EXPECT_EQ(amplifier.valueId, 0x320U);
    EXPECT_EQ(amplifier.firmware, 0x0003000AU);
    EXPECT_EQ(amplifier.protocolKind, 32U);
    EXPECT_EQ(amplifier.mode, 0x80U);
    EXPECT_EQ(amplifier.interfaceIdent, (std::array<std::uint32_t, 4>{1, 2, 3, 4}));
    EXPECT_EQ(amplifier.seed, 99U);
    EXPECT_EQ(amplifier.valueType, ValueType::float32);
    EXPECT_TRUE(amplifier.counts);
    EXPECT_TRUE(amplifier.calibrated);
    EXPECT_FALSE(amplifier.streaming);
    EXPECT_EQ(amplifier.frequency, 12.5);
    EXPECT_EQ(amplifier.answerTime, 230U);
    EXPECT_EQ(amplifier.resetTime, 50U);
    EXPECT_EQ(amplifier.serial, 4294967295U);
    EXPECT_EQ(amplifier.ranges, (std::vector<InputRange>{{1, 1000}, {255, 16777215}}));
    ASSERT_EQ(amplifier.signals.size(), 3U);
    EXPECT_EQ(amplifier.signals[0].waveform, Waveform::ramp);
    EXPECT_EQ(amplifier.signals[0].amplitude, 2.0);
    EXPECT_EQ(amplifier.signals[0].offset, -1.5);
    EXPECT_EQ(amplifier.signals[0].frequency, 0.5);
    EXPECT_EQ(amplifier.signals[0].noise, 0.25);
    EXPECT_EQ(amplifier.signals[2].waveform, Waveform::constant) << "channels without a signal are constantly 0";
}

TEST(BenchFile, CopiesGetIdentifiersAndSeedsOfTheirOwn) {
    const BenchConfig bench = understood("[[amplifier]]\ncopies = 39\nidentifier_step = 5\nseed = 10\n");
    ASSERT_EQ(bench.amplifiers.size(), 39U);
    EXPECT_EQ(bench.amplifiers[38].commandId, 0x100U + 38 * 5);
    EXPECT_EQ(bench.amplifiers[38].valueId, 0x102U + 38 * 5);
    EXPECT_EQ(bench.amplifiers[38].seed, 48U);
}

TEST(BenchFile, RefusalsSayWhereAndWhy) {
    EXPECT_EQ(refusalOfFile("[[amplifier]]\nchannels = 9\n"), "bench:2:12: \"channels\" is not a whole number of 1..8");
    EXPECT_EQ(refusalOfFile("[[amplifier]]\nchannels = \"6\"\n"),
              "bench:2:12: \"channels\" is not a whole number of 1..8");
    EXPECT_EQ(refusalOfFile("[[amplifier]]\n\nfirmware = -1\n"),
              "bench:3:12: \"firmware\" is not a whole number of 0..4294967295");
    EXPECT_EQ(refusalOfFile("[[amplifier]]\ncolour = 1\n"), "bench:2:10: unknown key \"colour\"");
    EXPECT_EQ(refusalOfFile("[[amplifier]]\nvalue_type = \"int32\"\n"),
              "bench:2:14: \"value_type\" is none of int16, int24, float32");
    EXPECT_EQ(refusalOfFile("[[amplifier]]\nfrequency = 0\n"),
              "bench:2:13: \"frequency\" is not a number in its range");
    EXPECT_EQ(refusalOfFile("[[amplifier]]\nfrequency = inf\n"),
              "bench:2:13: \"frequency\" is not a number in its range");
    EXPECT_EQ(refusalOfFile("[[amplifier]]\nfrequency = \"1\"\n"),
              "bench:2:13: \"frequency\" is not a number in its range");
    EXPECT_EQ(refusalOfFile("[[amplifier]]\nprotocol = 17\n"), "bench:2:12: \"protocol\" is neither 16 nor 32");
    EXPECT_EQ(refusalOfFile("[[amplifier]]\nstreaming = 1\n"), "bench:2:13: \"streaming\" is neither true nor false");
    EXPECT_EQ(refusalOfFile("[[amplifier]]\ninterface_ident = [1, 2]\n"),
              "bench:2:19: \"interface_ident\" is not an array of 4 numbers");
    EXPECT_EQ(refusalOfFile("[[amplifier]]\nserial = 0\n"),
              "bench:2:10: \"serial\" is not a whole number of 1..4294967295");
    EXPECT_EQ(refusalOfFile("[[amplifier]]\nranges = [[1, 2], [256, 2]]\n"),
              "bench:2:20: \"ranges\" is not a whole number of 0..255");
    EXPECT_EQ(refusalOfFile("[[amplifier]]\nranges = [1, 2]\n"),
              "bench:2:11: \"ranges\" does not consist of 2 numbers each");
    EXPECT_EQ(refusalOfFile("[[amplifier]]\nranges = 1\n"), "bench:2:10: \"ranges\" is not an array of at most 12");
    EXPECT_EQ(refusalOfFile("[amplifier]\n"), "bench:1:1: \"amplifier\" is not an array of tables");
    EXPECT_EQ(refusalOfFile("bus = 1\n"), "bench:1:7: \"bus\" is not a table");
    EXPECT_EQ(refusalOfFile("[[amplifier]]\nchannels = 1\n[[amplifier.signal]]\n[[amplifier.signal]]\n"),
              "bench:4:1: more than 1 of \"signal\"");
    EXPECT_EQ(refusalOfFile("[[amplifier]]\n[[amplifier]]\ncommand=5\nanswer=6\nvalue=7\ncopies=39\n"),
              "bench:2:1: more than 39 amplifiers");
    EXPECT_EQ(refusalOfFile("[[amplifier]]\ncopies = 39\nidentifier_step = 100\n"),
              "bench:1:1: the copies need identifiers above 0x7FF");
    EXPECT_NE(refusalOfFile("[[amplifier\n").find("bench:1:12: "), std::string::npos) << refusalOfFile("[[amplifier\n");
}

TEST(BenchFile, EqualIdentifiersAreRefusedUnlessAskedFor) {
    EXPECT_EQ(refusalOfFile("[[amplifier]]\n[[amplifier]]\n"), "bench:2:1: identifier 0x100 is used twice");
    EXPECT_EQ(refusalOfFile("[[amplifier]]\nanswer = 0x102\n"), "bench:1:1: identifier 0x102 is used twice");
    EXPECT_EQ(understood("[bus]\nequal_identifiers = true\n[[amplifier]]\n[[amplifier]]\n").amplifiers.size(), 2U);
    EXPECT_EQ(refusalOfFile("[bus]\nequal_identifiers = true\n[[amplifier]]\nanswer = 0x102\n"),
              "bench:3:1: identifier 0x102 is used twice");
}

TEST(BenchFile, ExamplesAreUnderstood) {
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(TORVIK_EXAMPLE_BENCHES)) {
        const BenchResult result = readBenchFile(entry.path().string());
        EXPECT_TRUE(result.bench) << result.message;
        ++files;
    }
    EXPECT_GE(files, 4);
}

TEST(BenchFile, DefaultExampleIsWhatTheAdapterHasWithoutAny) {
    const auto example = readBenchFile(TORVIK_EXAMPLE_BENCHES "/default.toml").bench;
    ASSERT_TRUE(example);
    const BenchConfig standard = defaultBench();
    ASSERT_EQ(example->amplifiers.size(), standard.amplifiers.size());
    const AmplifierConfig& left = example->amplifiers[0];
    const AmplifierConfig& right = standard.amplifiers[0];
    EXPECT_EQ(left.commandId, right.commandId);
    EXPECT_EQ(left.valueId, right.valueId);
    EXPECT_EQ(left.frequency, right.frequency);
    EXPECT_EQ(left.firmware, right.firmware);
    EXPECT_EQ(ValueStream(left).valueAt(3, 1234).counts, ValueStream(right).valueAt(3, 1234).counts);
}

TEST_F(ConfiguredAdapter, RefusedTextLeavesTheBenchAsItIs) {
    ASSERT_EQ(virtualConfigure("[[amplifier]]\nfirmware = 0x00050001\nstreaming = false\n"), 0);
    EXPECT_EQ(virtualConfigure("[[amplifier]]\nchannels = 0\n"), -1);
    EXPECT_STREQ(virtualMessage(), "bench:2:12: \"channels\" is not a whole number of 1..8");
    ASSERT_EQ(CAN_Initialize(kUsb, kMegabit, 0, 0, 0), kOk);
    EXPECT_EQ(ask({0x2B}), (Data{0x44, 0, 0, 5, 0, 1}));
}

TEST_F(ConfiguredAdapter, BenchCanBeReplacedWhileTheChannelIsOpen) {
    ASSERT_EQ(CAN_Initialize(kUsb, kMegabit, 0, 0, 0), kOk);
    ASSERT_EQ(virtualConfigure("[[amplifier]]\nchannels = 1\nfrequency = 500\n"), 0);
    CAN_Reset(kUsb);
    ASSERT_TRUE(eventually([] { return virtualQueued() >= 3; }));
    for (const CanMessage& frame : drain())
        EXPECT_EQ(frame.data[0], 0);
}

TEST_F(ConfiguredAdapter, FileThatIsNotThereIsRefused) {
    EXPECT_EQ(virtualConfigureFile("no-such-bench.toml"), -1);
    EXPECT_STREQ(virtualMessage(), "no-such-bench.toml: there is no such file, or it cannot be opened");
}

TEST_F(ConfiguredAdapter, RefusedFileOfTheEnvironmentKeepsTheChannelClosedUntilABenchIsGiven) {
    setEnvironment("TORVIK_VIRTUAL_BENCH", "no-such-bench.toml");
    EXPECT_EQ(virtualReset(), -1);
    EXPECT_EQ(CAN_Initialize(kUsb, kMegabit, 0, 0, 0), kIllegalData);
    EXPECT_EQ(virtualConfigure("[[amplifier]]\n"), 0);
    EXPECT_EQ(CAN_Initialize(kUsb, kMegabit, 0, 0, 0), kOk);
    setEnvironment("TORVIK_VIRTUAL_BENCH", "");
    EXPECT_EQ(virtualReset(), 0);
}

TEST_F(ConfiguredAdapter, FileOfTheEnvironmentIsUsed) {
    setEnvironment("TORVIK_VIRTUAL_BENCH", TORVIK_EXAMPLE_BENCHES "/mixed-types.toml");
    EXPECT_EQ(virtualReset(), 0) << virtualMessage();
    setEnvironment("TORVIK_VIRTUAL_BENCH", "");
    ASSERT_EQ(CAN_Initialize(kUsb, kMegabit, 0, 0, 0), kOk);
    double value = 0;
    ASSERT_EQ(virtualValue(0, 0, 0, &value), 0);
    EXPECT_EQ(value, -200);
}

}  // namespace
}  // namespace virtual_test
