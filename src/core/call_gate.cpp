#include "core/call_gate.h"

#include <chrono>

#include "platform/sync.h"

namespace torvik {

namespace {
constinit platform::Mutex leavingMutex;
constinit platform::Condition someoneLeft;
}  // namespace

void CallGate::waitUntilLeft(std::uint32_t own) {
    platform::LockGuard lock(leavingMutex);
    while (inside_.load() > own)
        someoneLeft.waitFor(leavingMutex, std::chrono::milliseconds(100));
}

void CallGate::wakeCloser() {
    { platform::LockGuard lock(leavingMutex); }
    someoneLeft.notifyAll();
}

}  // namespace torvik
