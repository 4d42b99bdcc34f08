#include <array>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <limits>
#include <random>
#include <thread>
#include <vector>

#include "support/bench_fixture.h"

namespace {

using namespace torvik::test;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

class Release : public Bench {
  protected:
    // Releases `number` while a call waits for an answer that does not come.
    static void releaseDuringACall(std::int32_t number) {
        activate();
        drop(0x01, 1);
        std::atomic<std::int32_t> result = 0;
        std::thread caller([&result] {
            std::uint32_t ident = 0;
            result = TORVIKgetInterfaceIdent(device, 0, &ident);
        });
        while (takeWritten().empty())
            std::this_thread::sleep_for(milliseconds(1));
        const auto begun = Clock::now();
        TORVIKrelease(number);
        caller.join();
        EXPECT_LT(Clock::now() - begun, milliseconds(1000)) << "well before the answer's two seconds";
        EXPECT_EQ(result, -1);
        expectLastError(device, 0x30000113, notInitialized);
    }
};

// Calls of the filter designer that last for hours unless something ends them.
class ReleaseDuringSimulation : public Release {
  protected:
    void SetUp() override {
        Release::SetUp();
        activate();
        constexpr std::uint32_t onlyDesigned = 9;
        ASSERT_EQ(TORVIKcalcSetDfilterParams(device, onlyDesigned, 0, 0, 2, 4, 10, 0), 0) << takeLastError(device).text;
        ASSERT_FALSE(takeWritten().empty());
    }
    void TearDown() override {
        Release::TearDown();
        std::filesystem::remove(file_);
    }

    std::int32_t simulate(std::int32_t points) {
        return TORVIKsimulateDfilter(device, 1, 4, 400, 1000, points, file_.c_str());
    }

    std::thread longSimulation() {
        std::thread thread([this] { EXPECT_EQ(simulate(std::numeric_limits<std::int32_t>::max()), -1); });
        while (!std::filesystem::exists(file_))
            std::this_thread::sleep_for(milliseconds(1));
        return thread;
    }

    static void releaseQuickly(std::int32_t number) {
        const auto begun = Clock::now();
        TORVIKrelease(number);
        EXPECT_LT(Clock::now() - begun, milliseconds(1000));
    }

  private:
    const std::string file_ =
        (std::filesystem::temp_directory_path() / ("release" + std::to_string(std::random_device()()) + ".txt"))
            .string();
};

TEST_F(ReleaseDuringSimulation, Simulation_OfTheReleasedDevice_EndsAtOnce) {
    std::thread caller = longSimulation();
    releaseQuickly(device);
    caller.join();
    expectLastError(device, 0x30000113, notInitialized);
}

TEST_F(ReleaseDuringSimulation, Simulation_WhenEverythingIsReleased_EndsAtOnce) {
    std::thread caller = longSimulation();
    releaseQuickly(0);
    caller.join();
    expectLastError(device, 0x30000113, notInitialized);
}

TEST_F(ReleaseDuringSimulation, CallThatWaitsForTheFilter_OfTheReleasedDevice_EndsAtOnce) {
    std::thread first = longSimulation();
    std::thread second([this] { EXPECT_EQ(simulate(20), -1); });
    std::this_thread::sleep_for(milliseconds(20));
    releaseQuickly(device);
    first.join();
    second.join();
    expectLastError(device, 0x30000113, notInitialized);
}

TEST_F(Release, CallThatWaitsForItsAnswerEndsWithTheDevice) {
    releaseDuringACall(device);
}

TEST_F(Release, CallThatWaitsForItsAnswerEndsWithEverything) {
    releaseDuringACall(0);
}

TEST_F(Release, ActivationThatWaitsForItsDeviceEndsWithEverything) {
    drop(0x8C);
    std::atomic<std::int32_t> result = 0;
    std::thread caller([&result] {
        std::uint32_t channels = 0;
        result = TORVIKactivateStd(device, &channels);
    });
    while (takeWritten().empty())
        std::this_thread::sleep_for(milliseconds(1));
    const auto begun = Clock::now();
    TORVIKrelease(0);
    caller.join();
    EXPECT_LT(Clock::now() - begun, milliseconds(1000)) << "well before the answer's two seconds";
    EXPECT_EQ(result, -1);
    expectLastError(device, 0x30000113, notInitialized);
}

TEST_F(Release, SilentDeviceThatIsBeingActivatedHoldsUpNobodyElse) {
    ASSERT_EQ(virtualConfigure("[[amplifier]]\ncopies = 3\nidentifier_step = 3\n"), 0) << virtualMessage();
    activate();
    virtualAnswerRule(1, VIRTUAL_ANY_COMMAND, VIRTUAL_ANSWER_DROP, VIRTUAL_FOR_EVER, 0, nullptr);
    std::atomic<bool> waiting = true;
    std::thread caller([&waiting] {
        std::uint32_t channels = 0;
        EXPECT_EQ(TORVIKactivateExtended(2, TORVIK_ADAPTER_USB, 1000000, 100, &channels, 0x103, 0x104,
                                         TORVIK_FLAG_PROTOCOL_KIND_16),
                  -1);
        waiting = false;
    });
    while (takeWritten().empty())
        std::this_thread::sleep_for(milliseconds(1));
    settle();
    TORVIKrelease(device);
    std::uint32_t channels = 0;
    EXPECT_EQ(TORVIKactivateExtended(3, TORVIK_ADAPTER_USB, 1000000, 100, &channels, 0x106, 0x107,
                                     TORVIK_FLAG_PROTOCOL_KIND_16),
              0);
    EXPECT_TRUE(waiting) << "all that takes far less than the two seconds of the silent device";
    caller.join();
    expectLastError(2, 249, "TORVIKLIB: error while getting CAN identifier [249]");
}

TEST_F(Release, FailedActivationLeavesTheAdapterToAnotherOneInProgress) {
    ASSERT_EQ(virtualConfigure("[[amplifier]]\ncopies = 2\nidentifier_step = 3\n"), 0) << virtualMessage();
    virtualAnswerRule(0, VIRTUAL_ANY_COMMAND, VIRTUAL_ANSWER_DELAY, VIRTUAL_FOR_EVER, 100'000, nullptr);
    std::int32_t result = -1;
    std::thread slow([&result] {
        std::uint32_t channels = 0;
        result = TORVIKactivateStd(device, &channels);
    });
    while (takeWritten().empty())
        std::this_thread::sleep_for(milliseconds(1));
    std::uint32_t channels = 0;
    EXPECT_EQ(TORVIKactivateExtended(2, TORVIK_ADAPTER_USB, 1000000, 100, &channels, 0x101, 0x104,
                                     TORVIK_FLAG_PROTOCOL_KIND_16),
              -1);
    EXPECT_EQ(takeLastError(2).code, 0x30000114u);
    slow.join();
    EXPECT_EQ(result, 0) << takeLastError(device).text;
}

TEST_F(Release, OneOfSeveralActivationsOfADeviceSucceeds) {
    for (int round = 0; round < 20; ++round) {
        std::atomic<int> successes = 0;
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&successes] {
                std::uint32_t channels = 0;
                if (TORVIKactivateStd(device, &channels) == 0 && channels == 6) ++successes;
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(successes, 1);
        takeLastError(device);
        settle();
        TORVIKrelease(0);
    }
}

TEST_F(Release, ReadingWhileDevicesComeAndGoStaysWithinItsResults) {
    std::atomic<bool> ends = false;
    std::atomic<int> outOfRange = 0;
    std::thread reader([&] {
        std::array<double, 12> values{};
        while (!ends) {
            std::int32_t count = 0;
            const std::int32_t result = TORVIKreadMultiple(device, 0, values.data(), 12, &count, nullptr);
            if (result < -1 || result > 1 || count < 0 || count > 12) ++outOfRange;
        }
    });
    for (int round = 0; round < 30; ++round) {
        std::uint32_t channels = 0;
        EXPECT_EQ(TORVIKactivateStd(device, &channels), 0);
        virtualSendSets(amplifier, 20);
        TORVIKrelease(round % 2 == 0 ? device : 0);
    }
    ends = true;
    reader.join();
    EXPECT_EQ(outOfRange, 0);
}

}  // namespace
