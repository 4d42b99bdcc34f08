#include "platform/file_stream.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/faults.h"

namespace torvik::platform {

const char folderSeparator = '/';
const std::string_view lineEnd = "\n";
const bool controlZEndsText = false;

namespace {

std::uint32_t lastError() {
    return errno != 0 ? static_cast<std::uint32_t>(errno) : EIO;
}

// Without waiting, neither now nor when it is used.
FileHandle openFile(const char* name, int flags, std::uint32_t& error) {
    error = injectedFault(FaultPoint::fileOpen);
    if (error != 0) return noFile;
    constexpr mode_t everybody = 0666;
    const int descriptor = open(name, flags | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, everybody);
    if (descriptor < 0) error = lastError();
    return descriptor;
}

// False for what cannot be said, too.
bool isRegularFile(FileHandle handle) {
    if (injectedFault(FaultPoint::fileStatus) != 0) return false;
    struct stat status {};
    return fstat(static_cast<int>(handle), &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

InputStream::InputStream(const char* name)
    : handle_(openFile(name, O_RDONLY, error_)), regular_(handle_ != noFile && isRegularFile(handle_)) {}

InputStream::~InputStream() {
    if (handle_ != noFile) ::close(static_cast<int>(handle_));
}

std::uint32_t InputStream::read(std::span<char> buffer, std::size_t& got) const {
    got = 0;
    if (const std::uint32_t error = injectedFault(FaultPoint::fileRead); error != 0) return error;
    ssize_t count = 0;
    do {
        count = ::read(static_cast<int>(handle_), buffer.data(), buffer.size());
    } while (count < 0 && errno == EINTR);
    if (count < 0) return lastError();
    got = static_cast<std::size_t>(count);
    return 0;
}

OutputStream::OutputStream(const char* name) : handle_(openFile(name, O_WRONLY | O_CREAT | O_TRUNC, error_)) {}

std::uint32_t OutputStream::write(std::string_view bytes, const StopCheck& mustEnd, std::size_t& written) {
    if (const std::uint32_t error = injectedFault(FaultPoint::fileWrite); error != 0) return error;
    const ssize_t count = ::write(static_cast<int>(handle_), bytes.data(), bytes.size());
    written = count < 0 ? 0 : static_cast<std::size_t>(count);
    if (count >= 0 || errno == EINTR) return 0;
    if (errno != EAGAIN) return lastError();
    if (mustEnd && mustEnd()) return ECANCELED;
    constexpr int milliseconds = 50;
    pollfd waited{static_cast<int>(handle_), POLLOUT, 0};
    poll(&waited, 1, milliseconds);
    return 0;
}

std::uint32_t OutputStream::close() {
    if (handle_ == noFile) return 0;
    const bool closed = ::close(static_cast<int>(handle_)) == 0;
    handle_ = noFile;
    if (const std::uint32_t error = injectedFault(FaultPoint::fileClose); error != 0) return error;
    return closed ? 0 : lastError();
}

}  // namespace torvik::platform
