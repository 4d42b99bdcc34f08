#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <future>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/loaded_library.h"
#include "support/program.h"
#include "virtual_control.h"

namespace {

using torvik::test::exitCodeOf;
using torvik::test::LoadedLibrary;

constexpr const char* library = TORVIK_LIBRARY;

using ActivateStd = std::int32_t(std::int32_t, std::uint32_t*);
using ActivateExtended = std::int32_t(std::int32_t, std::uint8_t, std::uint32_t, std::uint32_t, std::uint32_t*,
                                      std::uint32_t, std::uint32_t, std::uint32_t);
using Received = std::int32_t(std::int32_t, std::uint32_t, std::int32_t*);
using GetIdent = std::int32_t(std::int32_t, std::uint8_t, std::uint32_t*);
using GetVersion = std::int32_t(std::uint32_t*);

// TORVIK_UNLOAD_CYCLES asks for more than the usual number.
int cycles() {
    const char* const asked = std::getenv("TORVIK_UNLOAD_CYCLES");
    return asked == nullptr ? TORVIK_UNLOAD_CYCLES : std::stoi(asked);
}

// Activates the default amplifier and waits until it streams.
void stream(const LoadedLibrary& loaded) {
    std::uint32_t channels = 0;
    ASSERT_EQ(loaded.function<ActivateStd>("TORVIKactivateStd")(1, &channels), 0);
    ASSERT_EQ(channels, 6u);
    virtualSendSets(0, 3);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    std::int32_t count = 0;
    while (count == 0 && std::chrono::steady_clock::now() < deadline) {
        ASSERT_EQ(loaded.function<Received>("TORVIKreceived")(1, 0, &count), 0);
        std::this_thread::yield();
    }
    ASSERT_GT(count, 0);
}

TEST(Unload, LibraryThatWasNotUsedLeavesTheProcess) {
    {
        const LoadedLibrary loaded(library);
        ASSERT_TRUE(loaded.loaded());
        std::uint32_t version = 0;
        EXPECT_EQ(loaded.function<GetVersion>("TORVIKDllVersion")(&version), 0);
        EXPECT_TRUE(LoadedLibrary::present(library));
    }
    EXPECT_FALSE(LoadedLibrary::present(library));
}

TEST(Unload, StreamingLibraryLeavesTheProcessWithoutRelease) {
    for (int cycle = 0; cycle < cycles(); ++cycle) {
        // The channel was left open by the unload before.
        ASSERT_EQ(virtualReset(), 0);
        {
            const LoadedLibrary loaded(library);
            ASSERT_TRUE(loaded.loaded());
            stream(loaded);
        }
        ASSERT_FALSE(LoadedLibrary::present(library)) << "cycle " << cycle;
    }
}

// Lets `calls` run, each in a thread of its own, until they have written so many commands, the last of which are not
// answered, and unloads the library. Result: what the calls return.
std::vector<std::int32_t> unloadDuring(const std::vector<std::function<std::int32_t(const LoadedLibrary&)>>& calls,
                                       std::uint64_t commands) {
    std::vector<std::future<std::int32_t>> results;
    {
        const LoadedLibrary loaded(library);
        EXPECT_TRUE(loaded.loaded());
        for (const auto& call : calls)
            results.push_back(std::async(std::launch::async, [&call, &loaded] { return call(loaded); }));
        VirtualCounters counters{};
        for (int i = 0; i < 5000 && counters.framesWritten < commands; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            virtualGetCounters(&counters);
        }
        EXPECT_EQ(counters.framesWritten, commands);
    }
    EXPECT_FALSE(LoadedLibrary::present(library));
    std::vector<std::int32_t> values;
    for (auto& result : results)
        values.push_back(result.get());
    return values;
}

template <std::int32_t deviceNo>
std::int32_t activate(const LoadedLibrary& loaded) {
    std::uint32_t channels = 0;
    return loaded.function<ActivateExtended>("TORVIKactivateExtended")(
        deviceNo, 1, 1000000, 100, &channels, 0x100 + 3 * deviceNo, 0x101 + 3 * deviceNo, 0x10);
}

std::int32_t askIdent(const LoadedLibrary& loaded) {
    std::uint32_t ident = 0;
    std::uint32_t channels = 0;
    if (const std::int32_t result = loaded.function<ActivateStd>("TORVIKactivateStd")(1, &channels); result != 0)
        return result - 100;
    return loaded.function<GetIdent>("TORVIKgetInterfaceIdent")(1, 0, &ident);
}

TEST(Unload, CallThatWaitsForItsAnswerFailsAndLeaves) {
    for (int cycle = 0; cycle < cycles() / 50; ++cycle) {
        ASSERT_EQ(virtualReset(), 0);
        virtualAnswerRule(0, 0x01, VIRTUAL_ANSWER_DROP, VIRTUAL_FOR_EVER, 0, nullptr);
        EXPECT_THAT(unloadDuring({askIdent}, 5), testing::ElementsAre(-1)) << "cycle " << cycle;
    }
}

TEST(Unload, ActivationsThatWaitForTheirDevicesFailAndLeave) {
    for (int cycle = 0; cycle < cycles() / 50; ++cycle) {
        ASSERT_EQ(virtualReset(), 0);
        ASSERT_EQ(virtualConfigure(""), 0) << virtualMessage();
        EXPECT_THAT(unloadDuring({activate<1>, activate<2>, activate<3>}, 3), testing::ElementsAre(-1, -1, -1))
            << "cycle " << cycle;
    }
}

// Designs a filter and simulates it at so many points that it takes for hours.
std::int32_t simulateForLong(const LoadedLibrary& loaded, const std::string& file) {
    using CalcFilter = std::int32_t(std::int32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                                    std::uint32_t, double, double);
    using Simulate = std::int32_t(std::int32_t, std::int32_t, double, double, double, std::int32_t, const char*);
    std::uint32_t channels = 0;
    if (loaded.function<ActivateStd>("TORVIKactivateStd")(1, &channels) != 0) return 1;
    if (loaded.function<CalcFilter>("TORVIKcalcSetDfilterParams")(1, 9, 0, 0, 2, 4, 10, 0) != 0) return 2;
    return loaded.function<Simulate>("TORVIKsimulateDfilter")(1, 1, 4, 400, 1000,
                                                              std::numeric_limits<std::int32_t>::max(), file.c_str());
}

TEST(Unload, LongSimulation_DuringAnUnload_EndsWithinASecond) {
    ASSERT_EQ(virtualReset(), 0);
    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("unload" + std::to_string(std::random_device()()) + ".txt");
    std::future<std::int32_t> result;
    std::chrono::steady_clock::time_point begun;
    {
        const LoadedLibrary loaded(library);
        ASSERT_TRUE(loaded.loaded());
        result = std::async(std::launch::async, [&] { return simulateForLong(loaded, file.string()); });
        while (!std::filesystem::exists(file) &&
               result.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready)
            ;
        begun = std::chrono::steady_clock::now();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(1));
    EXPECT_FALSE(LoadedLibrary::present(library));
    EXPECT_EQ(result.get(), -1);
    std::filesystem::remove(file);
}

TEST(Unload, ReleaseFromAnotherLibrary_WhileTheProcessEnds_DoesNotWait) {
    for (int run = 0; run < 5; ++run)
        ASSERT_EQ(exitCodeOf(TORVIK_EXIT_PROGRAM " exit " TORVIK_RELEASE_AT_EXIT), 23) << "run " << run;
}

TEST(Unload, ProcessThatStreamsEndsWithItsOwnExitCode) {
    constexpr int runs = TORVIK_EXIT_RUNS;
    for (int run = 0; run < runs; ++run) {
        // Once from main, once from exit() while a call is inside the library.
        const std::string how = run % 2 == 0 ? "return" : "exit";
        ASSERT_EQ(exitCodeOf(TORVIK_EXIT_PROGRAM " " + how), 23) << "run " << run << ", " << how;
    }
}

}  // namespace
