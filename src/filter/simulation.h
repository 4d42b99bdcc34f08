// Running a designed filter over a generated test signal.
#pragma once

#include <cstdint>
#include <span>

#include "filter/dfilter.h"

namespace torvik {

enum class TestSignal : std::uint8_t { step, sine };

inline constexpr std::uint32_t firKind = 128;  // any other kind is IIR

// Fills the sample buffers that floatSimulation chooses. `taps`: order + 1 for FIR, the order for IIR; more than the
// arrays hold are cut. `fs` and `f` in Hz.
void runFilter(Dfilter& filter, std::uint32_t kind, std::int32_t taps, TestSignal signal, double fs, double f);

// Root of the mean of the squares.
float rootMeanSquare(std::span<const float, 500> samples);
// The same, truncated toward zero.
std::int32_t rootMeanSquare(std::span<const std::int32_t, 500> samples);

}  // namespace torvik
