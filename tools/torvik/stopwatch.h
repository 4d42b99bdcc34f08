#pragma once

#include <chrono>

namespace torvik::tool {

inline double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace torvik::tool
