// What the receive path asks of others: memory and the operating system. The adapter's own calls are not among it, as
// the adapter in memory makes none.
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <optional>

#include "benchmarks.h"
#include "can/receive_thread.h"
#include "devices.h"
#include "frames.h"
#include "memory_adapter.h"

namespace {

std::atomic<std::uint64_t> allocations = 0;

}  // namespace

// The array forms and those for exceptions come here, too.
void* operator new(std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* const memory = std::malloc(size > 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace torvik::bench {

namespace {

constexpr int mostCounted = 100;
constexpr int notWatched = 127;

volatile std::sig_atomic_t systemCallsSeen = 0;

void countSystemCall(int) {
    systemCallsSeen = systemCallsSeen + 1;
}

// From now on the kernel carries out no system call of this thread, but the end of the process and of a signal handler;
// the others raise a signal.
bool watchSystemCalls() {
    const std::array<sock_filter, 5> rules = {{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit_group, 2, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_rt_sigreturn, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    }};
    const sock_fprog program{rules.size(), const_cast<sock_filter*>(rules.data())};
    return std::signal(SIGSYS, countSystemCall) != SIG_ERR && prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

// Runs `function` in a copy of this process. Result: how many system calls it makes, at most `mostCounted`; empty: they
// cannot be watched.
template <class Function>
std::optional<int> systemCallsOf(Function function) {
    const pid_t child = fork();
    if (child < 0) return std::nullopt;
    if (child == 0) {
        if (!watchSystemCalls()) _exit(notWatched);
        function();
        _exit(std::min(int{systemCallsSeen}, mostCounted));
    }
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFEXITED(status)) return std::nullopt;
    if (WEXITSTATUS(status) == notWatched) return std::nullopt;
    return WEXITSTATUS(status);
}

void callTwice() {
    syscall(SYS_getppid);
    syscall(SYS_getppid);
}

void receiveCalls(benchmark::State& state) {
    const WithoutReceiveThread direct;
    const std::vector<PcanMessage> frames = makeQueue(queueLength);
    clearAllBuffers();
    for ([[maybe_unused]] auto _ : state) {
        MemoryAdapter::instance().queue(frames);
        state.SetIterationTime(1);
        const std::optional<int> calls = systemCallsOf([] { drainReceiveQueue(); });
        // Two calls are counted as two: otherwise none would prove nothing.
        if (!calls || systemCallsOf(callTwice) != 2) return state.SkipWithError("system calls cannot be watched here");
        const std::uint64_t before = allocations.load();
        if (drainReceiveQueue() != 0) return state.SkipWithError("the frames are not taken");
        state.counters[name::allocations] = static_cast<double>(allocations.load() - before);
        state.counters[name::systemCalls] = *calls;
        for (std::uint8_t deviceNo = 0; deviceNo < deviceCount; ++deviceNo) {
            if (!takeSetsInOrder(deviceNo, completeSetsOf(deviceNo))) return state.SkipWithError("sets are missing");
        }
    }
}

}  // namespace

void registerReceiveCalls() {
    registerManual(name::receiveCalls, receiveCalls, 1);
}

}  // namespace torvik::bench
