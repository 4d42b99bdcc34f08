// The steps of a design, in their order. Those that can fail leave errorCode and message.
#pragma once

#include <span>

#include "filter/dfilter.h"
#include "filter/doubled.h"

namespace torvik {

inline constexpr std::int32_t highestOrder = 15;

struct DoubledRoots {
    std::array<DoubledComplex, maxPoleZero> values;
    std::size_t count = 0;

    void add(const DoubledComplex& root) { values[count++] = root; }
    std::span<DoubledComplex> all() { return std::span(values).first(count); }
    std::span<const DoubledComplex> all() const { return std::span(values).first(count); }
};

// What is placed in a design. Low cut-offs bring poles and zeros so close to the reference frequency that the gain
// there has few right digits left, or none, unless they are known in twice a double's precision; the filter keeps them
// rounded.
struct Placement {
    Doubled warpedAlpha1{};
    Doubled warpedAlpha2{};
    DoubledRoots sPoles;
    DoubledRoots sZeros;
    DoubledRoots zPoles;
    DoubledRoots zZeros;
};

// Sets optionsOk. Every check runs; the message is that of the last one that failed.
void checkOptions(Dfilter& filter);

void prewarp(const Dfilter& filter, Placement& placement);
void placePrototypePoles(Dfilter& filter, Placement& placement);
void transformPrototype(const Dfilter& filter, Placement& placement);
void mapToZPlane(const Dfilter& filter, Placement& placement);

// Places poles and zeros of a resonator in the z-plane directly, in doubles.
void placeResonator(Dfilter& filter, Placement& placement);

void addExtraZeros(Dfilter& filter, Placement& placement);

// Multiplies poles and zeros out, divides by the gain and checks what the devices can hold.
// Result: 0 or the code of what failed.
std::uint32_t makeCoefficients(Dfilter& filter, const Placement& placement);

void fail(Dfilter& filter, std::uint32_t code);

}  // namespace torvik
