#include "filters/filter_image.h"

#include <fmt/format.h>

#include <cmath>
#include <optional>

#include "core/command.h"
#include "core/wire.h"

namespace torvik::tool {

namespace {

constexpr std::uint8_t outputBit = 0x10;
constexpr std::uint32_t signBit = 0x80000000;
constexpr double fractionSteps = 0x1p24;

std::uint8_t byteOf(std::size_t number) {
    return static_cast<std::uint8_t>(number);
}

/// Devices report a coefficient as sign and magnitude, whatever format they are written in.
double coefficientOf(std::uint32_t word) {
    const double magnitude = static_cast<double>(word & ~signBit) / fractionSteps;
    return (word & signBit) != 0 ? -magnitude : magnitude;
}

std::uint32_t writtenWord(double coefficient, std::uint32_t protocolKind) {
    if (protocolKind != 32) return narrowToFloat(coefficient);
    const double steps = std::abs(heldCoefficient(coefficient, protocolKind)) * fractionSteps;
    return static_cast<std::uint32_t>(steps) | (std::signbit(coefficient) ? signBit : 0U);
}

std::string coefficientName(std::uint8_t index) {
    return fmt::format("{}[{}]", (index & outputBit) != 0 ? 'y' : 'x', index & 0x0FU);
}

bool isBand(std::uint8_t type) {
    const auto kind = static_cast<FilterKind>(type >> 4U & 3U);
    return kind == FilterKind::bandPass || kind == FilterKind::bandStop;
}

std::uint8_t readType(const Connection& connection, std::uint32_t number) {
    return connection.ask(Command::getFilterType, Parameters().u8(byteOf(number)).u8(0), "reading the filter's type")
        .byte(2);
}

/// `needed`: a refusal is a failure, not the sign that the device keeps nothing there.
std::optional<std::uint32_t> readWord(const Connection& connection, Command command, std::uint32_t number,
                                      std::uint8_t index, bool needed) {
    const Parameters parameters = Parameters().u8(byteOf(number)).u8(index);
    const std::string tried = fmt::format("reading IIR filter {}", number);
    if (needed) return connection.ask(command, parameters, tried).u32();
    const auto answer = connection.askUnlessRefused(command, parameters, tried);
    return answer ? std::optional(answer->u32()) : std::nullopt;
}

bool belongsTo(std::uint8_t type, std::uint8_t coefficientIndex) {
    const unsigned order = type & 0x0FU;
    const unsigned i = coefficientIndex & 0x0FU;
    return (coefficientIndex & outputBit) != 0 ? i < order : i <= order;
}

/// The indices of a filter of this order.
std::vector<std::uint8_t> coefficientIndices(unsigned order) {
    std::vector<std::uint8_t> indices;
    for (unsigned i = 0; i <= order; ++i)
        indices.push_back(inputIndex(i));
    for (unsigned i = 0; i < order; ++i)
        indices.push_back(outputIndex(i));
    return indices;
}

}  // namespace

std::uint8_t inputIndex(std::size_t i, std::uint8_t bankBit) {
    return static_cast<std::uint8_t>(i | bankBit);
}

std::uint8_t outputIndex(std::size_t i) {
    return static_cast<std::uint8_t>(i | outputBit);
}

double readCoefficient(const Connection& connection, std::uint32_t number, std::uint8_t index) {
    const std::string tried = fmt::format("reading {} of filter {}", coefficientName(index), number);
    const Parameters parameters = Parameters().u8(byteOf(number)).u8(index);
    return coefficientOf(connection.ask(Command::getFilterCoefficient, parameters, tried).u32());
}

FilterImage imageOf(const FilterDesign& design) {
    const FilterRequest& request = design.request;
    FilterImage image;
    image.type = static_cast<std::uint8_t>(static_cast<unsigned>(request.kind) << 4U | filterOrder);
    image.cutoffs[0] = narrowToFloat(request.f1 / design.fs);
    if (request.isBand()) image.cutoffs[1] = narrowToFloat(request.f2 / design.fs);
    for (std::size_t i = 0; i < design.held.x.size(); ++i)
        image.coefficients[inputIndex(i)] = design.held.x[i];
    for (std::size_t i = 0; i < design.held.y.size(); ++i)
        image.coefficients[outputIndex(i)] = design.held.y[i];
    return image;
}

FilterImage readFormerImage(const Connection& connection, std::uint32_t number, const FilterImage& written) {
    FilterImage image;
    image.type = readType(connection, number);
    for (std::uint8_t index = 0; index < 2; ++index) {
        const bool own = index == 0 || isBand(image.type);
        if (!own && !written.cutoffs.contains(index)) continue;
        if (const auto word = readWord(connection, Command::getFilterCutoff, number, index, own))
            image.cutoffs[index] = *word;
    }
    std::map<std::uint8_t, double> wanted = written.coefficients;
    for (const std::uint8_t index : coefficientIndices(image.type & 0x0FU))
        wanted.try_emplace(index);
    for (const auto& [index, unused] : wanted) {
        const bool own = belongsTo(image.type, index);
        if (const auto word = readWord(connection, Command::getFilterCoefficient, number, index, own))
            image.coefficients[index] = coefficientOf(*word);
    }
    return image;
}

void writeImage(const Connection& connection, std::uint32_t number, const FilterImage& image,
                std::uint32_t protocolKind) {
    const std::string tried = fmt::format("writing IIR filter {}", number);
    const auto begin = [number](std::uint8_t second) { return Parameters().u8(byteOf(number)).u8(second); };
    connection.ask(Command::setFilterType, begin(image.type), tried);
    for (const auto& [index, bits] : image.cutoffs)
        connection.ask(Command::setFilterCutoff, begin(index).u32(bits), tried);
    for (const auto& [index, coefficient] : image.coefficients)
        connection.ask(Command::setFilterCoefficient, begin(index).u32(writtenWord(coefficient, protocolKind)), tried);
}

std::vector<std::string> differencesFrom(const Connection& connection, std::uint32_t number, const FilterImage& image) {
    std::vector<std::string> differences;
    const std::uint8_t type = readType(connection, number);
    if (type != image.type)
        differences.push_back(fmt::format("type: 0x{:02X} written, 0x{:02X} in the device", image.type, type));
    for (const auto& [index, written] : image.coefficients) {
        const double held = readCoefficient(connection, number, index);
        if (std::abs(held - written) <= coefficientResolution) continue;
        differences.push_back(fmt::format("{}: {} written, {} in the device", coefficientName(index), written, held));
    }
    return differences;
}

}  // namespace torvik::tool
