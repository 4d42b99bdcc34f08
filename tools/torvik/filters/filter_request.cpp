#include "filters/filter_request.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>

#include "core/wire.h"
#include "error_meanings.h"
#include "failure.h"
#include "filter/filter_design.h"
#include "filter/filter_options.h"

namespace torvik::tool {

std::string kindText(FilterKind kind) {
    switch (kind) {
        case FilterKind::lowPass:
            return "low pass";
        case FilterKind::highPass:
            return "high pass";
        case FilterKind::bandPass:
            return "band pass";
        default:
            return "band stop";
    }
}

std::string requestText(const FilterRequest& request) {
    const std::string name = fmt::format(
        "{} {}", request.characteristic == Characteristic::bessel ? "Bessel" : "Butterworth", kindText(request.kind));
    if (request.isBand()) return fmt::format("{}, cut-off frequencies {} Hz and {} Hz", name, request.f1, request.f2);
    return fmt::format("{}, cut-off frequency {} Hz", name, request.f1);
}

double heldCoefficient(double coefficient, std::uint32_t protocolKind) {
    if (protocolKind != 32) return widenFloat(narrowToFloat(coefficient));
    constexpr double scale = 16777216.0;
    constexpr double largest = 0x7FFFFFFF;
    // What the format cannot hold, NaN too, becomes its largest number.
    const double magnitude = std::round(std::abs(coefficient) * scale);
    return std::copysign((magnitude < largest ? magnitude : largest) / scale, coefficient);
}

bool cutoffsAreInBand(const FilterRequest& request, double fs) {
    const auto inBand = [fs](double cutoff) { return cutoff > 0 && cutoff < fs / 2; };
    return inBand(request.f1) && (!request.isBand() || inBand(request.f2));
}

namespace {

/// The designer's code alone would blame a cut-off frequency that is none for being a little too low.
Failure designFailure(const FilterRequest& request, double fs, std::uint32_t code) {
    Failure failure{
        .exitCode = ExitCode::usage,
        .tried = fmt::format("designing a {}, at a sampling frequency of {} Hz,", requestText(request), fs)};
    if (cutoffsAreInBand(request, fs)) {
        failure.error = LibraryError{.code = code, .text = errorText(code)};
    } else {
        failure.reason = fmt::format(
            "a cut-off frequency does not lie between 0 and half the sampling frequency, {} Hz "
            "(code 0x{:X})",
            fs / 2, code);
        failure.advice = fmt::format("give cut-off frequencies above 0 and below {} Hz", fs / 2);
    }
    return failure;
}

}  // namespace

FilterDesign designRequest(const FilterRequest& request, double fs, std::uint32_t protocolKind) {
    constexpr std::array<std::uint32_t, 4> kindOptions{option::lowPass, option::highPass, option::bandPass,
                                                       option::bandStop};
    const std::uint32_t options =
        option::order | option::cutoffs | kindOptions.at(static_cast<std::size_t>(request.kind)) |
        (request.characteristic == Characteristic::bessel ? option::bessel : option::butterworth);
    // A band's prototype has half the order.
    const std::int32_t order = static_cast<std::int32_t>(filterOrder) / (request.isBand() ? 2 : 1);
    const std::array<double, 2> alphas{request.f1 / fs, request.f2 / fs};

    FilterDesign design;
    design.request = request;
    design.fs = fs;
    design.protocolKind = protocolKind;
    design.filter = std::make_unique<Dfilter>();
    const std::uint32_t code = designFilter(*design.filter, options, order, alphas);
    if (code != filter_error::none) throw designFailure(request, fs, code);
    std::copy_n(design.filter->xCoefficients.begin(), design.designed.x.size(), design.designed.x.begin());
    std::copy_n(design.filter->yCoefficients.begin(), design.designed.y.size(), design.designed.y.begin());
    const auto hold = [protocolKind](double coefficient) { return heldCoefficient(coefficient, protocolKind); };
    std::ranges::transform(design.designed.x, design.held.x.begin(), hold);
    std::ranges::transform(design.designed.y, design.held.y.begin(), hold);
    return design;
}

}  // namespace torvik::tool
