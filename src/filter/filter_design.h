// Designing a digital filter: prototype poles, transformation to the kind, mapping to the z-plane, recurrence.
#pragma once

#include <cstdint>
#include <span>

#include "filter/dfilter.h"

namespace torvik {

// What the options -Ch, -Re, -Z and -p need beside cut-offs and order.
struct DesignValues {
    double chebyshevRipple = 0;  // dB, negative
    double qFactor = 0;
    double alphaZ = 0;  // fraction of the sampling frequency
    std::uint32_t poleMask = 0;
};

// Designs with the flags of filter_options.h. cutoffs[0] and, for band kinds, cutoffs[1] are fractions of the sampling
// frequency, taken as they are. Raises no floating-point exception, whatever they are.
// Result: 0, and the filter holds its coefficients; otherwise the code that is also left in errorCode.
std::uint32_t designFilter(Dfilter& filter, std::uint32_t options, std::int32_t order, std::span<const double> cutoffs,
                           const DesignValues& values = {});

}  // namespace torvik
