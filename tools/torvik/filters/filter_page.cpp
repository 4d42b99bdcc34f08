#include "filters/filter_page.h"

#include <fmt/format.h>

#include <cmath>
#include <iterator>

#include "filters/filter_analysis.h"

namespace torvik::tool {

namespace {

using Line = std::back_insert_iterator<std::string>;

std::string numberFormatText(std::uint32_t protocolKind) {
    return protocolKind == 32 ? "24 fraction bits" : "single precision";
}

void writePoles(Line out, const FilterDesign& design) {
    fmt::format_to(out, "Poles in the z-plane\n");
    for (std::size_t i = 0; i < design.filter->zPoles.count; ++i) {
        const std::complex<double> pole = design.filter->zPoles.values[i];
        fmt::format_to(out, "  {:.12f} {} {:.12f} i   magnitude {:.12f}\n", pole.real(), pole.imag() < 0 ? '-' : '+',
                       std::abs(pole.imag()), std::abs(pole));
    }
}

template <std::size_t Count>
void writeCoefficients(Line out, char name, const std::array<double, Count>& designed,
                       const std::array<double, Count>& held) {
    for (std::size_t i = 0; i < Count; ++i)
        fmt::format_to(out, "  {}[{}]   {:<26}{}\n", name, i, designed[i], held[i]);
}

std::string frequenciesText(const std::vector<double>& frequencies) {
    if (frequencies.empty()) return "none";
    std::string text;
    for (const double frequency : frequencies)
        fmt::format_to(std::back_inserter(text), "{}{:.9g} Hz", text.empty() ? "" : ", ", frequency);
    return text;
}

}  // namespace

std::string designPage(const FilterDesign& design, const std::string& source) {
    std::string page;
    const Line out = std::back_inserter(page);
    fmt::format_to(out, "{}, order {}\n", requestText(design.request), filterOrder);
    fmt::format_to(out, "Sampling frequency {} Hz ({})\n\n", design.fs, source);
    writePoles(out, design);
    fmt::format_to(out, "\nCoefficients: as designed, and as a device of protocol kind {} holds them ({})\n",
                   design.protocolKind, numberFormatText(design.protocolKind));
    writeCoefficients(out, 'x', design.designed.x, design.held.x);
    writeCoefficients(out, 'y', design.designed.y, design.held.y);

    const double reference = referenceFrequency(design);
    const FrequencyResponse ideal = idealResponse(design);
    const FrequencyResponse held = recurrenceResponse(design.held, design.fs);
    const double delay = groupDelay(design, reference);
    fmt::format_to(out, "\nGain before normalisation  {:.12g}\n", design.filter->gain);
    fmt::format_to(out, "Gain at {} Hz  designed {:.12g}, in the device {:.12g}\n", reference,
                   std::abs(ideal(reference)), std::abs(held(reference)));
    fmt::format_to(out, "-3 dB points, designed      {}\n", frequenciesText(halfPowerFrequencies(ideal, design)));
    fmt::format_to(out, "-3 dB points, in the device {}\n", frequenciesText(halfPowerFrequencies(held, design)));
    fmt::format_to(out, "Delay at {} Hz  {:.6g} samples, {:.6g} ms\n", reference, delay, 1000.0 * delay / design.fs);
    return page;
}

std::vector<std::string> designWarnings(const FilterDesign& design) {
    std::vector<std::string> warnings;
    if (!polesAreInside(design)) {
        warnings.emplace_back("the filter is unstable: a pole does not lie inside the unit circle");
    } else if (!isStable(design.held)) {
        warnings.emplace_back(
            "the filter is unstable in the device: its number format moves a pole out of the unit "
            "circle");
    }
    if (!cutoffsAreInBand(design.request, design.fs))
        warnings.push_back(fmt::format(
            "a cut-off frequency does not lie between 0 and half the sampling frequency, {} Hz", design.fs / 2));
    return warnings;
}

}  // namespace torvik::tool
