#include <array>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "support/bench_fixture.h"

namespace {

using namespace torvik::test;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::uint32_t channelCount = 6;

// Devices 1.. on amplifiers 0.., the first on 0x100/0x101/0x102 and every other one three identifiers further.
class SeveralDevices : public Bench {
  protected:
    static void setUpAmplifiers(int count, const std::string& settings = "") {
        const std::string bench =
            "[[amplifier]]\ncommand = 0x100\nanswer = 0x101\nvalue = 0x102\nchannels = 6\n"
            "value_type = \"float32\"\nidentifier_step = 3\ncopies = " +
            std::to_string(count) + "\n" + settings;
        ASSERT_EQ(virtualConfigure(bench.c_str()), 0) << virtualMessage();
        for (int i = 0; i < count; ++i)
            virtualHoldStream(amplifierOf(i + 1), 1);
    }

    static std::uint32_t amplifierOf(std::int32_t deviceNo) { return static_cast<std::uint32_t>(deviceNo - 1); }

    static std::int32_t open(std::int32_t deviceNo) {
        const std::uint32_t commandCanId = 0x100 + 3 * amplifierOf(deviceNo);
        std::uint32_t channels = 0;
        return TORVIKactivateExtended(deviceNo, TORVIK_ADAPTER_USB, 1000000, 1000, &channels, commandCanId,
                                      commandCanId + 1, TORVIK_FLAG_PROTOCOL_KIND_16);
    }

    static void settle(std::int32_t deviceNo) {
        std::uint32_t ident = 0;
        ASSERT_EQ(TORVIKgetInterfaceIdent(deviceNo, 0, &ident), 0) << takeLastError(deviceNo).text;
    }

    static double sent(std::int32_t deviceNo, std::uint32_t channelIndex, std::uint64_t set) {
        double value = 0;
        EXPECT_EQ(virtualValue(amplifierOf(deviceNo), channelIndex, set, &value), 0);
        return value;
    }

    // Everything that waits, set by set.
    static std::vector<double> readAll(std::int32_t deviceNo) {
        std::int32_t waiting = 0;
        EXPECT_EQ(TORVIKreceived(deviceNo, 0, &waiting), 0);
        std::vector<double> values(static_cast<std::size_t>(waiting) * channelCount);
        std::int32_t count = 0;
        if (!values.empty()) {
            EXPECT_EQ(TORVIKreadMultiple(deviceNo, 0, values.data(), static_cast<std::int32_t>(values.size()), &count,
                                         nullptr),
                      1)
                << takeLastError(deviceNo).text;
        }
        EXPECT_EQ(count, static_cast<std::int32_t>(values.size()));
        return values;
    }

    // The values are the amplifier's, in order and without a gap, beginning with set number `first`.
    static void expectSets(std::int32_t deviceNo, const std::vector<double>& values, std::uint64_t first) {
        for (std::size_t i = 0; i < values.size(); ++i) {
            const auto channelIndex = static_cast<std::uint32_t>(i % channelCount);
            ASSERT_EQ(values[i], sent(deviceNo, channelIndex, first + i / channelCount))
                << "device " << deviceNo << ", value " << i;
        }
    }
};

constexpr const char* noise = "[[amplifier.signal]]\nwave = \"noise\"\namplitude = 1000.0\n";

TEST_F(SeveralDevices, ThirtyNineStreamSideBySideAndEachGetsItsOwnValues) {
    setUpAmplifiers(39, noise);
    for (std::int32_t deviceNo = 1; deviceNo <= 39; ++deviceNo)
        ASSERT_EQ(open(deviceNo), 0) << takeLastError(deviceNo).text;
    constexpr std::uint32_t sets = 100;
    for (std::uint32_t set = 0; set < sets; ++set) {
        for (std::int32_t deviceNo = 1; deviceNo <= 39; ++deviceNo)
            ASSERT_EQ(virtualSendSets(amplifierOf(deviceNo), 1), channelCount);
    }
    for (std::int32_t deviceNo = 1; deviceNo <= 39; ++deviceNo) {
        settle(deviceNo);
        const std::vector<double> values = readAll(deviceNo);
        EXPECT_EQ(values.size(), sets * channelCount);
        expectSets(deviceNo, values, 0);
    }
}

TEST_F(SeveralDevices, TwoStreamsAreReadByTwoThreadsWithoutAGap) {
    setUpAmplifiers(2, "frequency = 1000.0\n" + std::string(noise));
    for (const std::int32_t deviceNo : {1, 2}) {
        ASSERT_EQ(open(deviceNo), 0);
        virtualHoldStream(amplifierOf(deviceNo), 0);
    }
    std::array<std::vector<double>, 2> received;
    const auto read = [&received](std::int32_t deviceNo) {
        std::vector<double>& values = received[amplifierOf(deviceNo)];
        const auto deadline = steady_clock::now() + milliseconds(5000);
        while (values.size() < 200 * channelCount && steady_clock::now() < deadline) {
            std::this_thread::sleep_for(milliseconds(5));
            const std::vector<double> latest = readAll(deviceNo);
            values.insert(values.end(), latest.begin(), latest.end());
        }
    };
    std::thread other(read, 2);
    read(1);
    other.join();
    for (const std::int32_t deviceNo : {1, 2}) {
        const std::vector<double>& values = received[amplifierOf(deviceNo)];
        ASSERT_GE(values.size(), 200 * channelCount);
        std::uint64_t first = 0;
        while (first < 100'000 && sent(deviceNo, 0, first) != values[0])
            ++first;
        expectSets(deviceNo, values, first);
    }
}

TEST_F(SeveralDevices, AnswerThatIsMissingHoldsUpItsOwnDeviceOnly) {
    setUpAmplifiers(2);
    ASSERT_EQ(open(1), 0);
    ASSERT_EQ(open(2), 0);
    virtualAnswerRule(0, 0x01, VIRTUAL_ANSWER_DROP, 1, 0, nullptr);
    std::atomic<bool> waiting = true;
    std::thread caller([&waiting] {
        std::uint32_t ident = 0;
        EXPECT_EQ(TORVIKgetInterfaceIdent(1, 0, &ident), -1);
        waiting = false;
    });
    while (takeWritten().empty())
        std::this_thread::sleep_for(milliseconds(1));
    for (int i = 0; i < 50; ++i)
        settle(2);
    EXPECT_TRUE(waiting) << "fifty commands take far less than the two seconds of the other device";
    caller.join();
    expectNoError(2);
}

TEST_F(SeveralDevices, AreActivatedByAsManyThreadsAtTheSameTime) {
    constexpr std::int32_t devices = 8;
    setUpAmplifiers(devices);
    for (int round = 0; round < 5; ++round) {
        std::vector<std::thread> threads;
        std::atomic<int> activated = 0;
        for (std::int32_t deviceNo = 1; deviceNo <= devices; ++deviceNo) {
            threads.emplace_back([deviceNo, &activated] {
                if (open(deviceNo) == 0) ++activated;
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(activated, devices);
        for (std::int32_t deviceNo = 1; deviceNo <= devices; ++deviceNo)
            settle(deviceNo);
        TORVIKrelease(0);
    }
}

TEST_F(SeveralDevices, ReleasedDeviceLeavesTheOthersStreaming) {
    setUpAmplifiers(3, noise);
    for (const std::int32_t deviceNo : {1, 2, 3})
        ASSERT_EQ(open(deviceNo), 0);
    virtualSendSets(amplifierOf(3), 10);
    TORVIKrelease(2);
    virtualSendSets(amplifierOf(2), 10);
    virtualSendSets(amplifierOf(3), 10);
    settle(3);
    EXPECT_EQ(readAll(3).size(), 20 * channelCount);
    ASSERT_EQ(open(2), 0);
    EXPECT_EQ(readAll(2).size(), 0u) << "what came while the device was released is not its own";
}

TEST_F(SeveralDevices, LaterDeviceWithASmallerBufferBoundsTheEarlierOnes) {
    setUpAmplifiers(2);
    ASSERT_EQ(open(1), 0);
    virtualSendSets(amplifierOf(1), 50);
    settle(1);
    std::uint32_t channels = 0;
    ASSERT_EQ(TORVIKactivateExtended(2, TORVIK_ADAPTER_USB, 1000000, 20, &channels, 0x103, 0x104,
                                     TORVIK_FLAG_PROTOCOL_KIND_16),
              0);
    std::int32_t waiting = 0;
    EXPECT_EQ(TORVIKreceived(1, 0, &waiting), 0);
    EXPECT_EQ(waiting, 20);
}

}  // namespace
