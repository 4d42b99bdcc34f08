// The shape of a six-axis calibration: the arrays that a device keeps and the word that tells their dimensions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace torvik {

// Bit 7 of an array code is passed through as it is.
enum class CalArray : std::uint8_t {
    serialNumber = 0,    // 32 bits, 0..99999999
    outScale = 1,        // float
    matrix = 2,          // row after row
    offsets = 3,         // X, Y, Z
    maxima = 4,          // one for each output
    inScale = 5,         // float
    zeroSignals = 6,     // one for each input
    format = 7,          // the format word as a float
    matrixB = 8,         // 36
    firstFactors = 9,    // 6 indices 0..5
    secondFactors = 10,  // 6 indices 0..5
    units = 11,          // 6 unit numbers
    date = 12,           // year, month, day
};

inline constexpr std::uint32_t lastCalArray = 12;

// The firmware from which on a device has what the name says.
inline constexpr std::uint32_t firmwareWithSlotSelection = 0x0003000B;
inline constexpr std::uint32_t firmwareWithFormatWord = 0x0003002F;
inline constexpr std::uint32_t firmwareWithModelName = 0x00030032;

inline constexpr std::uint32_t calSlotLimit = 256;
inline constexpr std::uint32_t highestSerialNumber = 99999999;
inline constexpr std::size_t offsetCount = 3;
inline constexpr std::size_t standardSize = 6;
inline constexpr std::size_t standardElements = standardSize * standardSize;
inline constexpr std::size_t modelNameSize = 16;  // with the terminating zero
inline constexpr std::size_t elementLimit = 256;  // element indices are one byte

// The low byte of a format word.
namespace format_type {
inline constexpr std::uint32_t standard = 0;
inline constexpr std::uint32_t withMatrixB = 1;
inline constexpr std::uint32_t otherDimensions = 2;
}  // namespace format_type

constexpr std::uint32_t formatType(std::int32_t word) {
    return static_cast<std::uint32_t>(word) & 0xFF;
}

struct CalDimensions {
    std::size_t inputs = standardSize;
    std::size_t outputs = standardSize;

    std::size_t elements() const { return inputs * outputs; }
    // Whether every element index fits its byte.
    bool addressable() const { return inputs <= elementLimit && elements() <= elementLimit; }
};

// Of a word that is not negative.
constexpr CalDimensions dimensionsOf(std::int32_t word) {
    if (formatType(word) != format_type::otherDimensions) return {};
    const auto bits = static_cast<std::uint32_t>(word);
    return {.inputs = (bits >> 16) + 1, .outputs = (bits >> 12 & 0xF) + 1};
}

}  // namespace torvik
