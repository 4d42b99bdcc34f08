#pragma once

#include <cstdint>
#include <memory>

#include "frame.hpp"
#include "status.hpp"

namespace virtual_adapter {

// Tells the client that a frame is waiting: on Linux by a descriptor that is readable as long as frames are waiting or
// due, on Windows by an auto-reset event of the client's. Costs nothing until the client has asked for it. Unless
// said otherwise members are called under the adapter's lock.
class ReceiveNotifier {
  public:
    // `dueTimeReached` is called on a thread of the system when a frame is due, where the system needs that (Windows).
    explicit ReceiveNotifier(void (*dueTimeReached)());
    ~ReceiveNotifier();
    ReceiveNotifier(const ReceiveNotifier&) = delete;
    ReceiveNotifier& operator=(const ReceiveNotifier&) = delete;

    // The parameter "receive event" as CAN_GetValue and CAN_SetValue see it.
    Status get(std::uint64_t& value);
    Status set(std::uint64_t value);

    [[nodiscard]] bool active() const { return active_; }

    // How long before an answer is due its client is to be woken, so that it reads at the due time and not when the
    // system has got round to it: a device would not wait for the client's processor either.
    static Nanoseconds headStart();

    // waiting: the client has something to read. arrived: something came since the last call. wakeTime: when the client
    // is to look for the next frame.
    void update(bool waiting, bool arrived, Nanoseconds wakeTime);

    // `dueTimeReached` was called.
    void expired();

    void channelOpened();
    // Wakes whoever waits; nothing is announced any more.
    void channelClosed();

    // In a forked child: gives this process's copies back, and leaves those of its parent alone.
    void abandon();

    // Gives the system's resources back. Called without the lock: it may wait for a running callback.
    void release();

  private:
    struct System;
    bool active_ = false;
    [[maybe_unused]] void (*dueTimeReached_)();
    std::unique_ptr<System> system_;
};

}  // namespace virtual_adapter
