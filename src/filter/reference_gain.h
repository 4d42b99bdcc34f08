// Where the gain of a design is scaled to 1.
#pragma once

#include <complex>
#include <cstdint>

#include "filter/filter_options.h"

namespace torvik {

// The gain at the reference frequency that the options choose, of one or two of the gains that `gains` gives at z = 1
// as dc(), at the middle of the cut-offs as centre() and at z = -1 as hf().
template <class Gains>
auto referenceGain(std::uint32_t options, const Gains& gains) -> decltype(gains.dc()) {
    const auto has = [options](std::uint32_t flags) { return (options & flags) != 0; };
    if (has(option::proportionalIntegral)) return gains.hf();
    if (has(option::lowPass)) return gains.dc();
    if (has(option::highPass)) return gains.hf();
    if (has(option::bandPass | option::allPass)) return gains.centre();
    if (has(option::bandStop)) return sqrt(gains.dc() * gains.hf());
    return 1.0;
}

}  // namespace torvik
