#include "bench.hpp"

namespace virtual_adapter {

std::vector<SignalConfig> defaultSignals(std::size_t channels) {
    const std::array<SignalConfig, kMostChannels> lively{{
        {Waveform::sine, 0.50, 0.00, 0.50, 0.002},
        {Waveform::sine, 0.25, 0.10, 1.00, 0.002},
        {Waveform::sine, 0.10, -0.20, 2.00, 0.002},
        {Waveform::ramp, 0.40, 0.00, 0.25, 0.001},
        {Waveform::step, 0.30, -0.15, 0.50, 0.001},
        {Waveform::noise, 0.05, 0.00, 0.00, 0.000},
        {Waveform::sine, 0.80, 0.00, 0.10, 0.002},
        {Waveform::constant, 0.00, 0.70, 0.00, 0.000},
    }};
    return {lively.begin(), lively.begin() + static_cast<std::ptrdiff_t>(channels)};
}

BenchConfig defaultBench() {
    BenchConfig bench;
    bench.amplifiers.emplace_back().signals = defaultSignals(6);
    return bench;
}

}  // namespace virtual_adapter
