// One IIR filter as it is on the wire: written to a device, and read back as the device has it.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "connection.h"
#include "filters/filter_request.h"

namespace torvik::tool {

/// Devices report coefficients with 24 fraction bits.
inline constexpr double coefficientResolution = 0x1p-24;

/// A coefficient's index byte on the wire. `bankBit`: 0x80 for FIR filters.
std::uint8_t inputIndex(std::size_t i, std::uint8_t bankBit = 0);
std::uint8_t outputIndex(std::size_t i);

/// A coefficient as the device reports it, negative ones too. Throws Failure.
double readCoefficient(const Connection& connection, std::uint32_t number, std::uint8_t index);

struct FilterImage {
    std::uint8_t type = 0;
    std::map<std::uint8_t, std::uint32_t> cutoffs;  ///< by index; floats as their bits
    std::map<std::uint8_t, double> coefficients;    ///< by index byte
};

FilterImage imageOf(const FilterDesign& design);

/// What the device keeps of IIR filter `number`, and what lies beyond its order where `written` will write. Throws
/// Failure.
FilterImage readFormerImage(const Connection& connection, std::uint32_t number, const FilterImage& written);

/// Throws Failure at the first command that fails.
void writeImage(const Connection& connection, std::uint32_t number, const FilterImage& image,
                std::uint32_t protocolKind);

/// What the device holds otherwise than `image`, a line each; empty when its type and all coefficients are the same.
/// Throws Failure.
std::vector<std::string> differencesFrom(const Connection& connection, std::uint32_t number, const FilterImage& image);

}  // namespace torvik::tool
