#include "faults/system_holdings.h"

#include <windows.h>

namespace torvik::test {

std::int64_t systemHandles() {
    DWORD count = 0;
    return GetProcessHandleCount(GetCurrentProcess(), &count) != 0 ? static_cast<std::int64_t>(count) : -1;
}

// A thread that runs is among the handles.
std::int64_t runningThreads() {
    return 0;
}

}  // namespace torvik::test
