// A library that releases everything when the process ends, after the application's own code.
#pragma once

#include <chrono>

#include "TORVIK.h"

namespace torvik::test {

inline constexpr int releaseWasSlow = 99;  // exit code

inline bool releaseIsQuick() {
    const auto begun = std::chrono::steady_clock::now();
    TORVIKrelease(0);
    return std::chrono::steady_clock::now() - begun < std::chrono::seconds(1);
}

}  // namespace torvik::test
