#include "core/call_gate.h"

#include <memory>

#include "platform/sync.h"

namespace torvik {

namespace {
constinit platform::Mutex leavingMutex;
constinit platform::Condition someoneLeft;
}  // namespace

bool CallGate::waitUntilLeft(std::uint32_t own, platform::TimePoint deadline) {
    platform::LockGuard lock(leavingMutex);
    while (inside_.load() > own) {
        if (!someoneLeft.waitUntil(leavingMutex, deadline) && inside_.load() > own) return false;
    }
    if (own == 0) emptied_ = true;
    return true;
}

bool CallGate::leaveToLastCall() {
    platform::LockGuard lock(leavingMutex);
    // An earlier release has left it to the call already, which opens the gate once.
    if (leftToLastCall_) {
        open();
    } else {
        leftToLastCall_ = !emptied_ && inside_.load() != 0;
    }
    return leftToLastCall_;
}

bool CallGate::claimAsLastCall() {
    platform::LockGuard lock(leavingMutex);
    if (!leftToLastCall_ || inside_.load() != 0) return false;
    leftToLastCall_ = false;
    inside_.fetch_add(1);
    return true;
}

void CallGate::finished() {
    open();
    leave();
}

void CallGate::renewInForkedChild() {
    std::construct_at(&leavingMutex);
    std::construct_at(&someoneLeft);
}

void CallGate::wakeClosers() {
    { platform::LockGuard lock(leavingMutex); }
    someoneLeft.notifyAll();
}

}  // namespace torvik
