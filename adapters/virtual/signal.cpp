#include "signal.hpp"

#include <numbers>

namespace virtual_adapter {
namespace {

// The finaliser of a 64-bit mixing generator: every bit of the result depends on every bit of the input.
std::uint64_t mix(std::uint64_t bits) {
    bits += 0x9E3779B97F4A7C15U;
    bits = (bits ^ (bits >> 30U)) * 0xBF58476D1CE4E5B9U;
    bits = (bits ^ (bits >> 27U)) * 0x94D049BB133111EBU;
    return bits ^ (bits >> 31U);
}

// -1 up to, but not including, 1.
double randomValue(const SignalPlace& place, std::uint64_t set) {
    const std::uint64_t bits = mix(mix(place.seed ^ (std::uint64_t{place.channel} << 56U)) ^ set);
    return static_cast<double>(bits >> 11U) * 0x1p-52 - 1.0;
}

double waveformValue(Waveform waveform, double phase) {
    switch (waveform) {
        case Waveform::sine:
            return sineOfTurns(phase);
        case Waveform::step:
            return phase < 0.5 ? 0.0 : 1.0;
        case Waveform::ramp:
            return 2.0 * phase - 1.0;
        default:
            return 0.0;
    }
}

}  // namespace

double sineOfTurns(double turns) {
    // Folded to a quarter turn on either side of zero, where the Taylor series converges fast.
    double folded = turns;
    if (turns > 0.75) {
        folded = turns - 1.0;
    } else if (turns > 0.25) {
        folded = 0.5 - turns;
    }
    const double angle = folded * (2.0 * std::numbers::pi);
    const double square = angle * angle;
    constexpr double coefficients[] = {-1.0 / 1'307'674'368'000,
                                       1.0 / 6'227'020'800,
                                       -1.0 / 39'916'800,
                                       1.0 / 362'880,
                                       -1.0 / 5'040,
                                       1.0 / 120,
                                       -1.0 / 6,
                                       1.0};
    double factor = 0;
    for (const double coefficient : coefficients)
        factor = factor * square + coefficient;
    return angle * factor;
}

double signalValue(const SignalConfig& signal, const SignalPlace& place, std::uint64_t set) {
    double value = signal.offset;
    if (signal.waveform == Waveform::noise) return value + signal.amplitude * randomValue(place, set);
    if (signal.waveform != Waveform::constant) {
        const double turns = static_cast<double>(set) * (signal.frequency / place.setsPerSecond);
        // From 2^53 on every number is whole.
        const double wholeTurns = turns < 0x1p53 ? static_cast<double>(static_cast<std::int64_t>(turns)) : turns;
        value += signal.amplitude * waveformValue(signal.waveform, turns - wholeTurns);
    }
    if (signal.noise != 0) value += signal.noise * randomValue(place, set);
    return value;
}

}  // namespace virtual_adapter
