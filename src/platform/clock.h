// Monotonic time.
#pragma once

#include <chrono>

namespace torvik::platform {

using Duration = std::chrono::nanoseconds;
using TimePoint = std::chrono::time_point<std::chrono::steady_clock, Duration>;

// The system's monotonic time. Time limits are measured with the current clock of sync.h instead.
TimePoint systemNow();

}  // namespace torvik::platform
