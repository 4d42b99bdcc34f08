#include "filters/device_filter.h"

#include <fmt/format.h>

#include <cmath>
#include <iterator>

#include "TORVIK.h"

namespace torvik::tool {

namespace {

constexpr double notDelivered = std::numeric_limits<double>::quiet_NaN();

std::string describeFilter(FilterBank bank, std::uint32_t number) {
    return fmt::format("{} filter {}", bank == FilterBank::fir ? "FIR" : "IIR", number);
}

std::string coefficientText(double coefficient) {
    return std::isnan(coefficient) ? "negative (not delivered)" : fmt::format("{}", coefficient);
}

template <std::size_t Count>
void compareCoefficients(char name, const std::array<double, Count>& loaded, const std::array<double, Count>& told,
                         std::vector<std::string>& differences) {
    // Devices tell coefficients with 24 fraction bits.
    constexpr double resolution = 0x1p-24;
    for (std::size_t i = 0; i < Count; ++i) {
        const bool same = std::isnan(told[i]) ? loaded[i] < 0 : std::abs(told[i] - loaded[i]) <= resolution;
        if (same) continue;
        differences.push_back(
            fmt::format("{}[{}]: {} loaded, {} in the device", name, i, loaded[i], coefficientText(told[i])));
    }
}

}  // namespace

double samplingFrequencyOf(const Connection& connection) {
    double fs = 0;
    if (TORVIKgetFrequency(connection.deviceNo(), &fs) != 0)
        connection.fail(ExitCode::deviceFailed, "reading the device's sampling frequency");
    return fs;
}

std::uint32_t filtersOn(const Connection& connection) {
    std::uint32_t mask = 0;
    if (TORVIKgetDfilterOnOff(connection.deviceNo(), &mask) != 0)
        connection.fail(ExitCode::deviceFailed, "reading which filters are on");
    return mask;
}

bool isFilterOn(std::uint32_t mask, FilterBank bank, std::uint32_t number) {
    return (mask >> (number - 1 + (bank == FilterBank::fir ? filtersOfBank : 0)) & 1U) != 0;
}

void switchFilter(const Connection& connection, FilterBank bank, std::uint32_t number, bool on) {
    // The mask that the library changes must be the device's own: otherwise all other filters go off.
    filtersOn(connection);
    if (TORVIKsetDfilterOnOff(connection.deviceNo(), number, static_cast<std::int32_t>(bank), on ? 1 : 0) != 0)
        connection.fail(ExitCode::deviceFailed,
                        fmt::format("switching {} {}", describeFilter(bank, number), on ? "on" : "off"));
    if (isFilterOn(filtersOn(connection), bank, number) == on) return;
    throw Failure{.exitCode = ExitCode::differs,
                  .tried = fmt::format("switching {} {}", describeFilter(bank, number), on ? "on" : "off"),
                  .reason = "the device took it, but tells the filter unchanged",
                  .advice = "check in the device's manual whether its model has this filter"};
}

DeviceFilter readFilter(const Connection& connection, std::uint32_t mask, FilterBank bank, std::uint32_t number) {
    DeviceFilter filter;
    filter.number = number;
    filter.bank = bank;
    filter.on = isFilterOn(mask, bank, number);
    if (TORVIKgetDfilterInfo(connection.deviceNo(), number, static_cast<std::int32_t>(bank), &filter.type,
                             filter.cutoffs.data()) != 0)
        connection.fail(ExitCode::deviceFailed, fmt::format("reading {}", describeFilter(bank, number)));
    return filter;
}

void readCoefficients(const Connection& connection, DeviceFilter& filter) {
    filter.x.fill(notDelivered);
    filter.y.fill(notDelivered);
    if (TORVIKgetDfilterCoeff(connection.deviceNo(), static_cast<std::int32_t>(filter.number),
                              static_cast<std::uint32_t>(filter.bank), filter.x.data(), filter.y.data()) != 0)
        connection.fail(ExitCode::deviceFailed,
                        fmt::format("reading the coefficients of {}", describeFilter(filter.bank, filter.number)));
}

std::string filterLine(const DeviceFilter& filter) {
    std::string line = fmt::format("{}: {:<4}", describeFilter(filter.bank, filter.number), filter.on ? "on" : "off");
    if (filter.order() == 0) return line + "none (order 0)\n";
    const bool isBand = filter.kind() == FilterKind::bandPass || filter.kind() == FilterKind::bandStop;
    fmt::format_to(std::back_inserter(line), "{}, order {}, {:.7g} Hz", kindText(filter.kind()), filter.order(),
                   filter.cutoffs[0]);
    if (isBand) fmt::format_to(std::back_inserter(line), " to {:.7g} Hz", filter.cutoffs[1]);
    return line + "\n";
}

std::string coefficientLines(const DeviceFilter& filter) {
    const bool fir = filter.bank == FilterBank::fir;
    std::string lines;
    // Of a FIR filter the library delivers four.
    for (std::size_t i = 0; i < filter.x.size() - (fir ? 1 : 0); ++i)
        fmt::format_to(std::back_inserter(lines), "  x[{}]   {}\n", i, coefficientText(filter.x[i]));
    for (std::size_t i = 0; i < filter.y.size() && !fir; ++i)
        fmt::format_to(std::back_inserter(lines), "  y[{}]   {}\n", i, coefficientText(filter.y[i]));
    return lines;
}

std::vector<std::string> filterDifferences(const FilterDesign& design, const DeviceFilter& filter) {
    std::vector<std::string> differences;
    if (filter.order() != filterOrder || filter.kind() != design.request.kind)
        differences.push_back(fmt::format("type: {} of order {} loaded, {} of order {} in the device",
                                          kindText(design.request.kind), filterOrder, kindText(filter.kind()),
                                          filter.order()));
    compareCoefficients('x', design.held.x, filter.x, differences);
    compareCoefficients('y', design.held.y, filter.y, differences);
    return differences;
}

}  // namespace torvik::tool
