#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <string>

#include "bench_file.hpp"
#include "open_adapter.hpp"
#include "read_bounded.hpp"
#include "support/temporary_folder.h"
#include "system_support.hpp"

namespace virtual_test {
namespace {

using bounded_toml::readBounded;
using bounded_toml::ReadResult;
using torvik::test::temporaryFile;
using BenchOfTheSystem = ClosedAdapter;
using ForkedHost = QuietAdapter;

TEST_F(BenchOfTheSystem, EndlessDevice_IsRejected) {
    EXPECT_EQ(virtualConfigureFile("/dev/zero"), -1);
    EXPECT_STREQ(virtualMessage(), "/dev/zero: the file has more than 1048576 bytes");
}

TEST_F(BenchOfTheSystem, Pipe_IsReadOnceAndUnderstood) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const std::string text = "[[amplifier]]\nfirmware = 0x00050001\nstreaming = false\n";
    ASSERT_EQ(::write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    close(ends[1]);
    const int result = virtualConfigureFile(("/proc/self/fd/" + std::to_string(ends[0])).c_str());
    close(ends[0]);
    ASSERT_EQ(result, 0) << virtualMessage();
    ASSERT_EQ(CAN_Initialize(kUsb, kMegabit, 0, 0, 0), kOk);
    EXPECT_EQ(ask({0x2B}), (Data{0x44, 0, 0, 5, 0, 1}));
}

TEST(BoundedReading, PipeNobodyWritesTo_IsGivenUp) {
    const std::string path = temporaryFile("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::string text;
    EXPECT_EQ(readBounded(path, 100, std::chrono::milliseconds(20), text), ReadResult::tooSlow);
    EXPECT_EQ(text, "");
}

TEST(BoundedReading, PipeThatStaysOpen_IsGivenUp) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(::write(ends[1], "abc", 3), 3);
    std::string text;
    const std::string path = "/proc/self/fd/" + std::to_string(ends[0]);
    EXPECT_EQ(readBounded(path, 100, std::chrono::milliseconds(20), text), ReadResult::tooSlow);
    close(ends[0]);
    close(ends[1]);
}

// Runs `inChild` in a forked child. Result: its exit code; -1 when it had to be killed after ten seconds.
template <class Action>
int exitCodeOfChild(Action inChild) {
    const pid_t child = fork();
    if (child == 0) inChild();
    for (int i = 0; i < 1000; ++i) {
        int status = 0;
        if (waitpid(child, &status, WNOHANG) == child) return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        usleep(10'000);
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    return -1;
}

TEST_F(ForkedHost, ChildThatUsesTheAdapter_FindsNoChannelAndLeavesTheParentsEventAlone) {
    ReceiveEvent event;
    ASSERT_EQ(event.attach(kUsb), kOk);
    EXPECT_FALSE(readFrame());
    const int code = exitCodeOfChild([] {
        const bool closed = CAN_GetStatus(kUsb) == kNotInitialised;
        const bool opened = CAN_Initialize(kUsb, kMegabit, 0, 0, 0) == kOk && CAN_Uninitialize(kUsb) == kOk;
        _exit(closed && opened ? 0 : 1);
    });
    EXPECT_EQ(code, 0);
    EXPECT_FALSE(event.wait(0)) << "the child has signalled its parent's event";
    const VirtualFrame frame = frameOf(0x123);
    virtualPushFrames(&frame, 1);
    EXPECT_TRUE(event.wait(0));
    EXPECT_TRUE(readFrame());
}

TEST_F(ForkedHost, ForkWhileThreadsCall_LeavesTheChildACallableAdapter) {
    std::atomic<bool> stop = false;
    std::thread caller([&] {
        while (!stop)
            virtualSendSets(0, 100);
    });
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(exitCodeOfChild([] { _exit(CAN_GetStatus(kUsb) == kNotInitialised ? 0 : 1); }), 0) << i;
    stop = true;
    caller.join();
}

}  // namespace
}  // namespace virtual_test
