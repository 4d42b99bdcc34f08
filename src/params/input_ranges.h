// Input types and measuring ranges: the list that a channel offers, and which entry of it is in use.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace torvik {

struct InputRange {
    std::uint32_t type = 0;
    double range = 0;
};

struct InputRangeList {
    std::array<InputRange, 10> entries{};
    std::size_t count = 0;

    std::span<const InputRange> offered() const { return std::span(entries).first(count); }
};

// The firmware from which on channels offer more than one entry and can change their type.
inline constexpr std::uint32_t firstFirmwareWithTypes = 0x0003002F;

// Asks for one entry; entry 0 is the present one. Nothing: lastError is set.
std::optional<InputRange> readInputRange(std::uint8_t deviceNo, std::uint32_t channel, std::uint32_t entry);

// Asks for all entries of a channel 1..8. The device ends its list with an error status, which stays in lastError.
// Nothing: not even the first entry came.
std::optional<InputRangeList> readInputRanges(std::uint8_t deviceNo, std::uint32_t channel);

// Of not more than the first four entries the first whose range is at most twice the sensitivity, else the last.
InputRange chooseInputRange(std::span<const InputRange> offered, double sensitivity);

// Sets the type of one channel, or with channel 0 of every active one. Result: 0; -1 with lastError set.
std::int32_t setInputType(std::uint8_t deviceNo, std::uint32_t channel, std::uint8_t type);

}  // namespace torvik
