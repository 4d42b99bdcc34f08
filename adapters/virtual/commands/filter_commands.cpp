#include <algorithm>
#include <cmath>
#include <optional>

#include "amplifier.hpp"
#include "commands/command_table.hpp"

// The digital filters: eight with infinite and eight with finite response, numbered from 1 in each bank.
namespace virtual_adapter {
namespace {

constexpr std::uint8_t kUnknownKind = 0x40;  // bit of a type byte that no kind of filter has
constexpr std::uint8_t kOutputIndex = 0x10;  // bit of an index byte: a coefficient of the outputs
constexpr double kFractionSteps = 16'777'216;
constexpr std::uint32_t kNegative = 0x8000'0000;

std::size_t bankOf(std::uint8_t byte) {
    return (byte & FilterSettings::kFirBit) != 0 ? FilterSettings::kFir : FilterSettings::kIir;
}

// The filter that parameter 0 numbers, in the bank of parameter 1. Null when there is none.
const FilterDefinition* filterOf(const CommandCall& call) {
    const std::size_t number = call.u8(0);
    if (number < 1 || number > FilterSettings::kFilters) return nullptr;
    return &call.amplifier.settings().filters.banks[bankOf(call.u8(1))][number - 1];
}

// Changes the filter that parameter 0 numbers, or with 0 all of a bank, and acknowledges. A change is told the filters
// and the number's place.
template <class Change>
void changeFilters(CommandCall& call, Change change) {
    const std::size_t number = call.u8(0);
    if (number > FilterSettings::kFilters) return call.reply.error(device_status::kWrongIndex);
    call.amplifier.changeSettings(Kept::present, call.now, [&](Settings& settings) {
        for (std::size_t place = 0; place < FilterSettings::kFilters; ++place) {
            if (number == 0 || number == place + 1) change(settings.filters, place);
        }
    });
    call.reply.acknowledge();
}

void filterType(CommandCall& call) {
    const FilterDefinition* const filter = filterOf(call);
    if (filter == nullptr || (call.u8(1) & ~FilterSettings::kFirBit) != 0)
        return call.reply.error(device_status::kWrongIndex);
    call.reply.u8(filter->type);
}

void setFilterType(CommandCall& call) {
    const std::uint8_t type = call.u8(1);
    if ((type & kUnknownKind) != 0) return call.reply.error(device_status::kWrongData);
    changeFilters(call, [=](FilterSettings& filters, std::size_t place) {
        filters.banks[bankOf(type)][place].type = type;
        filters.typeWritten[place] = bankOf(type);
    });
}

std::size_t cutoffOf(const CommandCall& call) {
    return call.u8(1) & ~FilterSettings::kFirBit;
}

void cutoff(CommandCall& call) {
    const FilterDefinition* const filter = filterOf(call);
    if (filter == nullptr || cutoffOf(call) >= filter->cutoffs.size())
        return call.reply.error(device_status::kWrongIndex);
    call.reply.u32(filter->cutoffs[cutoffOf(call)]);
}

// Writers leave the bank out: the cut-off belongs to the type that was written before it.
void setCutoff(CommandCall& call) {
    const std::size_t index = cutoffOf(call);
    if (index >= FilterDefinition{}.cutoffs.size()) return call.reply.error(device_status::kWrongIndex);
    const bool fir = bankOf(call.u8(1)) == FilterSettings::kFir;
    changeFilters(call, [&](FilterSettings& filters, std::size_t place) {
        const std::size_t bank = fir ? FilterSettings::kFir : filters.typeWritten[place];
        filters.banks[bank][place].cutoffs[index] = call.u32(2);
    });
}

// The coefficient that an index byte means. Null when there is none.
template <class Filter>
auto* coefficientAt(Filter& filter, std::uint8_t index) {
    const std::size_t number = index & 0x0FU;
    const bool iir = bankOf(index) == FilterSettings::kIir;
    switch (index & ~FilterSettings::kFirBit & 0xF0U) {
        case 0:
            return &filter.x[number];
        case kOutputIndex:
            return iir && number < filter.y.size() ? &filter.y[number] : nullptr;
        default:
            return static_cast<decltype(&filter.x[number])>(nullptr);
    }
}

// 24 of the 31 bits below the sign stand behind the point.
std::uint32_t signAndMagnitude(double value) {
    constexpr double largest = kNegative - 1U;
    const double magnitude = std::min(std::floor(std::abs(value) * kFractionSteps + 0.5), largest);
    return static_cast<std::uint32_t>(magnitude) | (std::signbit(value) ? kNegative : 0U);
}

// Nothing when the four bytes are no number.
std::optional<double> writtenCoefficient(const CommandCall& call) {
    if (call.amplifier.config().protocolKind == 32) {
        const std::uint32_t word = call.u32(2);
        return std::copysign((word & ~kNegative) / kFractionSteps, (word & kNegative) != 0 ? -1.0 : 1.0);
    }
    const float number = call.f32(2);
    return std::isfinite(number) ? std::optional(static_cast<double>(number)) : std::nullopt;
}

void coefficient(CommandCall& call) {
    const FilterDefinition* const filter = filterOf(call);
    const double* const found = filter == nullptr ? nullptr : coefficientAt(*filter, call.u8(1));
    if (found == nullptr) return call.reply.error(device_status::kWrongIndex);
    call.reply.u32(signAndMagnitude(*found));
}

void setCoefficient(CommandCall& call) {
    FilterDefinition any;
    if (coefficientAt(any, call.u8(1)) == nullptr) return call.reply.error(device_status::kWrongIndex);
    const auto value = writtenCoefficient(call);
    if (!value) return call.reply.error(device_status::kWrongData);
    changeFilters(call, [&](FilterSettings& filters, std::size_t place) {
        *coefficientAt(filters.banks[bankOf(call.u8(1))][place], call.u8(1)) = *value;
    });
}

void filtersOn(CommandCall& call) {
    call.reply.u32(call.amplifier.settings().filters.on);
}

void setFiltersOn(CommandCall& call) {
    constexpr std::uint32_t all = 0xFFFF;
    const std::uint32_t on = call.u32(0);
    if (on > all) return call.reply.error(device_status::kWrongData);
    call.amplifier.changeSettings(Kept::present, call.now,
                                  [=](Settings& settings) { settings.filters.on = static_cast<std::uint16_t>(on); });
    call.reply.acknowledge();
}

// Whatever the two numbers are, all filters go into the start-up set, and nothing else does.
void storeFilters(CommandCall& call) {
    if (call.u8(0) > FilterSettings::kFilters || call.u8(1) > FilterSettings::kFilters)
        return call.reply.error(device_status::kWrongIndex);
    call.amplifier.changeSettings(
        Kept::stored, call.now,
        [present = call.amplifier.settings().filters](Settings& settings) { settings.filters = present; });
    call.reply.acknowledge();
}

constexpr CommandRow kFilterRows[] = {
    {0x4B, 2, true, filterType}, {0x4C, 2, true, setFilterType}, {0x4D, 2, true, cutoff},
    {0x4E, 6, true, setCutoff},  {0x4F, 2, true, coefficient},   {0x50, 6, true, setCoefficient},
    {0x51, 0, true, filtersOn},  {0x52, 4, true, setFiltersOn},  {0x7E, 2, true, storeFilters},
};

}  // namespace

std::span<const CommandRow> filterCommands() {
    return kFilterRows;
}

}  // namespace virtual_adapter
