// Counts the calls that are inside one device or inside the library, and turns new ones away while it is being taken
// down.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/clock.h"

namespace torvik {

class CallGate {
  public:
    // False: it is being taken down; the call is not inside.
    bool enter() {
        inside_.fetch_add(1);
        if (closers_.load() == 0) return true;
        leave();
        return false;
    }

    void leave() {
        inside_.fetch_sub(1);
        if (closers_.load() != 0) wakeClosers();
    }

    // From close() until the matching open() new calls are turned away; those inside go on until they leave.
    void close() {
        if (closers_.fetch_add(1) == 0) emptied_ = false;
    }
    void open() { closers_.fetch_sub(1); }
    bool closing() const { return closers_.load() != 0; }

    bool occupied() const { return inside_.load() != 0; }

    // Waits until no call but `own` ones of the caller is inside; false: the deadline came first.
    bool waitUntilLeft(std::uint32_t own, platform::TimePoint deadline);

    // In the place of open(): leaves the rest of a release to the last call inside. False: nobody is inside, and the
    // caller has to finish.
    bool leaveToLastCall();
    bool leftToLastCall() const { return leftToLastCall_.load(); }

    // For a call that has just left. True: it was the last one, has to finish the release, and is inside until it calls
    // finished(), which opens the gate.
    bool claimAsLastCall();
    void finished();

    // The parent's threads may have owned what the gates wait with.
    static void renewInForkedChild();

  private:
    static void wakeClosers();

    // Both in one cache line: every call touches them when it comes and when it goes.
    alignas(8) std::atomic<std::uint32_t> inside_ = 0;
    std::atomic<std::uint32_t> closers_ = 0;
    std::atomic<bool> leftToLastCall_ = false;  // changed under the mutex that closers wait with
    // All calls have left since the gate was closed; those counted now are being turned away.
    std::atomic<bool> emptied_ = false;
};

// Being inside a gate, unless it turns the call away.
class Visit {
  public:
    explicit Visit(CallGate& gate) : gate_(gate), inside_(gate.enter()) {}
    ~Visit() {
        if (inside_) gate_.leave();
    }
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    bool inside() const { return inside_; }

  private:
    CallGate& gate_;
    bool inside_;
};

}  // namespace torvik
