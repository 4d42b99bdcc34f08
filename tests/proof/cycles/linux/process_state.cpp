#include "process_state.h"

#include <malloc.h>
#if defined(TORVIK_SANITIZED_HEAP)
#include <sanitizer/allocator_interface.h>
#endif

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace torvik::proof {

namespace {

std::size_t entriesOf(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::size_t linesOf(const char* file) {
    std::ifstream stream(file);
    return static_cast<std::size_t>(std::count(std::istreambuf_iterator<char>(stream), {}, '\n'));
}

std::size_t dataSize() {
    std::ifstream stream("/proc/self/status");
    for (std::string word; stream >> word;) {
        std::size_t size = 0;
        if (word == "VmData:" && stream >> size) return size;
    }
    return 0;
}

#if defined(TORVIK_SANITIZED_HEAP)
// The sanitizer's own; with the address sanitizer it counts what lies in quarantine, and the leak sanitizer looks
// instead.
std::int64_t heapSize() {
    return TORVIK_SANITIZED_HEAP ? static_cast<std::int64_t>(__sanitizer_get_current_allocated_bytes()) : -1;
}
#else
// Of all arenas.
std::int64_t heapSize() {
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<std::int64_t>(heap.uordblks + heap.hblkhd);
}
#endif

}  // namespace

std::chrono::milliseconds ProcessState::restTime() {
    return std::chrono::milliseconds(0);
}

ProcessState ProcessState::now() {
    // Heap and mappings first: listing a folder may itself need memory.
    const std::int64_t heap = heapSize();
    const std::size_t mappings = linesOf("/proc/self/maps");
    return {entriesOf("/proc/self/task"), entriesOf("/proc/self/fd"), mappings, dataSize(), heap};
}

}  // namespace torvik::proof
