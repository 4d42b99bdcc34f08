// What the library keeps once: everything about the one adapter channel of the process.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "core/call_gate.h"
#include "platform/receive_event.h"
#include "platform/sync.h"
#include "platform/thread.h"
#include "platform/timed_mutex.h"

namespace torvik {

inline constexpr std::int32_t largestBufferLength = 65534;
inline constexpr std::uint32_t noDevice = 0xFFFFFFFF;
inline constexpr std::chrono::milliseconds mutexLimit(10000);

// Guards opening and closing: activation, release and unload. Taken before every other lock. Always exists.
extern constinit platform::TimedMutex lifecycleMutex;

// Guards all answer rings, the CAN identifiers of all records and the routes made from them.
extern constinit platform::TimedMutex answerMutex;

// Guards all value buffers and their indices. Never held together with answerMutex.
extern constinit platform::TimedMutex valueMutex;

// Every call that is not inside a record's gate is inside this one, but for TORVIKDllVersion, so that an unload can
// wait until the library's code has been left.
extern constinit CallGate libraryGate;

struct LibraryState {
    std::atomic<std::uint8_t> channelHandle = 0;
    std::atomic<bool> pcanLogging = false;
    std::atomic<bool> debugOutput = false;
    std::atomic<std::uint16_t> baudCode = 0;
    std::atomic<bool> adapterOpen = false;
    std::atomic<bool> receiveEventSet = false;
    std::atomic<std::int32_t> valueBufferLength = 0;
    std::atomic<std::uint8_t> initialisedDevices = 0;
    std::atomic<bool> threadRun = false;
    std::atomic<bool> callsGivenUp = false;  // by an unload, since the adapter was opened
    std::atomic<std::uint8_t> adapterType = 0;
    std::atomic<std::uint32_t> lastProtocolError = 0;
    std::atomic<std::uint32_t> lastProtocolErrorDevice = 0;
    std::atomic<std::uint32_t> protocolKind = 0;
    platform::ReceiveEvent receiveEvent;
    platform::Thread receiveThread GUARDED_BY(lifecycleMutex);
};

extern constinit LibraryState libraryState;

// Runs `action` under a mutex, waiting for it to a deadline; a mutex that does not exist (the adapter is closed) is
// nobody's and not waited for. False: the mutex was not obtained and `action` has not run.
template <class Action>
bool exclusively(platform::TimedMutex& mutex, platform::TimePoint deadline, Action action) NO_THREAD_SAFETY_ANALYSIS {
    if (!mutex.exists()) {
        action();
        return true;
    }
    if (!mutex.lockUntil(deadline)) return false;
    platform::TimedLock lock(mutex);
    action();
    return true;
}

// The same with the usual limit of 10000 ms.
template <class Action>
bool exclusively(platform::TimedMutex& mutex, Action action) {
    return exclusively(mutex, platform::deadlineAfter(mutexLimit), action);
}

// Prints to standard output, printf-style; callers look at libraryState.debugOutput first.
[[gnu::format(printf, 1, 2)]] void debugPrint(const char* format, ...);

}  // namespace torvik
