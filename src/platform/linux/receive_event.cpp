#include "platform/receive_event.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/faults.h"

namespace torvik::platform {

std::uint32_t ReceiveEvent::create() {
    if (const std::uint32_t error = injectedFault(FaultPoint::eventCreate); error != 0) return error;
    const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (descriptor < 0) return static_cast<std::uint32_t>(errno);
    close();
    handle_.store(descriptor, std::memory_order_release);
    return 0;
}

void ReceiveEvent::close() {
    watchDescriptor(-1);
    const std::int64_t descriptor = handle_.exchange(none);
    if (descriptor != none) ::close(static_cast<int>(descriptor));
}

void ReceiveEvent::wait(std::chrono::milliseconds limit, bool adapterToo) {
    const auto wakeDescriptor = static_cast<int>(handle_.load(std::memory_order_acquire));
    const int adapter = adapterToo ? adapterDescriptor_.load(std::memory_order_acquire) : -1;
    std::array<pollfd, 2> waited = {pollfd{wakeDescriptor, POLLIN, 0}, pollfd{adapter, POLLIN, 0}};
    const bool injected = injectedFault(FaultPoint::eventWait) != 0;
    const int ready = injected ? -1 : poll(waited.data(), waited.size(), static_cast<int>(limit.count()));
    // What cannot be waited for must not turn the receive thread into a busy loop.
    const bool failed = injected || (ready < 0 ? errno != EINTR : (waited[0].revents & POLLNVAL) != 0);
    if (failed) usleep(static_cast<useconds_t>(limit.count() * 1000));
    if (ready <= 0) return;
    if ((waited[0].revents & POLLIN) != 0) {
        eventfd_t count = 0;
        eventfd_read(wakeDescriptor, &count);
    }
    // A descriptor that has become invalid would end every wait at once: live on the time limit instead.
    if ((waited[1].revents & (POLLERR | POLLHUP | POLLNVAL)) != 0) watchDescriptor(-1);
}

void ReceiveEvent::wake() {
    const std::int64_t descriptor = handle_.load(std::memory_order_acquire);
    if (descriptor != none) eventfd_write(static_cast<int>(descriptor), 1);
}

}  // namespace torvik::platform
