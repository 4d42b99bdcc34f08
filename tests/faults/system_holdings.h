// What the system says this program holds, and the error that it leaves behind.
#pragma once

#include <cstdint>

namespace torvik::test {

// Open descriptors (Linux) or handles (Windows).
std::int64_t systemHandles();

std::int64_t runningThreads();

// As if a call of the C run-time on a file had failed with it.
void setFileError(int systemError);

}  // namespace torvik::test
