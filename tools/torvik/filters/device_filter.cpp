#include "filters/device_filter.h"

#include <fmt/format.h>

#include <iterator>

#include "TORVIK.h"
#include "filters/filter_image.h"

namespace torvik::tool {

namespace {

std::string describeFilter(FilterBank bank, std::uint32_t number) {
    return fmt::format("{} filter {}", bank == FilterBank::fir ? "FIR" : "IIR", number);
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
    const auto bankBit = static_cast<std::uint8_t>(filter.bank);
    for (std::uint32_t i = 0; i <= filter.order(); ++i)
        filter.x.push_back(readCoefficient(connection, filter.number, inputIndex(i, bankBit)));
    if (filter.bank == FilterBank::fir) return;
    for (std::uint32_t i = 0; i < filter.order(); ++i)
        filter.y.push_back(readCoefficient(connection, filter.number, outputIndex(i)));
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
    std::string lines;
    for (std::size_t i = 0; i < filter.x.size(); ++i)
        fmt::format_to(std::back_inserter(lines), "  x[{}]   {}\n", i, filter.x[i]);
    for (std::size_t i = 0; i < filter.y.size(); ++i)
        fmt::format_to(std::back_inserter(lines), "  y[{}]   {}\n", i, filter.y[i]);
    return lines;
}

}  // namespace torvik::tool
