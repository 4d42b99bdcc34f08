#include "filter/response_files.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <utility>

#include "core/error_codes.h"
#include "filter/filter_options.h"
#include "filter/response_file.h"
#include "filter/simulation.h"
#include "platform/floating_point.h"

namespace torvik {

namespace {

constexpr std::int32_t fewestStepPoints = 20;
constexpr double fixedFullScale = 8388607.0;
constexpr double silence = -320.0;  // dB

// The kind proper of a kind word; also makes the filter simulate in that arithmetic.
std::uint32_t selectKind(Dfilter& filter, std::uint32_t kindWord) {
    filter.floatSimulation = (kindWord & singlePrecision) != 0;
    return filter.floatSimulation ? kindWord & 0xFF : kindWord;
}

bool available(const Dfilter& filter, std::uint32_t kind) {
    if (kind == firKind) return filter.firValid;
    // Kept: only the kind 0 is looked at.
    return kind != 0 || filter.iirValid;
}

std::int32_t tapsOf(const Dfilter& filter, std::uint32_t kind) {
    return kind == firKind ? filter.order + 1 : filter.order;
}

double outputOf(const Dfilter& filter, std::size_t n) {
    return filter.floatSimulation ? static_cast<double>(filter.floatSamples[samplesPerRun + n])
                                  : filter.fixedSamples[samplesPerRun + n] / fixedFullScale;
}

template <class Samples>
double amplitudeRatio(const Samples& samples) {
    const auto all = std::span(samples);
    const auto output = rootMeanSquare(all.template subspan<samplesPerRun + 500, 500>());
    const auto input = rootMeanSquare(all.template first<500>());
    return static_cast<double>(output) / static_cast<double>(input);
}

double amplitudeAt(Dfilter& filter, std::uint32_t kind, double fs, double f) {
    runFilter(filter, kind, tapsOf(filter, kind), TestSignal::sine, fs, f);
    const double ratio = filter.floatSimulation ? amplitudeRatio(std::as_const(filter).floatSamples)
                                                : amplitudeRatio(std::as_const(filter).fixedSamples);
    if (std::abs(ratio) <= std::numeric_limits<double>::epsilon()) return silence;
    return 20.0 * std::log10(ratio);
}

// Kept: decimals and line ends differ with the number of points; readers of the files count on it.
// False: `mustEnd` has ended it.
bool writeAmplitudes(ResponseFile& file, Dfilter& filter, std::uint32_t kind, double fStart, double fStop, double fs,
                     std::int32_t points, const StopCheck& mustEnd) {
    const auto writeRow = [&](double f, int decimals, std::string_view end) {
        file.writeRow(f, decimals, amplitudeAt(filter, kind, fs, f), 2, end);
    };
    if (points == 1) {
        writeRow(fStart, 3, "");
    } else if (points == 2) {
        writeRow(fStart, 3, "\n");
        writeRow(fStop, 3, "");
    } else {
        const double step = (fStop - fStart) / (points - 1);
        double f = fStart;
        for (std::int32_t i = 0; i < points; ++i, f += step) {
            if (mustEnd && mustEnd()) return false;
            writeRow(f, 2, "\n");
        }
    }
    return true;
}

}  // namespace

std::uint32_t writeStepResponse(Dfilter& filter, std::uint32_t kindWord, double levelBefore, double levelAfter,
                                double fs, std::int32_t points, const char* fileName, const StopCheck& mustEnd) {
    const platform::MaskedFloatingPoint masked;
    if (points < fewestStepPoints || fileName == nullptr || !(fs >= 1.0)) return filter_error::wrongArguments;
    const std::uint32_t kind = selectKind(filter, kindWord);
    if (!available(filter, kind)) return filter_error::noDesign;
    filter.stepLevelBefore = levelBefore;
    filter.stepLevelAfter = levelAfter;
    runFilter(filter, kind, tapsOf(filter, kind), TestSignal::step, fs, 0.0);
    ResponseFile file(fileName, mustEnd);
    if (!file.opened()) return file.close();
    file.writeHeading("Step", filter, kind, fs);
    file.writeWords("Time [ms]\tAmplitude\n");
    double time = 0.0;
    const auto lines = std::min(static_cast<std::size_t>(points), samplesPerRun);
    for (std::size_t i = 0; i < lines; ++i, time += 1000.0 / fs)
        file.writeRow(time, 3, outputOf(filter, i), 5, "\n");
    return file.close();
}

std::uint32_t writeFrequencyResponse(Dfilter& filter, std::uint32_t kindWord, double fStart, double fStop, double fs,
                                     std::int32_t points, const char* fileName, const StopCheck& mustEnd) {
    const platform::MaskedFloatingPoint masked;
    if (!(fStart < fs) || !(fStop <= fs) || points < 1 || fileName == nullptr || !(fs >= 1.0))
        return filter_error::wrongArguments;
    const std::uint32_t kind = selectKind(filter, kindWord);
    if (!available(filter, kind)) return filter_error::noDesign;
    ResponseFile file(fileName, mustEnd);
    if (!file.opened()) return file.close();
    file.writeHeading("Frequency", filter, kind, fs);
    file.writeWords("f [Hz]\tAmplitude [dB]\n");
    const bool complete = writeAmplitudes(file, filter, kind, fStart, fStop, fs, points, mustEnd);
    const std::uint32_t code = file.close();
    return complete ? code : error::notActive;
}

}  // namespace torvik
