#include "support/idle_pipe.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <random>
#include <system_error>

namespace torvik::test {

IdlePipe::IdlePipe() {
    const std::string name = "torvik-pipe-" + std::to_string(std::random_device()());
    path_ = (std::filesystem::temp_directory_path() / name).string();
    if (mkfifo(path_.c_str(), 0600) != 0) throw std::system_error(errno, std::generic_category(), path_);
}

IdlePipe::~IdlePipe() {
    release();
    unlink(path_.c_str());
}

void IdlePipe::openReader() {
    handle_ = open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    fcntl(static_cast<int>(handle_), F_SETPIPE_SZ, 4096);
}

void IdlePipe::release() {
    if (handle_ != -1) close(static_cast<int>(handle_));
    handle_ = -1;
    const int both = open(path_.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (both >= 0) close(both);
}

std::vector<std::string> deviceFiles() {
    return {"/dev/null", "/dev/zero"};
}

}  // namespace torvik::test
