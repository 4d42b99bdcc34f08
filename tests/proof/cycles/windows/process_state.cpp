#include "process_state.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>
// After windows.h.
#include <psapi.h>
#include <tlhelp32.h>

#include <algorithm>
#include <span>
#include <vector>

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

// GetProcessHandleCount tells 0 under Wine. What the system tells about the handles of all processes has no
// declaration.
struct SystemHandle {
    void* object;
    ULONG_PTR process;
    ULONG_PTR handle;
    ULONG access;
    USHORT creatorBackTrace;
    USHORT type;
    ULONG attributes;
    ULONG reserved;
};

struct SystemHandles {
    ULONG_PTR count;
    ULONG_PTR reserved;
    SystemHandle first;
};

std::size_t countHandles() {
    using QuerySystem = LONG WINAPI(ULONG, void*, ULONG, ULONG*);
    constexpr ULONG extendedHandleInformation = 64;
    const auto address =
        reinterpret_cast<void (*)()>(GetProcAddress(GetModuleHandleA("ntdll"), "NtQuerySystemInformation"));
    const auto query = reinterpret_cast<QuerySystem*>(address);
    std::vector<ULONG_PTR> memory(std::size_t{1} << 17U);
    const auto size = static_cast<ULONG>(memory.size() * sizeof memory[0]);
    if (query == nullptr || query(extendedHandleInformation, memory.data(), size, nullptr) != 0) return 0;
    const auto* const handles = reinterpret_cast<const SystemHandles*>(memory.data());
    const std::span all(&handles->first, handles->count);
    return static_cast<std::size_t>(std::ranges::count(all, GetCurrentProcessId(), &SystemHandle::process));
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

std::size_t privateSize() {
    PROCESS_MEMORY_COUNTERS counters{};
    K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters.PagefileUsage / 1024;
}

std::int64_t sizeOf(HANDLE heap) {
    std::int64_t size = 0;
    PROCESS_HEAP_ENTRY entry{};
    HeapLock(heap);
    while (HeapWalk(heap, &entry) != 0) {
        if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) size += entry.cbData;
    }
    HeapUnlock(heap);
    return size;
}

// Of the process's heap and the C run-time's, if it has one of its own.
std::int64_t heapSize() {
    std::vector<HANDLE> heaps(64);
    heaps.resize(std::min<std::size_t>(GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()), heaps.size()));
    std::int64_t size = 0;
    for (const HANDLE heap : heaps)
        size += sizeOf(heap);
    return size;
}

}  // namespace

std::chrono::milliseconds ProcessState::restTime() {
    return std::chrono::seconds(6);
}

ProcessState ProcessState::now() {
    const std::int64_t heap = heapSize();
    return {countThreads(), countHandles(), countMappings(), privateSize(), heap};
}

}  // namespace torvik::proof
