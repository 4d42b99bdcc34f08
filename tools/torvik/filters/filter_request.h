// What a filter is asked to be, and its design: pure, no device.
#pragma once

#include <array>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "filter/dfilter.h"

namespace torvik::tool {

/// Devices are given filters of this order.
inline constexpr std::size_t filterOrder = 4;

enum class FilterKind : std::uint8_t { lowPass, highPass, bandPass, bandStop };
enum class Characteristic : std::uint8_t { bessel = 1, butterworth = 2 };

struct FilterRequest {
    FilterKind kind = FilterKind::lowPass;
    Characteristic characteristic = Characteristic::butterworth;
    double f1 = 0;  ///< Hz
    double f2 = 0;  ///< Hz, of bands only

    bool isBand() const { return kind == FilterKind::bandPass || kind == FilterKind::bandStop; }
};

/// "low pass", "high pass", "band pass" or "band stop".
std::string kindText(FilterKind kind);

/// "Butterworth low pass, cut-off frequency 10 Hz".
std::string requestText(const FilterRequest& request);

/// out[t] = x[0] in[t-n] + ... + x[n] in[t]  +  y[0] out[t-n] + ... + y[n-1] out[t-1]
struct Recurrence {
    std::array<double, filterOrder + 1> x{};
    std::array<double, filterOrder> y{};
};

struct FilterDesign {
    FilterRequest request;
    double fs = 0;  ///< Hz
    std::uint32_t protocolKind = 16;
    std::unique_ptr<Dfilter> filter;
    Recurrence designed;
    Recurrence held;  ///< with the coefficients that a device's number format leaves
};

/// Whether every cut-off frequency lies between 0 and half the sampling frequency. Others may give a design, too.
bool cutoffsAreInBand(const FilterRequest& request, double fs);

/// Designs as the library does for a device. Throws Failure with the designer's code.
FilterDesign designRequest(const FilterRequest& request, double fs, std::uint32_t protocolKind);

/// The coefficient that a device holds: in single precision with protocol kind 16, with 24 fraction bits with 32.
double heldCoefficient(double coefficient, std::uint32_t protocolKind);

}  // namespace torvik::tool
