#include "platform/receive_event.h"

#include "platform/faults.h"
#include "windows_api.h"

namespace torvik::platform {

namespace {
HANDLE asHandle(std::int64_t value) {
    return reinterpret_cast<HANDLE>(value);
}
}  // namespace

std::uint32_t ReceiveEvent::create() {
    if (const std::uint32_t error = injectedFault(FaultPoint::eventCreate); error != 0) return error;
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (event == nullptr) return GetLastError();
    close();
    handle_.store(reinterpret_cast<std::int64_t>(event), std::memory_order_release);
    return 0;
}

void ReceiveEvent::close() {
    const std::int64_t event = handle_.exchange(none);
    if (event != none) CloseHandle(asHandle(event));
}

void ReceiveEvent::wait(std::chrono::milliseconds limit, bool /*adapterToo*/) {
    const auto milliseconds = static_cast<DWORD>(limit.count());
    const bool failed =
        injectedFault(FaultPoint::eventWait) != 0 ||
        WaitForSingleObject(asHandle(handle_.load(std::memory_order_acquire)), milliseconds) == WAIT_FAILED;
    // What cannot be waited for must not turn the receive thread into a busy loop.
    if (failed) Sleep(milliseconds);
}

void ReceiveEvent::wake() {
    const std::int64_t event = handle_.load(std::memory_order_acquire);
    if (event != none) SetEvent(asHandle(event));
}

}  // namespace torvik::platform
