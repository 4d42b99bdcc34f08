#include "filters/filter_plot.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "filters/filter_analysis.h"

namespace torvik::tool {

namespace {

void writeStepData(std::string& script, const FilterDesign& design) {
    constexpr std::size_t fewest = 20;
    constexpr std::size_t most = 20000;
    constexpr std::size_t mostRows = 2000;
    const std::size_t samples = std::clamp(settlingSamples(design.designed, most) * 3 / 2, fewest, most);
    const std::size_t stride = (samples + mostRows - 1) / mostRows;
    const auto ideal = stepResponse(design.designed, samples);
    const auto held = stepResponse(design.held, samples);
    script += "$step << END_OF_DATA\n";
    for (std::size_t t = 0; t < samples; t += stride)
        fmt::format_to(std::back_inserter(script), "{} {} {}\n", 1000.0 * static_cast<double>(t) / design.fs, ideal[t],
                       held[t]);
    script += "END_OF_DATA\n";
}

void writeFrequencyData(std::string& script, const FilterDesign& design) {
    constexpr int rows = 2000;
    const FrequencyResponse ideal = idealResponse(design);
    const FrequencyResponse held = recurrenceResponse(design.held, design.fs);
    script += "$frequency << END_OF_DATA\n";
    // The ends are left out: there a zero may make the response vanish.
    for (int i = 1; i < rows; ++i) {
        const double frequency = design.fs / 2 * i / rows;
        fmt::format_to(std::back_inserter(script), "{} {} {}\n", frequency, decibels(ideal(frequency)),
                       decibels(held(frequency)));
    }
    script += "END_OF_DATA\n";
}

void writePanel(std::string& script, std::string_view data, std::string_view title, std::string_view xLabel,
                std::string_view yLabel) {
    fmt::format_to(std::back_inserter(script),
                   "set title '{}'\nset xlabel '{}'\nset ylabel '{}'\n"
                   "plot {} using 1:2 with lines linewidth 3 linecolor rgb '#a0c4e8' title 'ideal', "
                   "{} using 1:3 with lines linewidth 1 dashtype 2 linecolor rgb '#c03020' title 'in the device'\n",
                   title, xLabel, yLabel, data, data);
}

}  // namespace

std::string plotScript(const FilterDesign& design, PictureFormat format) {
    constexpr std::string_view lowestAmplitude = "-120";
    std::string script;
    writeStepData(script, design);
    writeFrequencyData(script, design);
    script += format == PictureFormat::svg ? "set terminal svg size 900,900\n" : "set terminal png size 900,900\n";
    script += "if (ARGC > 0) set output ARG1\nset grid\n";
    fmt::format_to(std::back_inserter(script),
                   "set multiplot layout 2,1 title '{}, order {}, sampling frequency {} Hz'\n",
                   requestText(design.request), filterOrder, design.fs);
    writePanel(script, "$step", "Step response", "time [ms]", "output");
    fmt::format_to(std::back_inserter(script), "set yrange [{}:10]\n", lowestAmplitude);
    writePanel(script, "$frequency", "Frequency response", "frequency [Hz]", "amplitude [dB]");
    script += "unset multiplot\nunset output\n";
    return script;
}

}  // namespace torvik::tool
