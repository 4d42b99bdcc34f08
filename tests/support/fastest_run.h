// How long something takes at best, for comparing two inputs on a loaded machine.
#pragma once

#include <algorithm>
#include <chrono>

namespace torvik::test {

template <class Run>
std::chrono::duration<double> fastestRun(Run run) {
    auto fastest = std::chrono::steady_clock::duration::max();
    for (int i = 0; i < 3; ++i) {
        const auto start = std::chrono::steady_clock::now();
        run();
        fastest = std::min(fastest, std::chrono::steady_clock::now() - start);
    }
    return fastest;
}

}  // namespace torvik::test
