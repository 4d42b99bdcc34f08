// What a filter does, found numerically.
#pragma once

#include <functional>
#include <vector>

#include "filters/filter_request.h"

namespace torvik::tool {

using FrequencyResponse = std::function<std::complex<double>(double frequency)>;

/// Of the design itself, from its poles and zeros: exact also where coefficients cancel.
FrequencyResponse idealResponse(const FilterDesign& design);

FrequencyResponse recurrenceResponse(const Recurrence& recurrence, double fs);

/// Magnitude in dB, at least -400.
double decibels(std::complex<double> response);

/// Where the gain is 1: 0 Hz, half the sampling frequency, the farther of both from a band stop, or the middle of a
/// band pass.
double referenceFrequency(const FilterDesign& design);

/// The frequencies, from 0 to half the sampling frequency, at which the magnitude passes 1 / sqrt(2), rising.
std::vector<double> halfPowerFrequencies(const FrequencyResponse& response, const FilterDesign& design);

/// The group delay of the design at a frequency, in samples.
double groupDelay(const FilterDesign& design, double frequency);

/// Whether every pole lies inside the unit circle.
bool polesAreInside(const FilterDesign& design);
bool isStable(const Recurrence& recurrence);

/// The output from the moment on at which the input goes from 0 to 1 and stays.
std::vector<double> stepResponse(const Recurrence& recurrence, std::size_t samples);

/// So many samples after a step the output stays within 1 % of the step; `limit` when it takes longer.
std::size_t settlingSamples(const Recurrence& recurrence, std::size_t limit);

}  // namespace torvik::tool
