#include "memory_adapter.h"

#include <sys/eventfd.h>

#include "platform/dynamic_library.h"

namespace torvik {

namespace bench {

MemoryAdapter::MemoryAdapter() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

MemoryAdapter MemoryAdapter::instance_;

void MemoryAdapter::queue(std::span<const PcanMessage> frames) {
    std::size_t slot = available_.load(std::memory_order_relaxed);
    for (const PcanMessage& frame : frames)
        queue_[slot++ % slots] = frame;
    available_.store(slot, std::memory_order_release);
}

void MemoryAdapter::signal() {
    signalled_.store(true);
    eventfd_write(descriptor_, 1);
}

std::uint32_t MemoryAdapter::read(PcanMessage& message, PcanTimestamp& timestamp) {
    if (next_ == available_.load(std::memory_order_acquire)) {
        if (signalled_.exchange(false)) {
            eventfd_t count = 0;
            eventfd_read(descriptor_, &count);
        }
        // Frames queued before the descriptor was cleared have no signal of their own any more.
        if (next_ == available_.load()) {
            emptiedAt_ = Clock::now();
            timesEmptied_.fetch_add(1, std::memory_order_release);
            return pcan::queueEmpty;
        }
    }
    message = queue_[next_++ % slots];
    timestamp = {};
    return pcan::ok;
}

std::uint32_t MemoryAdapter::write(const PcanMessage& /*command*/) {
    commandAt_ = Clock::now();
    commands_.fetch_add(1, std::memory_order_release);
    return pcan::ok;
}

std::uint32_t MemoryAdapter::reset() {
    next_ = available_.load(std::memory_order_acquire);
    return pcan::ok;
}

std::uint32_t MemoryAdapter::getValue(std::uint8_t parameter, void* value, std::uint32_t /*size*/) {
    if (parameter != pcan::receiveEvent) return pcan::unknownError;
    *static_cast<int*>(value) = descriptor_;
    return pcan::ok;
}

}  // namespace bench

using bench::MemoryAdapter;

namespace platform {

void* loadAdapterLibrary() {
    return &MemoryAdapter::instance();
}

void* findSymbol(void*, const char* name) {
    return test::AdapterEntryPoints<MemoryAdapter>::find(name);
}

}  // namespace platform

}  // namespace torvik
