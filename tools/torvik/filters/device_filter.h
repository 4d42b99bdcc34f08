// The filters that an open device keeps.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "connection.h"
#include "filters/filter_request.h"

namespace torvik::tool {

inline constexpr std::uint32_t filtersOfBank = 8;

enum class FilterBank : std::uint8_t { iir = 0, fir = 0x80 };

/// The device's sampling frequency in Hz. Throws Failure, as all of these.
double samplingFrequencyOf(const Connection& connection);

/// The mask of the filters that are on: bits 0..7 IIR, 8..15 FIR.
std::uint32_t filtersOn(const Connection& connection);
bool isFilterOn(std::uint32_t mask, FilterBank bank, std::uint32_t number);

void switchFilter(const Connection& connection, FilterBank bank, std::uint32_t number, bool on);

struct DeviceFilter {
    std::uint32_t number = 1;
    FilterBank bank = FilterBank::iir;
    bool on = false;
    std::uint32_t type = 0;
    std::array<double, 2> cutoffs{};  ///< Hz
    std::vector<double> x;            ///< one more than the order
    std::vector<double> y;            ///< as many as the order; none of a FIR filter

    std::uint32_t order() const { return type & 0x0FU; }
    FilterKind kind() const { return static_cast<FilterKind>(type >> 4U & 3U); }
};

/// Without the coefficients.
DeviceFilter readFilter(const Connection& connection, std::uint32_t mask, FilterBank bank, std::uint32_t number);
void readCoefficients(const Connection& connection, DeviceFilter& filter);

/// One line: number, on or off, kind, order, cut-off frequencies.
std::string filterLine(const DeviceFilter& filter);
std::string coefficientLines(const DeviceFilter& filter);

}  // namespace torvik::tool
