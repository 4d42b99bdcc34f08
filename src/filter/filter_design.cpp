#include "filter/filter_design.h"

#include "filter/design_steps.h"
#include "filter/filter_options.h"
#include "platform/floating_point.h"

namespace torvik {

namespace {

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

void placeProportionalIntegral(const Dfilter& filter, Placement& placement) {
    prewarp(filter, placement);
    placement.sPoles.add(0.0);
    placement.sZeros.add(-(doubled::pi * 2.0 * placement.warpedAlpha1));
}

void placePolesAndZeros(Dfilter& filter, Placement& placement) {
    if (has(filter, option::resonator)) {
        placeResonator(filter, placement);
        return;
    }
    if (has(filter, option::proportionalIntegral)) {
        placeProportionalIntegral(filter, placement);
    } else {
        placePrototypePoles(filter, placement);
        if (filter.errorCode != filter_error::none) return;
        prewarp(filter, placement);
        transformPrototype(filter, placement);
    }
    mapToZPlane(filter, placement);
}

void keepRounded(Roots& roots, const DoubledRoots& exact) {
    roots.count = exact.count;
    for (std::size_t i = 0; i < exact.count; ++i)
        roots.values[i] = exact.values[i].rounded();
}

void keepRounded(Dfilter& filter, const Placement& placement) {
    filter.warpedAlpha1 = placement.warpedAlpha1.rounded();
    filter.warpedAlpha2 = placement.warpedAlpha2.rounded();
    keepRounded(filter.sPoles, placement.sPoles);
    keepRounded(filter.sZeros, placement.sZeros);
    keepRounded(filter.zPoles, placement.zPoles);
    keepRounded(filter.zZeros, placement.zZeros);
}

std::uint32_t design(Dfilter& filter) {
    checkOptions(filter);
    if (!filter.optionsOk) return filter.errorCode;
    Placement placement;
    placePolesAndZeros(filter, placement);
    if (filter.errorCode != filter_error::none) return filter.errorCode;
    if (has(filter, option::extraZeros)) {
        addExtraZeros(filter, placement);
        if (filter.errorCode != filter_error::none) return filter.errorCode;
    }
    keepRounded(filter, placement);
    filter.errorCode = makeCoefficients(filter, placement);
    if (filter.errorCode != filter_error::none) return filter.errorCode;
    filter.iirValid = true;
    if (has(filter, option::bandKinds)) filter.order *= 2;
    return filter_error::none;
}

}  // namespace

std::uint32_t designFilter(Dfilter& filter, std::uint32_t options, std::int32_t order, std::span<const double> cutoffs,
                           const DesignValues& values) {
    const platform::MaskedFloatingPoint masked;
    start(filter, options, order, cutoffs, values);
    return design(filter);
}

}  // namespace torvik
