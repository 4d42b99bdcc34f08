#include "read_bounded.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace bounded_toml {
namespace {

using Clock = std::chrono::steady_clock;

class Descriptor {
  public:
    // Without O_NONBLOCK, opening a pipe that nobody writes to would block.
    explicit Descriptor(const std::string& path)
        : value_(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY)) {}
    ~Descriptor() {
        if (value_ >= 0) close(value_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    [[nodiscard]] int get() const { return value_; }

  private:
    int value_;
};

// Waits until there is something to read or the writer has closed the pipe. False: not before `end`.
bool waitReadable(int descriptor, Clock::time_point end) {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd waited{descriptor, POLLIN, 0};
        const int ready = poll(&waited, 1, static_cast<int>(std::max<std::int64_t>(left, 0)));
        if (ready > 0) return true;
        if (ready == 0 || errno != EINTR) return false;
    }
}

}  // namespace

ReadResult readBounded(const std::string& path, std::size_t most, std::chrono::milliseconds patience,
                       std::string& text) {
    const Descriptor file(path);
    struct stat kind {};
    if (file.get() < 0 || fstat(file.get(), &kind) != 0) return ReadResult::notOpened;
    if (S_ISDIR(kind.st_mode)) return ReadResult::folder;
    const Clock::time_point end = Clock::now() + patience;
    std::array<char, 65'536> portion;
    for (std::size_t taken = 0;;) {
        if (!waitReadable(file.get(), end)) return ReadResult::tooSlow;
        const ssize_t got = read(file.get(), portion.data(), portion.size());
        if (got == 0) return ReadResult::complete;
        if (got < 0 && errno != EAGAIN && errno != EINTR) return ReadResult::notRead;
        if (got < 0) continue;
        taken += static_cast<std::size_t>(got);
        if (taken > most) return ReadResult::tooLarge;
        text.append(portion.data(), static_cast<std::size_t>(got));
    }
}

}  // namespace bounded_toml
