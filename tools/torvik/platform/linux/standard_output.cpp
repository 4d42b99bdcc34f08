#include "platform/standard_output.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "wake_descriptor.h"

namespace torvik::tool::platform {

namespace {

/// A pipe that can be written to takes at least so much without blocking.
constexpr std::size_t unblockedBytes = 4096;

bool waitUntilWritable(int descriptor) {
    while (true) {
        std::array<pollfd, 2> watched{pollfd{.fd = descriptor, .events = POLLOUT, .revents = 0},
                                      pollfd{.fd = wakeDescriptor(), .events = POLLIN, .revents = 0}};
        if (poll(watched.data(), watched.size(), -1) < 0 && errno != EINTR) return true;
        if (watched[0].revents != 0) return true;
        if (watched[1].revents != 0) return false;
    }
}

}  // namespace

StandardOutput::StandardOutput() {
    std::fflush(stdout);
    descriptor_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (descriptor_ >= 0 && fcntl(STDERR_FILENO, F_GETFD) >= 0) dup2(STDERR_FILENO, STDOUT_FILENO);
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    const char* const type = std::getenv("TERM");
    terminal_ = isatty(descriptor_) == 1 && type != nullptr && std::string_view(type) != "dumb";
}

StandardOutput::~StandardOutput() {
    std::fflush(stdout);
    if (descriptor_ < 0) return;
    dup2(descriptor_, STDOUT_FILENO);
    close(descriptor_);
}

WriteResult StandardOutput::write(std::string_view bytes) {
    while (!bytes.empty()) {
        if (!waitUntilWritable(descriptor_)) return WriteResult::interrupted;
        const ssize_t written = ::write(descriptor_, bytes.data(), std::min(bytes.size(), unblockedBytes));
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EPIPE) {
            return WriteResult::closed;
        } else if (errno != EINTR && errno != EAGAIN) {
            return WriteResult::failed;
        }
    }
    return WriteResult::complete;
}

bool StandardOutput::isTerminal() const {
    return terminal_;
}

bool StandardOutput::showsUtf8() const {
    for (const char* const name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* const value = std::getenv(name);
        if (value == nullptr || *value == '\0') continue;
        const std::string_view locale(value);
        return locale.find("UTF-8") != locale.npos || locale.find("utf8") != locale.npos;
    }
    return false;
}

TerminalSize StandardOutput::terminalSize() const {
    winsize size{};
    if (ioctl(descriptor_, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) return {};
    return {.columns = size.ws_col, .rows = size.ws_row};
}

bool StandardOutput::errorsGoToTerminal() {
    return isatty(STDERR_FILENO) == 1;
}

}  // namespace torvik::tool::platform
