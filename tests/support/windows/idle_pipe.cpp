#include "support/idle_pipe.h"

#include <windows.h>

#include <random>
#include <system_error>

namespace torvik::test {

IdlePipe::IdlePipe()
    : path_("\\\\.\\pipe\\torvik-pipe-" + std::to_string(std::random_device()())),
      handle_(reinterpret_cast<std::intptr_t>(
          CreateNamedPipeA(path_.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE | PIPE_WAIT, 1, 64, 64, 0, nullptr))) {
    if (handle_ == -1) throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), path_);
}

IdlePipe::~IdlePipe() {
    release();
}

void IdlePipe::openReader() {}

void IdlePipe::release() {
    if (handle_ != -1) CloseHandle(reinterpret_cast<HANDLE>(handle_));
    handle_ = -1;
}

std::vector<std::string> deviceFiles() {
    return {"NUL"};
}

}  // namespace torvik::test
