#include "platform/interruption.h"

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>

#include "wake_descriptor.h"

namespace torvik::tool::platform {

namespace {

constexpr std::array<int, 3> endSignals{SIGINT, SIGTERM, SIGHUP};

volatile sig_atomic_t endRequested = 0;
volatile sig_atomic_t wakeEvent = -1;

extern "C" void requestEnd(int) {
    const int savedErrno = errno;
    endRequested = 1;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(wakeEvent, &one, sizeof one);
    errno = savedErrno;
}

}  // namespace

int wakeDescriptor() {
    return wakeEvent;
}

Interruption::Interruption() {
    endRequested = 0;
    wakeEvent = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wakeEvent < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
    struct sigaction action {};
    action.sa_handler = requestEnd;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int signal : endSignals)
        sigaction(signal, &action, nullptr);
    ::signal(SIGPIPE, SIG_IGN);
    ::signal(SIGXFSZ, SIG_IGN);  // a file that grows too large is a failed write
}

Interruption::~Interruption() {
    for (const int signal : endSignals)
        ::signal(signal, SIG_DFL);
    const int descriptor = wakeEvent;
    wakeEvent = -1;
    close(descriptor);
}

bool Interruption::requested() const {
    return endRequested != 0;
}

bool Interruption::waitFor(std::chrono::milliseconds time) const {
    pollfd wake{.fd = wakeEvent, .events = POLLIN, .revents = 0};
    poll(&wake, 1, static_cast<int>(time.count()));
    return requested();
}

}  // namespace torvik::tool::platform
