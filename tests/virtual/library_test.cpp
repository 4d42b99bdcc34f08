#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "open_adapter.hpp"
#include "support/program.h"
#include "system_support.hpp"

// The shared library as clients load it: this program is not linked with the adapter.
namespace virtual_test {
namespace {

const std::string kPath = TORVIK_VIRTUAL_ADAPTER;

TEST(SharedLibrary, HasEveryEntryPointAndControlFunction) {
    const Library library(kPath);
    ASSERT_TRUE(library.loaded());
    for (const char* const name : {"CAN_Initialize",       "CAN_Uninitialize",   "CAN_Reset",
                                   "CAN_GetStatus",        "CAN_Read",           "CAN_Write",
                                   "CAN_FilterMessages",   "CAN_GetValue",       "CAN_SetValue",
                                   "CAN_GetErrorText",     "virtualReset",       "virtualConfigure",
                                   "virtualConfigureFile", "virtualMessage",     "virtualPushFrames",
                                   "virtualFailCalls",     "virtualAnswerRule",  "virtualClearAnswerRules",
                                   "virtualHoldStream",    "virtualSendSets",    "virtualSkipFrame",
                                   "virtualRepeatFrame",   "virtualBusLoad",     "virtualPause",
                                   "virtualQueued",        "virtualGetCounters", "virtualTakeWritten",
                                   "virtualValue"}) {
        EXPECT_NE(library.entry<void()>(name), nullptr) << name;
    }
}

TEST(SharedLibrary, LoadedFirstIsFoundByTheAdaptersName) {
    const Library library(kPath);
    ASSERT_TRUE(library.loaded());
    const Library byName(Library::kName);
    EXPECT_TRUE(byName.loaded());
    EXPECT_TRUE(byName.sameAs(library));
}

TEST(SharedLibrary, IsReallyUnloadedWhileItsStreamIsWaitedFor) {
    ASSERT_FALSE(Library::isLoaded(kPath));
    int handlesAtFirst = 0;
    for (int cycle = 0; cycle < 200; ++cycle) {
        Library library(kPath);
        ASSERT_TRUE(library.loaded());
        ASSERT_EQ(library.entry<decltype(CAN_Initialize)>("CAN_Initialize")(kUsb, kMegabit, 0, 0, 0), kOk);
        ASSERT_EQ(library.entry<decltype(virtualConfigure)>("virtualConfigure")("[[amplifier]]\nfrequency = 2000\n"),
                  0);
        ASSERT_EQ(attachEventOf(library, kUsb), kOk);
        std::this_thread::sleep_for(std::chrono::milliseconds(cycle % 4));
        library.unload();
        ASSERT_FALSE(Library::isLoaded(kPath)) << cycle;
        // The system's own thread pool has grown to its size by then.
        if (cycle == 100) handlesAtFirst = openHandles();
    }
    EXPECT_LE(openHandles(), handlesAtFirst + 2);
}

TEST(SharedLibrary, ProcessEndsWhileThreadsAreReading) {
    for (int run = 0; run < kExitRuns; ++run)
        EXPECT_EQ(torvik::test::exitCodeOf(TORVIK_EXIT_PROGRAM), 23) << run;
}

}  // namespace
}  // namespace virtual_test
