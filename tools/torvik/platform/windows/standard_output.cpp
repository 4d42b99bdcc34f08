#include "platform/standard_output.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <cstdio>

namespace torvik::tool::platform {

namespace {

constexpr int outputDescriptor = 1;
constexpr int errorDescriptor = 2;
constexpr DWORD redrawableMode = ENABLE_PROCESSED_OUTPUT | ENABLE_WRAP_AT_EOL_OUTPUT | 0x0004;  // escape sequences

HANDLE handleOf(int descriptor) {
    return descriptor < 0 ? INVALID_HANDLE_VALUE : reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
}

}  // namespace

StandardOutput::StandardOutput() {
    std::fflush(stdout);
    descriptor_ = _dup(outputDescriptor);
    if (descriptor_ >= 0) _dup2(errorDescriptor, outputDescriptor);
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    DWORD mode = 0;
    if (GetConsoleMode(handleOf(descriptor_), &mode) == 0) return;
    savedMode_ = mode;
    savedCodePage_ = GetConsoleOutputCP();
    terminal_ = SetConsoleMode(handleOf(descriptor_), redrawableMode) != 0;
    SetConsoleOutputCP(CP_UTF8);
}

StandardOutput::~StandardOutput() {
    std::fflush(stdout);
    if (savedCodePage_ != 0) {
        SetConsoleOutputCP(savedCodePage_);
        SetConsoleMode(handleOf(descriptor_), savedMode_);
    }
    if (descriptor_ < 0) return;
    _dup2(descriptor_, outputDescriptor);
    _close(descriptor_);
}

WriteResult StandardOutput::write(std::string_view bytes) {
    constexpr std::size_t largestWrite = 1 << 20;
    while (!bytes.empty()) {
        const auto portion = static_cast<DWORD>(std::min(bytes.size(), largestWrite));
        DWORD written = 0;
        if (WriteFile(handleOf(descriptor_), bytes.data(), portion, &written, nullptr) == 0) {
            const DWORD error = GetLastError();
            if (error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA || error == ERROR_PIPE_NOT_CONNECTED) {
                return WriteResult::closed;
            }
            return error == ERROR_OPERATION_ABORTED ? WriteResult::interrupted : WriteResult::failed;
        }
        bytes.remove_prefix(written);
    }
    return WriteResult::complete;
}

bool StandardOutput::isTerminal() const {
    return terminal_;
}

bool StandardOutput::showsUtf8() const {
    return terminal_;
}

TerminalSize StandardOutput::terminalSize() const {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (GetConsoleScreenBufferInfo(handleOf(descriptor_), &info) == 0) return {};
    return {.columns = info.srWindow.Right - info.srWindow.Left + 1,
            .rows = info.srWindow.Bottom - info.srWindow.Top + 1};
}

bool StandardOutput::errorsGoToTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(handleOf(errorDescriptor), &mode) != 0;
}

}  // namespace torvik::tool::platform
