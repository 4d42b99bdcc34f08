#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "support/loaded_library.h"
#include "virtual_control.h"

namespace {

using torvik::test::LoadedLibrary;

constexpr const char* library = TORVIK_LIBRARY;

using ActivateStd = std::int32_t(std::int32_t, std::uint32_t*);
using Received = std::int32_t(std::int32_t, std::uint32_t, std::int32_t*);
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

}  // namespace
