#include "core/call_gate.h"

#include "platform/clock.h"
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

bool CallGate::waitUntilLeft(std::uint32_t own, std::chrono::milliseconds limit) {
    const platform::TimePoint deadline = platform::clock().now() + limit;
    platform::LockGuard lock(leavingMutex);
    while (inside_.load() > own) {
        if (!someoneLeft.waitUntil(leavingMutex, deadline)) return inside_.load() <= own;
    }
    return true;
}

void CallGate::wakeCloser() {
    { platform::LockGuard lock(leavingMutex); }
    someoneLeft.notifyAll();
}

}  // namespace torvik
