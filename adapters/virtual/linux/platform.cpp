#include "platform.hpp"

#include <pthread.h>

#include <cstdlib>
#include <ctime>

namespace virtual_adapter {

Nanoseconds monotonicNow() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<Nanoseconds>(time.tv_sec) * 1'000'000'000U + static_cast<Nanoseconds>(time.tv_nsec);
}

void callAroundFork(void (*before)(), void (*inParent)(), void (*inChild)()) {
    // The system forgets the functions when the library is unloaded. Without memory for them forking is as it was.
    static_cast<void>(pthread_atfork(before, inParent, inChild));
}

std::optional<std::string> environmentVariable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

}  // namespace virtual_adapter
