// What the system says this program holds.
#pragma once

#include <cstdint>

namespace torvik::test {

// Open descriptors (Linux) or handles (Windows).
std::int64_t systemHandles();

std::int64_t runningThreads();

}  // namespace torvik::test
