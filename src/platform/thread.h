// One background thread whose end can be waited for, also while the library is being unloaded.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace torvik::platform {

struct ThreadState;

class Thread {
  public:
    constexpr Thread() = default;
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    // Result: 0 or the system's error. The thread runs `routine` once; the routine must not throw.
    std::uint32_t start(void (*routine)());
    bool exists() const { return state_ != nullptr; }

    // Waits until the thread has left the library's code. Result: false when the time was over first; without a limit
    // always true. The thread is forgotten either way.
    bool join(std::optional<std::chrono::milliseconds> limit);

  private:
    ThreadState* state_ = nullptr;
};

// Number of this process; differs in a forked child, which has none of its parent's threads.
std::uint64_t processId();

// Linux: lets `action` run when the process ends or this library is unloaded, before the libraries that are loaded now
// end. Windows: does nothing, the library entry does it all.
void runBeforeLoadedLibrariesEnd(void (*action)());

// Lets `action` run in every forked child, in its only thread, before fork() returns there. Windows: there is no fork.
void runInForkedChild(void (*action)());

// Windows: the process is ending, and the system has ended all other threads. Linux: false, they run to the end.
bool processEnds();

// Sleeps by the system's clock.
void sleepFor(std::chrono::milliseconds duration);

}  // namespace torvik::platform
