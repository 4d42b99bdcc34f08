// The seed of this process's random tests: it differs from run to run, and the environment variable TORVIK_SEED replays
// one. It is printed when it is first used; failures repeat it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

namespace torvik::test {

// 0..4294967295, unless TORVIK_SEED says more.
inline std::uint64_t seed() {
    static const std::uint64_t number = [] {
        const char* const given = std::getenv("TORVIK_SEED");
        const bool replayed = given != nullptr && *given != '\0';
        const std::uint64_t chosen = replayed ? std::strtoull(given, nullptr, 10) : std::random_device()();
        std::printf("TORVIK_SEED=%llu replays the random numbers of this run\n",
                    static_cast<unsigned long long>(chosen));
        std::fflush(stdout);
        return chosen;
    }();
    return number;
}

// For the message of a failure.
inline std::string replay() {
    return "TORVIK_SEED=" + std::to_string(seed());
}

}  // namespace torvik::test
