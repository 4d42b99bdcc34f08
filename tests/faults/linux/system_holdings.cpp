#include "faults/system_holdings.h"

#include <filesystem>
#include <system_error>

namespace torvik::test {

namespace {

std::int64_t entriesOf(const char* folder) {
    std::error_code none;
    const std::filesystem::directory_iterator entries(folder, none);
    return std::distance(begin(entries), end(entries));
}

}  // namespace

std::int64_t systemHandles() {
    return entriesOf("/proc/self/fd");
}

std::int64_t runningThreads() {
    return entriesOf("/proc/self/task");
}

}  // namespace torvik::test
