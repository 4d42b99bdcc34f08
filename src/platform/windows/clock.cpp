#include "platform/clock.h"

#include "windows_api.h"

namespace torvik::platform {

TimePoint systemNow() {
    LARGE_INTEGER frequency;
    LARGE_INTEGER count;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&count);
    const std::int64_t seconds = count.QuadPart / frequency.QuadPart;
    const std::int64_t rest = count.QuadPart % frequency.QuadPart;
    return TimePoint(std::chrono::seconds(seconds) +
                     std::chrono::nanoseconds(rest * 1'000'000'000 / frequency.QuadPart));
}

}  // namespace torvik::platform
