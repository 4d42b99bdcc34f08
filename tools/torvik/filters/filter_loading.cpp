#include "filters/filter_loading.h"

#include <fmt/format.h>

#include <optional>

#include "TORVIK.h"

namespace torvik::tool {

namespace {

constexpr std::uint32_t otherKind(std::uint32_t protocolKind) {
    return protocolKind == 32 ? 16 : 32;
}

/// The library's checks of the request, without anything being sent to the filter.
void checkByLibrary(const Connection& connection, const FilterRequest& request, std::uint32_t number) {
    constexpr std::uint32_t designOnly = 9;
    if (TORVIKcalcSetDfilterParams(connection.deviceNo(), designOnly, 0, static_cast<std::uint32_t>(request.kind),
                                   static_cast<std::uint32_t>(request.characteristic), filterOrder, request.f1,
                                   request.f2) != 0)
        connection.fail(ExitCode::deviceFailed, fmt::format("loading IIR filter {}", number));
}

/// Writes the former filter back, in the number format of either protocol kind: the one that was given may be wrong.
/// Returns the kind with which the device took it; `nullopt`: with neither.
std::optional<std::uint32_t> restore(const Connection& connection, std::uint32_t number, const FilterImage& former,
                                     std::uint32_t protocolKind) {
    for (const std::uint32_t kind : {protocolKind, otherKind(protocolKind)}) {
        try {
            writeImage(connection, number, former, kind);
            if (differencesFrom(connection, number, former).empty()) return kind;
        } catch (const Failure&) {  // the other format may be the device's
        }
    }
    return std::nullopt;
}

std::string stateText(bool restored) {
    return restored ? "the former filter has been written back and is off; nothing has been stored"
                    : "the former filter could not be written back; the filter is off, and nothing has been stored";
}

std::string adviceText(std::optional<std::uint32_t> restoredBy, std::uint32_t protocolKind) {
    const std::uint32_t other = otherKind(protocolKind);
    std::string advice = fmt::format("is '--protocol {}' right for this device? ", protocolKind);
    advice += restoredBy == other ? fmt::format("it takes the numbers of protocol kind {}", other)
                                  : fmt::format("if not, try '--protocol {}'", other);
    if (!restoredBy) advice += "; 'torvik settings load 0' brings back the stored filters, and all other settings";
    return advice;
}

}  // namespace

FilterLoading::FilterLoading(const Connection& connection, const FilterDesign& design, std::uint32_t number)
    : connection_(connection), number_(number), protocolKind_(design.protocolKind), image_(imageOf(design)) {
    checkByLibrary(connection, design.request, number);
    former_ = readFormerImage(connection, number, image_);
}

void FilterLoading::write() const {
    Failure failure{.exitCode = ExitCode::differs, .tried = fmt::format("loading IIR filter {}", number_)};
    try {
        writeImage(connection_, number_, image_, protocolKind_);
        const auto differences = differencesFrom(connection_, number_, image_);
        if (differences.empty()) return;
        for (const std::string& difference : differences)
            printMessage(fmt::format("torvik: IIR filter {}: {}\n", number_, difference));
        failure.reason = "the device holds another filter than was written; ";
    } catch (const Failure& thrown) {
        failure = thrown;
    }
    const auto restoredBy = restore(connection_, number_, former_, protocolKind_);
    failure.reason += stateText(restoredBy.has_value());
    failure.advice = adviceText(restoredBy, protocolKind_);
    throw failure;
}

}  // namespace torvik::tool
