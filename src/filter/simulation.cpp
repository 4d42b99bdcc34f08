#include "filter/simulation.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

#include "filter/doubled_angle.h"
#include "filter/sine.h"

namespace torvik {

namespace {

constexpr double fullScale = 8388607.0;
constexpr double sineAmplitude = 7989150.0;  // below full scale on purpose
constexpr double coefficientScale = 16777216.0;
constexpr std::size_t stepPlace = 10;
constexpr std::int32_t highest = 8388607;
constexpr std::int32_t lowest = -8388608;

using FixedCoefficients = std::array<std::int32_t, maxPoleZero + 1>;
using FixedHistory = std::array<std::int32_t, maxPoleZero + 1>;

// Toward zero; what does not fit becomes the nearest number that does, NaN becomes 0.
std::int32_t truncate(double value) {
    using Limits = std::numeric_limits<std::int32_t>;
    if (!(value > Limits::min())) return std::isnan(value) ? 0 : Limits::min();
    return value < Limits::max() ? static_cast<std::int32_t>(value) : Limits::max();
}

// Right to the last digit also next to a multiple of pi, where that of the Windows run-time is not: at half the
// sampling frequency the signal consists of nothing else.
double exactSine(double radians) {
    return onUnitCircle(Doubled(radians) / doubled::pi).imaginary.rounded();
}

// The phases of a sine, added up.
std::array<double, samplesPerRun> phasesOf(double fs, double f) {
    const double step = 2.0 * std::numbers::pi * f / fs;
    std::array<double, samplesPerRun> phases{};
    double phase = 0;
    for (double& entry : phases) {
        entry = phase;
        phase += step;
    }
    return phases;
}

void generateSine(std::span<float, samplesPerRun> input, double fs, double f) {
    const auto phases = phasesOf(fs, f);
    if (std::abs(phases.back()) <= farthestSineAngle) {
        for (std::size_t n = 0; n < samplesPerRun; ++n)
            input[n] = static_cast<float>(sine(phases[n]));
    } else {
        std::ranges::transform(phases, input.begin(),
                               [](double phase) { return static_cast<float>(exactSine(phase)); });
    }
}

void generateSine(std::span<std::int32_t, samplesPerRun> input, double fs, double f) {
    std::ranges::transform(phasesOf(fs, f), input.begin(),
                           [](double phase) { return truncate(exactSine(phase) * sineAmplitude); });
}

// Kept: the levels of the step are ignored.
void generateFloat(Dfilter& filter, TestSignal signal, double fs, double f) {
    const auto input = std::span(filter.floatSamples).first<samplesPerRun>();
    if (signal == TestSignal::step) {
        std::ranges::fill(input, 1.0F);
    } else {
        generateSine(input, fs, f);
    }
}

void generateFixed(Dfilter& filter, TestSignal signal, double fs, double f) {
    const auto input = std::span(filter.fixedSamples).first<samplesPerRun>();
    if (signal == TestSignal::step) {
        std::ranges::fill(input.first<stepPlace>(), truncate(filter.stepLevelBefore * fullScale));
        std::ranges::fill(input.subspan<stepPlace>(), truncate(filter.stepLevelAfter * fullScale));
    } else {
        generateSine(input, fs, f);
    }
}

struct FloatRun {
    std::array<float, maxPoleZero + 1> x{};
    std::array<float, maxPoleZero + 1> y{};
    // The histories lie in front of the samples, so that the newest of a run of taps + 1 is the present one.
    std::array<float, maxPoleZero + samplesPerRun> inputs{};
    std::array<float, maxPoleZero + samplesPerRun> outputs{};
};

void runTaps(FloatRun& run, std::size_t taps) {
    for (std::size_t n = 0; n < samplesPerRun; ++n) {
        float out = 0;
        for (std::size_t k = 0; k <= taps; ++k)
            out += run.inputs[n + k] * run.x[k];
        for (std::size_t k = 0; k < taps; ++k)
            out += run.outputs[n + k] * run.y[k];
        run.outputs[n + taps] = out;
    }
}

// The same sums in the same order, written out for one number of taps: in half the time.
template <std::size_t... X, std::size_t... Y>
void runTaps(FloatRun& run, std::index_sequence<X...>, std::index_sequence<Y...>) {
    const std::array x = {run.x[X]...};
    const std::array y = {run.y[Y]...};
    for (std::size_t n = 0; n < samplesPerRun; ++n) {
        float out = 0;
        ((out += run.inputs[n + X] * x[X]), ...);
        ((out += run.outputs[n + Y] * y[Y]), ...);
        run.outputs[n + sizeof...(Y)] = out;
    }
}

void runFloat(Dfilter& filter, std::size_t taps) {
    constexpr std::size_t tapsOfDevices = 4;
    FloatRun run;
    for (std::size_t k = 0; k <= taps; ++k)
        run.x[k] = static_cast<float>(filter.rawX[k] / filter.gain);
    for (std::size_t k = 0; k < taps; ++k)
        run.y[k] = static_cast<float>(filter.rawY[k]);
    const auto samples = std::span(filter.floatSamples);
    std::ranges::copy(samples.first<samplesPerRun>(), run.inputs.begin() + static_cast<std::ptrdiff_t>(taps));
    if (taps == tapsOfDevices) {
        runTaps(run, std::make_index_sequence<tapsOfDevices + 1>(), std::make_index_sequence<tapsOfDevices>());
    } else {
        runTaps(run, taps);
    }
    std::ranges::copy(std::span(run.outputs).subspan(taps, samplesPerRun), samples.begin() + samplesPerRun);
}

// One product of the device's arithmetic: both numbers have 24 fraction bits, eight of which are kept.
std::int64_t product(std::int64_t sample, std::int64_t coefficient) {
    return (sample * coefficient) >> 16;
}

std::int32_t scaledBack(std::int64_t sum) {
    return static_cast<std::int32_t>(sum >> 8);
}

void runFixed(Dfilter& filter, std::size_t taps) {
    FixedCoefficients x{};
    FixedCoefficients y{};
    for (std::size_t k = 0; k <= taps; ++k)
        x[k] = truncate((filter.gain > 0 ? filter.rawX[k] / filter.gain : filter.rawX[k]) * coefficientScale);
    for (std::size_t k = 0; k < taps; ++k)
        y[k] = truncate(filter.rawY[k] * coefficientScale);
    FixedHistory xHistory{};
    FixedHistory yHistory{};
    std::size_t oldest = 0;
    for (std::size_t n = 0; n < samplesPerRun; ++n) {
        const std::int32_t input = filter.fixedSamples[n];
        std::int64_t sum = 0;
        for (std::size_t j = 0, place = oldest; j < taps; ++j, place = place + 1 == taps ? 0 : place + 1)
            sum += product(xHistory[place], x[j]) + product(yHistory[place], y[j]);
        std::int32_t out = scaledBack(product(input, x[taps]) + sum);
        if (out > highest || out < lowest) {
            // Kept: an overflow makes the filter pass its input on and forget its own past.
            out = input;
            yHistory = xHistory;
        }
        if (taps > 0) {
            yHistory[oldest] = out;
            xHistory[oldest] = input;
            oldest = oldest + 1 == taps ? 0 : oldest + 1;
        }
        filter.fixedSamples[samplesPerRun + n] = out;
    }
}

void runFixedFir(Dfilter& filter, std::size_t taps) {
    if (taps == 0) return;
    std::array<std::int32_t, maxFirCoefficients> c{};
    for (std::size_t j = 0; j < taps; ++j)
        c[j] = truncate(filter.firCoefficients[j] * coefficientScale);
    std::array<std::int32_t, maxFirCoefficients> history{};
    const std::size_t length = taps - 1;
    std::size_t oldest = 0;
    for (std::size_t n = 0; n < samplesPerRun; ++n) {
        const std::int32_t input = filter.fixedSamples[n];
        std::int64_t sum = 0;
        for (std::size_t j = 0, place = oldest; j < length; ++j, place = place + 1 == length ? 0 : place + 1)
            sum += product(history[place], c[j]);
        filter.fixedSamples[samplesPerRun + n] = scaledBack(product(input, c[length]) + sum);
        if (length > 0) {
            history[oldest] = input;
            oldest = oldest + 1 == length ? 0 : oldest + 1;
        }
    }
}

template <class Sample>
double meanSquare(std::span<const Sample, 500> samples) {
    double sum = 0;
    for (const Sample sample : samples)
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    return sum / static_cast<double>(samples.size());
}

}  // namespace

void runFilter(Dfilter& filter, std::uint32_t kind, std::int32_t taps, TestSignal signal, double fs, double f) {
    const std::size_t most = kind == firKind ? maxFirCoefficients : maxPoleZero;
    const std::size_t count = std::min(static_cast<std::size_t>(std::max(taps, 0)), most);
    if (filter.floatSimulation) {
        generateFloat(filter, signal, fs, f);
        // Kept: single precision knows no FIR filter and runs the recurrence whatever the kind.
        runFloat(filter, count);
        return;
    }
    generateFixed(filter, signal, fs, f);
    if (kind == firKind) {
        runFixedFir(filter, count);
    } else {
        runFixed(filter, count);
    }
}

float rootMeanSquare(std::span<const float, 500> samples) {
    return static_cast<float>(std::sqrt(meanSquare(samples)));
}

std::int32_t rootMeanSquare(std::span<const std::int32_t, 500> samples) {
    return truncate(std::sqrt(meanSquare(samples)));
}

}  // namespace torvik
