#include "filter/filter_design.h"

#include <cmath>
#include <numbers>

#include "filter/design_steps.h"
#include "filter/filter_options.h"
#include "platform/floating_point.h"

namespace torvik {

namespace {

// The limits of the devices' coefficient format.
constexpr double largestGain = 3200.0;
constexpr double coefficientSumLimit = 64.0;

bool has(const Dfilter& filter, std::uint32_t flags) {
    return (filter.options & flags) != 0;
}

void start(Dfilter& filter, std::uint32_t options, std::int32_t order, std::span<const double> cutoffs,
           const DesignValues& values) {
    filter.firValid = false;
    filter.iirValid = false;
    filter.options = options;
    filter.errorCode = filter_error::none;
    filter.message.fill('\0');
    filter.order = (options & option::order) != 0 ? order : 0;
    filter.poleMask = (options & option::poleMask) != 0 ? values.poleMask : ~std::uint32_t{0};
    if ((options & option::cutoffs) != 0) {
        filter.alpha1 = cutoffs[0];
        filter.alpha2 = (options & option::bandKinds) != 0 ? cutoffs[1] : cutoffs[0];
    }
    filter.alphaZ = values.alphaZ;
    filter.chebyshevRipple = values.chebyshevRipple;
    filter.qFactor = values.qFactor;
    // A design with fewer coefficients than the one before it leaves none of that to the simulation.
    for (auto* const coefficients : {&filter.xCoefficients, &filter.yCoefficients, &filter.rawX, &filter.rawY})
        coefficients->fill(0);
    for (Roots* const roots : {&filter.sPoles, &filter.sZeros, &filter.zPoles, &filter.zZeros})
        roots->count = 0;
}

void placeProportionalIntegral(Dfilter& filter) {
    prewarp(filter);
    filter.sPoles.add(0.0);
    filter.sZeros.add(-2.0 * std::numbers::pi * filter.warpedAlpha1);
}

void placePolesAndZeros(Dfilter& filter) {
    if (has(filter, option::resonator)) {
        placeResonator(filter);
        return;
    }
    if (has(filter, option::proportionalIntegral)) {
        placeProportionalIntegral(filter);
    } else {
        placePrototypePoles(filter);
        if (filter.errorCode != filter_error::none) return;
        prewarp(filter);
        transformPrototype(filter);
    }
    mapToZPlane(filter);
}

// Divides by the gain and checks what the devices can hold. The comparisons let a NaN fail.
std::uint32_t makeCoefficients(Dfilter& filter) {
    filter.gain = std::abs(referenceGain(filter));
    if (filter.gain > largestGain) return filter_error::gainTooLarge;
    double sum = 0;
    for (std::size_t i = 0; i <= filter.zZeros.count; ++i) {
        filter.xCoefficients[i] = filter.rawX[i] / filter.gain;
        sum += std::abs(filter.xCoefficients[i]);
    }
    for (std::size_t i = 0; i < filter.zPoles.count; ++i) {
        filter.yCoefficients[i] = filter.rawY[i];
        sum += std::abs(filter.yCoefficients[i]);
    }
    return sum < coefficientSumLimit ? filter_error::none : filter_error::coefficientsTooLarge;
}

std::uint32_t design(Dfilter& filter) {
    checkOptions(filter);
    if (!filter.optionsOk) return filter.errorCode;
    placePolesAndZeros(filter);
    if (filter.errorCode != filter_error::none) return filter.errorCode;
    if (has(filter, option::extraZeros)) {
        addExtraZeros(filter);
        if (filter.errorCode != filter_error::none) return filter.errorCode;
    }
    if (!expandPolynomials(filter)) return filter.errorCode;
    filter.errorCode = makeCoefficients(filter);
    if (filter.errorCode != filter_error::none) return filter.errorCode;
    filter.iirValid = true;
    if (has(filter, option::bandKinds)) filter.order *= 2;
    return filter_error::none;
}

}  // namespace

Complex referenceGain(const Dfilter& filter) {
    if (has(filter, option::proportionalIntegral)) return filter.hfGain;
    if (has(filter, option::lowPass)) return filter.dcGain;
    if (has(filter, option::highPass)) return filter.hfGain;
    if (has(filter, option::bandPass | option::allPass)) return filter.centreGain;
    if (has(filter, option::bandStop)) return std::sqrt(filter.dcGain * filter.hfGain);
    return 1.0;
}

std::uint32_t designFilter(Dfilter& filter, std::uint32_t options, std::int32_t order, std::span<const double> cutoffs,
                           const DesignValues& values) {
    const platform::MaskedFloatingPoint masked;
    start(filter, options, order, cutoffs, values);
    return design(filter);
}

}  // namespace torvik
