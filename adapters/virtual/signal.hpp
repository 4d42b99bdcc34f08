#pragma once

#include <cstdint>

#include "bench.hpp"

namespace virtual_adapter {

// Signals are functions of the set's number alone, so that equal seeds give equal values whatever was sent before. The
// arithmetic is our own where run-time libraries differ: values are identical on all systems.
struct SignalPlace {
    std::uint64_t seed;
    std::uint32_t channel;
    double setsPerSecond;
};

[[nodiscard]] double signalValue(const SignalConfig& signal, const SignalPlace& place, std::uint64_t set);

// sin(2 * pi * turns) for turns of 0..1, within 1e-9.
[[nodiscard]] double sineOfTurns(double turns);

}  // namespace virtual_adapter
