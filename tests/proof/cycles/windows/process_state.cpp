#include "process_state.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>
// After windows.h.
#include <tlhelp32.h>

namespace torvik::proof {

namespace {

std::size_t countThreads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (snapshot == INVALID_HANDLE_VALUE) return 0;
    std::size_t count = 0;
    THREADENTRY32 thread{};
    thread.dwSize = sizeof thread;
    for (BOOL more = Thread32First(snapshot, &thread); more != 0; more = Thread32Next(snapshot, &thread)) {
        if (thread.th32OwnerProcessID == GetCurrentProcessId()) ++count;
    }
    CloseHandle(snapshot);
    return count;
}

std::size_t countHandles() {
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return count;
}

std::size_t countMappings() {
    std::size_t count = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (const char* place = nullptr; VirtualQuery(place, &region, sizeof region) != 0;
         place = static_cast<const char*>(region.BaseAddress) + region.RegionSize) {
        // What belongs together is counted once, whatever its pages are used for.
        if (region.State != MEM_FREE && region.BaseAddress == region.AllocationBase) ++count;
    }
    return count;
}

}  // namespace

ProcessState ProcessState::now() {
    return {countThreads(), countHandles(), countMappings()};
}

}  // namespace torvik::proof
