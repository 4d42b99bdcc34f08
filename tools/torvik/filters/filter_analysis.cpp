#include "filters/filter_analysis.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <span>

namespace torvik::tool {

namespace {

using Point = std::complex<double>;

constexpr double halfPower = std::numbers::sqrt2 / 2;

Point pointAt(double frequency, double fs) {
    return std::polar(1.0, 2.0 * std::numbers::pi * frequency / fs);
}

std::span<const Point> rootsOf(const Roots& roots) {
    return std::span(roots.values).first(roots.count);
}

/// Frequencies close enough together that no pass through half power hides between two of them.
std::vector<double> searchGrid(const FilterDesign& design) {
    constexpr int steps = 4000;
    constexpr double lowestFraction = 1e-7;
    constexpr double highestFraction = 0.5;
    const double ratio = highestFraction / lowestFraction;
    std::vector<double> fractions;
    for (int i = 0; i <= steps; ++i) {
        const double part = static_cast<double>(i) / steps;
        fractions.push_back(highestFraction * part);
        fractions.push_back(lowestFraction * std::pow(ratio, part));
    }
    // A narrow band lies around its middle.
    fractions.push_back(referenceFrequency(design) / design.fs);
    fractions.push_back(std::sqrt(design.request.f1 * design.request.f2) / design.fs);
    fractions.push_back((design.request.f1 + design.request.f2) / 2 / design.fs);
    std::erase_if(fractions, [](double fraction) { return !(fraction >= 0 && fraction <= highestFraction); });
    std::ranges::sort(fractions);
    return fractions;
}

double bisect(const FrequencyResponse& response, double low, double high) {
    const bool lowPasses = std::abs(response(low)) >= halfPower;
    for (int i = 0; i < 60; ++i) {
        const double middle = (low + high) / 2;
        ((std::abs(response(middle)) >= halfPower) == lowPasses ? low : high) = middle;
    }
    return (low + high) / 2;
}

}  // namespace

FrequencyResponse idealResponse(const FilterDesign& design) {
    return [&design](double frequency) {
        const Point z = pointAt(frequency, design.fs);
        Point response = 1.0 / design.filter->gain;
        for (const Point& zero : rootsOf(design.filter->zZeros))
            response *= z - zero;
        for (const Point& pole : rootsOf(design.filter->zPoles))
            response /= z - pole;
        return response;
    };
}

FrequencyResponse recurrenceResponse(const Recurrence& recurrence, double fs) {
    return [recurrence, fs](double frequency) {
        const Point z = pointAt(frequency, fs);
        Point top = 0;
        Point bottom = 1.0;
        for (std::size_t i = recurrence.x.size(); i-- > 0;)
            top = top * z + recurrence.x[i];
        for (std::size_t i = recurrence.y.size(); i-- > 0;)
            bottom = bottom * z - recurrence.y[i];
        return top / bottom;
    };
}

double decibels(std::complex<double> response) {
    constexpr double silence = -400.0;
    return std::max(silence, 20.0 * std::log10(std::abs(response)));
}

double referenceFrequency(const FilterDesign& design) {
    const FilterRequest& request = design.request;
    const double middle = (request.f1 + request.f2) / 2;
    switch (request.kind) {
        case FilterKind::highPass:
            return design.fs / 2;
        case FilterKind::bandPass:
            return middle;
        case FilterKind::bandStop:
            // Close to the band, the rounded coefficients have a gain of their own.
            return middle < design.fs / 4 ? design.fs / 2 : 0;
        default:
            return 0;
    }
}

std::vector<double> halfPowerFrequencies(const FrequencyResponse& response, const FilterDesign& design) {
    std::vector<double> found;
    double before = 0;
    bool passesBefore = std::abs(response(0)) >= halfPower;
    for (const double fraction : searchGrid(design)) {
        const double frequency = fraction * design.fs;
        const bool passes = std::abs(response(frequency)) >= halfPower;
        if (passes != passesBefore) found.push_back(bisect(response, before, frequency));
        before = frequency;
        passesBefore = passes;
    }
    return found;
}

double groupDelay(const FilterDesign& design, double frequency) {
    const Point z = pointAt(frequency, design.fs);
    double delay = 0;
    for (const Point& pole : rootsOf(design.filter->zPoles))
        delay += (z / (z - pole)).real();
    for (const Point& zero : rootsOf(design.filter->zZeros))
        delay -= (z / (z - zero)).real();
    return delay;
}

bool polesAreInside(const FilterDesign& design) {
    return std::ranges::all_of(rootsOf(design.filter->zPoles), [](const Point& pole) { return std::abs(pole) < 1.0; });
}

bool isStable(const Recurrence& recurrence) {
    // Schur and Cohn: each step lowers the polynomial's degree by one.
    std::array<double, filterOrder + 1> polynomial{1.0};
    for (std::size_t i = 0; i < filterOrder; ++i)
        polynomial[i + 1] = -recurrence.y[filterOrder - 1 - i];
    for (std::size_t degree = filterOrder; degree > 0; --degree) {
        const double reflection = polynomial[degree];
        if (!(std::abs(reflection) < 1.0)) return false;
        const auto old = polynomial;
        for (std::size_t i = 0; i < degree; ++i)
            polynomial[i] = (old[i] - reflection * old[degree - i]) / (1.0 - reflection * reflection);
    }
    return true;
}

std::vector<double> stepResponse(const Recurrence& recurrence, std::size_t samples) {
    std::vector<double> output(samples);
    for (std::size_t t = 0; t < samples; ++t) {
        const auto past = std::min(t, filterOrder);
        double sum = 0;
        for (std::size_t back = 0; back <= past; ++back)
            sum += recurrence.x[filterOrder - back];
        for (std::size_t back = 1; back <= past; ++back)
            sum += recurrence.y[filterOrder - back] * output[t - back];
        output[t] = sum;
    }
    return output;
}

std::size_t settlingSamples(const Recurrence& recurrence, std::size_t limit) {
    constexpr double tolerance = 0.01;
    const double last = std::abs(recurrenceResponse(recurrence, 1.0)(0)) < 0.5 ? 0.0 : 1.0;
    const std::vector<double> output = stepResponse(recurrence, limit);
    const auto outside = [last](double value) { return !(std::abs(value - last) <= tolerance); };
    return static_cast<std::size_t>(output.rend() - std::find_if(output.rbegin(), output.rend(), outside));
}

}  // namespace torvik::tool
