// The thread that empties the adapter's receive queue into the device records.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "core/library_state.h"

namespace torvik {

// Starts the thread and returns when it has reset the adapter's queues and waits for frames. False: not started.
bool startReceiveThread() REQUIRES(lifecycleMutex);

// Lets the thread end, without waiting for it.
void beginReceiveEnd() REQUIRES(lifecycleMutex);

// Ends the thread, if there is one, and forgets it. Without a limit waits until it has ended.
void stopReceiveThread(std::optional<std::chrono::milliseconds> limit) REQUIRES(lifecycleMutex);

// For an unload during a call that hangs, maybe with the lifecycle lock: lets the thread end and waits until it has but
// its last few instructions to run. It is not forgotten; after the limit what it still reads belongs to nobody.
void endReceiving(std::chrono::milliseconds limit);

// Reads frame after frame until the queue is empty. Result: 0; 225 when an adapter fault ended the pass.
std::uint8_t drainReceiveQueue();

}  // namespace torvik
