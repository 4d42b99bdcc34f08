// The procedures that write and read whole calibrations. Each pauses the value stream, and the first element that fails
// ends it. Results: 0; -1 with lastError set.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "calib/calibration_format.h"
#include "calib/calibration_limits.h"

namespace torvik {

// What a calibration consists of; `zeroSignals` may be absent, an absent `offsets` is written as zeros.
struct CalibrationArrays {
    std::uint32_t serial = 0;
    double outScale = 0;
    double inScale = 0;
    const double* matrix = nullptr;
    const double* offsets = nullptr;
    const double* maxima = nullptr;
    const double* zeroSignals = nullptr;
};

// A standard calibration, without storing it.
std::int32_t writeStandardArrays(std::uint8_t deviceNo, const CalibrationArrays& arrays);

// A calibration of the dimensions of its format word, stored into the slot.
std::int32_t writeArrays(std::uint8_t deviceNo, std::uint8_t slot, const CalibrationArrays& arrays,
                         std::int32_t formatWord);

// Where a calibration is read to; null pointers are skipped.
struct CalibrationBuffers {
    char* serialText = nullptr;  // 9 bytes
    double* outScale = nullptr;
    double* inScale = nullptr;
    double* matrix = nullptr;
    double* offsets = nullptr;
    double* maxima = nullptr;
    double* zeroSignals = nullptr;
    std::uint32_t* formatWord = nullptr;
};

std::int32_t readStandardArrays(std::uint8_t deviceNo, std::uint32_t slot, const CalibrationBuffers& buffers);

// A calibration of whatever dimensions it has.
std::int32_t readArrays(std::uint8_t deviceNo, std::uint32_t slot, const CalibrationBuffers& buffers);

// Reads the serial number as eight digits and a zero. A slot above 255 is refused with 0x30000100.
std::int32_t readSerialText(std::uint8_t deviceNo, std::uint32_t slot, char* text);

// The extension of a calibration; null pointers are skipped. The factors are written only when both lists are given.
struct ExtensionArrays {
    const double* matrixB = nullptr;
    const std::uint32_t* firstFactors = nullptr;
    const std::uint32_t* secondFactors = nullptr;
    const char* model = nullptr;
};
std::int32_t writeExtension(std::uint8_t deviceNo, std::int32_t formatWord, const ExtensionArrays& arrays);

struct ExtensionBuffers {
    double* matrixB = nullptr;
    std::uint32_t* firstFactors = nullptr;
    std::uint32_t* secondFactors = nullptr;
    char* model = nullptr;  // 16 bytes
};
std::int32_t readExtension(std::uint8_t deviceNo, std::uint32_t& formatWord, const ExtensionBuffers& buffers);

// Unit numbers, date, and what the info pair asks for; null pointers are skipped.
std::int32_t writeInfo(std::uint8_t deviceNo, const std::int32_t* units, const std::int32_t* date, const double* info);

}  // namespace torvik
