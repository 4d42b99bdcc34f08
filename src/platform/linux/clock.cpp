#include "platform/clock.h"

#include <ctime>

namespace torvik::platform {

TimePoint systemNow() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return TimePoint(std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec));
}

}  // namespace torvik::platform
