#include "platform/thread.h"

#include <cxxabi.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <new>

#include "platform/faults.h"
#include "platform/sync.h"

// This library, as the C++ run-time knows it.
extern "C" __attribute__((visibility("hidden"))) void* __dso_handle;  // NOLINT(bugprone-reserved-identifier)

namespace torvik::platform {

struct ThreadState {
    pthread_t thread{};
    void (*routine)() = nullptr;
    Mutex mutex;
    Condition ended;
    bool hasEnded GUARDED_BY(mutex) = false;
    bool isForgotten GUARDED_BY(mutex) = false;
};

namespace {

// The last of the two sides, the thread and its owner, frees the state.
void* run(void* argument) {
    std::unique_ptr<ThreadState> state(static_cast<ThreadState*>(argument));
    state->routine();
    bool freeHere = false;
    {
        LockGuard lock(state->mutex);
        state->hasEnded = true;
        freeHere = state->isForgotten;
        state->ended.notifyAll();
    }
    if (!freeHere) static_cast<void>(state.release());
    return nullptr;
}

// A thread needs real time for its last steps, even while the current clock is a test's.
constexpr std::chrono::milliseconds lastSteps(300);

bool waitForEnd(ThreadState& state, std::optional<std::chrono::milliseconds> limit) {
    LockGuard lock(state.mutex);
    const TimePoint deadline = clock().now() + limit.value_or(std::chrono::milliseconds(0));
    const TimePoint promptly = systemNow() + std::min(limit.value_or(lastSteps), lastSteps);
    for (TimePoint now = systemNow(); !state.hasEnded && now < promptly; now = systemNow())
        state.ended.waitFor(state.mutex, promptly - now);
    while (!state.hasEnded) {
        if (!limit) {
            state.ended.waitFor(state.mutex, std::chrono::seconds(1));
        } else if (!state.ended.waitUntil(state.mutex, deadline) && !state.hasEnded) {
            state.isForgotten = true;
            return false;
        }
    }
    return true;
}

}  // namespace

std::uint32_t Thread::start(void (*routine)()) try {
    if (const std::uint32_t error = injectedFault(FaultPoint::threadStart); error != 0) return error;
    auto state = std::make_unique<ThreadState>();
    state->routine = routine;
    const int error = pthread_create(&state->thread, nullptr, run, state.get());
    if (error != 0) return static_cast<std::uint32_t>(error);
    state_ = state.release();
    return 0;
} catch (const std::bad_alloc&) {
    return ENOMEM;
}

bool Thread::join(std::optional<std::chrono::milliseconds> limit) {
    ThreadState* const state = state_;
    state_ = nullptr;
    const pthread_t thread = state->thread;
    if (!waitForEnd(*state, limit)) {
        pthread_detach(thread);
        return false;
    }
    pthread_join(thread, nullptr);
    const std::unique_ptr<ThreadState> owned(state);
    return true;
}

std::uint64_t processId() {
    return static_cast<std::uint64_t>(getpid());
}

void runBeforeLoadedLibrariesEnd(void (*action)()) {
    // What std::atexit does, without it: the thread sanitizer's own atexit forgets which library it was called from,
    // and runs the action when that has left the process.
    const auto run = [](void* argument) { reinterpret_cast<void (*)()>(argument)(); };
    static_cast<void>(abi::__cxa_atexit(run, reinterpret_cast<void*>(action), &__dso_handle));
}

void runInForkedChild(void (*action)()) {
    static_cast<void>(pthread_atfork(nullptr, nullptr, action));
}

bool processEnds() {
    return false;
}

void sleepFor(std::chrono::milliseconds duration) {
    usleep(static_cast<useconds_t>(duration.count() * 1000));
}

}  // namespace torvik::platform
