// What holds of a calibration file's content whatever the file: for the fuzzer, and for the tests of damaged files.
#pragma once

#include <algorithm>
#include <cmath>

#include "calib/calibration_file.h"
#include "core/error_codes.h"

namespace torvik {

// The rule that is broken, or null. `result` is what the reading gave; `missing`: what it gives for files that are
// missing.
inline const char* brokenRule(std::uint32_t result, const CalibrationFile& calibration, std::uint32_t missing) {
    if (result != 0) {
        const bool known = result == error::fileContent || result == missing;
        return known ? nullptr : "the result is 0, the content's code or that of a missing file";
    }
    const auto isWithin = [](auto value, auto lowest, auto highest) { return value >= lowest && value <= highest; };
    const auto isFinite = [](double value) { return std::isfinite(value); };
    const CalDimensions& size = calibration.size;
    if (!(calibration.outScale > 0) || !(calibration.inScale > 0)) return "scale factors are positive";
    if (!isWithin(size.inputs, 2U, 6U) || !isWithin(size.outputs, 1U, 6U)) return "sizes are 2..6 and 1..6";
    for (std::size_t i = 0; i < size.outputs; ++i) {
        if (!(calibration.maxima[i] > 0)) return "maxima are positive";
    }
    if (!std::ranges::all_of(calibration.maxima, isFinite)) return "maxima are finite";
    if (!std::ranges::all_of(calibration.matrix, isFinite)) return "the matrix is finite";
    if (!std::ranges::all_of(calibration.zeroSignals, isFinite)) return "zero signals are finite";
    if (!std::ranges::all_of(calibration.offsets, [](double offset) { return offset >= 0 && std::isfinite(offset); }))
        return "offsets are not negative";
    for (std::size_t i = size.elements(); i < calibration.matrix.size(); ++i) {
        if (calibration.matrix[i] != 0) return "there is nothing behind the matrix";
    }
    if (calibration.serialText.back() != '\0') return "the serial number's text has an end";
    if (calibration.date) {
        const CalibrationDate& date = *calibration.date;
        if (date.year < 1 || !isWithin(date.month, 1, 12) || !isWithin(date.day, 1, 31)) return "the date is a date";
    }
    if (calibration.matrixB && !std::ranges::all_of(calibration.matrixB->elements, isFinite))
        return "matrix B is finite";
    if (calibration.formatWord() < 0) return "the format word is not negative";
    if (calibration.version < 3 && (size.inputs != 6 || size.outputs != 6)) return "old files are for 6 x 6 sensors";
    if (calibration.version < 4 && (calibration.model || calibration.matrixB)) return "old files have no extension";
    for (std::size_t i = size.outputs; i < calibration.units.outputs.size(); ++i) {
        if (calibration.units.outputs[i]) return "units are those of outputs";
    }
    return nullptr;
}

}  // namespace torvik
