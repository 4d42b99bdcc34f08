// The filters that a device keeps: their type words, coefficients and how these travel.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "core/wire.h"

namespace torvik {

inline constexpr std::uint32_t highestFilterNo = 8;
inline constexpr std::uint8_t firBank = 0x80;

// The parts of a filter type word.
namespace filter_type {
inline constexpr std::uint32_t orderMask = 0x0F;
inline constexpr std::uint32_t kindMask = 0x70;
inline constexpr std::uint32_t bandPass = 0x20;
inline constexpr std::uint32_t bandStop = 0x30;
inline constexpr std::uint32_t refused = 0x40;

constexpr bool isBand(std::uint32_t type) {
    return (type & kindMask) == bandPass || (type & kindMask) == bandStop;
}
}  // namespace filter_type

// The two bytes that most filter commands begin with: the filter and an index, type or bank.
Parameters filterParameters(std::uint32_t filterNo, std::uint32_t second);

// The bit of one filter in the on/off mask; filter 0 means several.
std::uint32_t filterBit(std::uint32_t filterNo, bool fir);

// The parameter bytes of a coefficient in the wire format of the protocol kind.
std::uint32_t encodeCoefficient(double coefficient, std::uint32_t protocolKind);

// The coefficient in an answer's word. Nothing: bit 31 is set; such words are passed over.
std::optional<double> decodeCoefficient(std::uint32_t word);

// Sets type, cut-offs (fractions of the sampling frequency) and coefficients of one filter and stores the settings. The
// order in the type says how many coefficients are taken; a negative type is the FIR form, without y.
// Result: 0; -1 with lastError set.
std::int32_t loadFilter(std::uint8_t deviceNo, std::uint32_t filterNo, std::int32_t type, const double* cutoffs,
                        const double* x, const double* y);

}  // namespace torvik
