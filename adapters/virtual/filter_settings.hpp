#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace virtual_adapter {

// A digital filter as it was loaded. With n its order, coefficient k belongs to the sample n - k sets back.
struct FilterDefinition {
    static constexpr std::size_t kHighestOrder = 15;

    std::uint8_t type = 0;                         // order in bits 0..3, kind in 4..6, FIR in 7
    std::array<std::uint32_t, 2> cutoffs{};        // floats as their bits; kept, not used
    std::array<double, kHighestOrder + 1> x{1.0};  // of the inputs: 0..n
    std::array<double, kHighestOrder> y{};         // of the outputs: 0..n-1, of IIR filters alone
    bool operator==(const FilterDefinition&) const = default;

    [[nodiscard]] std::size_t order() const { return type & 0x0FU; }
};

// Two banks of filters. Loaded with nothing, a filter passes on what it gets.
struct FilterSettings {
    static constexpr std::size_t kFilters = 8;  // in each bank
    static constexpr std::size_t kIir = 0;
    static constexpr std::size_t kFir = 1;
    static constexpr std::uint8_t kFirBit = 0x80;  // of type and index bytes

    FilterSettings() {
        for (FilterDefinition& filter : banks[kFir])
            filter.type = kFirBit;
    }

    std::array<std::array<FilterDefinition, kFilters>, 2> banks{};
    std::uint16_t on = 0;                             // a bit for each filter: IIR from bit 0, FIR from bit 8
    std::array<std::size_t, kFilters> typeWritten{};  // the bank that the last type of this number went to
};

}  // namespace virtual_adapter
