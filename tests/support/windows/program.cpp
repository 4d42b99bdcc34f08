#include "support/program.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace torvik::test {

int exitCodeOf(const std::string& commandLine) {
    std::string command = commandLine;
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process) == 0)
        return -1;
    DWORD code = ~DWORD{0};
    constexpr DWORD longest = 20'000;
    if (WaitForSingleObject(process.hProcess, longest) != WAIT_OBJECT_0) TerminateProcess(process.hProcess, 99);
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return static_cast<int>(code);
}

}  // namespace torvik::test
