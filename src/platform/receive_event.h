// The event that the adapter signals when frames have arrived and on which the receive thread waits.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

namespace torvik::platform {

class ReceiveEvent {
  public:
    constexpr ReceiveEvent() = default;
    ReceiveEvent(const ReceiveEvent&) = delete;
    ReceiveEvent& operator=(const ReceiveEvent&) = delete;

    // Result: 0 or the system's error.
    std::uint32_t create();
    void close();
    bool exists() const { return handle_.load(std::memory_order_acquire) != none; }

    // Returns when the adapter has signalled, after wake(), or when the time is over. With `adapterToo` false the
    // adapter's signal is not looked at.
    void wait(std::chrono::milliseconds limit, bool adapterToo);

    // Lets the waiting thread return, now or at its next wait.
    void wake();

    // Windows: the auto-reset event that the adapter sets.
    std::uint64_t handle() const { return static_cast<std::uint64_t>(handle_.load(std::memory_order_acquire)); }

    // Linux: the adapter's own descriptor, readable while frames are waiting; -1: none.
    void watchDescriptor(int descriptor) { adapterDescriptor_.store(descriptor, std::memory_order_release); }

  private:
    static constexpr std::int64_t none = -1;
    std::atomic<std::int64_t> handle_ = none;
    std::atomic<int> adapterDescriptor_ = -1;
};

}  // namespace torvik::platform
