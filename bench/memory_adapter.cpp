#include "memory_adapter.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <string_view>
#include <utility>

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

void MemoryAdapter::noteCommand() {
    commandAt_ = Clock::now();
    commands_.fetch_add(1, std::memory_order_release);
}

}  // namespace bench

namespace {

using bench::MemoryAdapter;

std::uint32_t initialize(std::uint16_t, std::uint16_t, std::uint8_t, std::uint32_t, std::uint16_t) {
    return pcan::ok;
}

std::uint32_t uninitialize(std::uint16_t) {
    return pcan::ok;
}

std::uint32_t reset(std::uint16_t) {
    MemoryAdapter::instance().reset();
    return pcan::ok;
}

std::uint32_t getStatus(std::uint16_t) {
    return pcan::ok;
}

std::uint32_t read(std::uint16_t, PcanMessage* message, PcanTimestamp* timestamp) {
    return MemoryAdapter::instance().read(*message, *timestamp);
}

std::uint32_t write(std::uint16_t, PcanMessage*) {
    MemoryAdapter::instance().noteCommand();
    return pcan::ok;
}

std::uint32_t filterMessages(std::uint16_t, std::uint32_t, std::uint32_t, std::uint8_t) {
    return pcan::ok;
}

std::uint32_t getValue(std::uint16_t, std::uint8_t parameter, void* value, std::uint32_t) {
    if (parameter != pcan::receiveEvent) return pcan::unknownError;
    *static_cast<int*>(value) = MemoryAdapter::instance().descriptor();
    return pcan::ok;
}

std::uint32_t setValue(std::uint16_t, std::uint8_t, void*, std::uint32_t) {
    return pcan::ok;
}

std::uint32_t getErrorText(std::uint32_t, std::uint16_t, char* text) {
    *text = '\0';
    return pcan::ok;
}

template <class Function>
void* address(Function* function) {
    return reinterpret_cast<void*>(function);
}

}  // namespace

namespace platform {

void* loadAdapterLibrary() {
    return &MemoryAdapter::instance();
}

void* findSymbol(void*, const char* name) {
    const std::pair<std::string_view, void*> entries[] = {
        {"CAN_Initialize", address(initialize)},
        {"CAN_Uninitialize", address(uninitialize)},
        {"CAN_Reset", address(reset)},
        {"CAN_GetStatus", address(getStatus)},
        {"CAN_Read", address(read)},
        {"CAN_Write", address(write)},
        {"CAN_FilterMessages", address(filterMessages)},
        {"CAN_GetValue", address(getValue)},
        {"CAN_SetValue", address(setValue)},
        {"CAN_GetErrorText", address(getErrorText)},
    };
    const auto* const found = std::ranges::find(entries, name, [](const auto& entry) { return entry.first; });
    return found == std::end(entries) ? nullptr : found->second;
}

}  // namespace platform

}  // namespace torvik
