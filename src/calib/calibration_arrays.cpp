#include "calib/calibration_arrays.h"

#include "calib/calibration_device.h"
#include "core/device_table.h"
#include "core/error_codes.h"

namespace torvik {

namespace {

constexpr std::size_t serialDigits = 8;

bool hasFormatWord(std::uint8_t deviceNo) {
    return deviceRecord(deviceNo).firmwareVersion >= firmwareWithFormatWord;
}

bool written(std::uint8_t deviceNo, CalArray array, double value) {
    return writeCalElements(deviceNo, array, {&value, 1}) == 0;
}

// An absent array is written as zeros.
bool written(std::uint8_t deviceNo, CalArray array, const double* values, std::size_t count) {
    if (values == nullptr) return clearCalElements(deviceNo, array, count) == 0;
    return writeCalElements(deviceNo, array, {values, count}) == 0;
}

bool writeMainArrays(std::uint8_t deviceNo, const CalibrationArrays& arrays, const CalDimensions& size) {
    return written(deviceNo, CalArray::outScale, arrays.outScale) &&
           written(deviceNo, CalArray::inScale, arrays.inScale) &&
           written(deviceNo, CalArray::matrix, arrays.matrix, size.elements()) &&
           written(deviceNo, CalArray::offsets, arrays.offsets, offsetCount) &&
           written(deviceNo, CalArray::maxima, arrays.maxima, size.outputs);
}

// Nothing is read for a null pointer.
bool fill(std::uint8_t deviceNo, CalArray array, double* values, std::size_t count) {
    return values == nullptr || readCalElements(deviceNo, array, {values, count});
}

// Selects the slot, in passing where the serial number is wanted.
bool openSlot(std::uint8_t deviceNo, std::uint32_t slot, char* serialText) {
    if (serialText != nullptr) return readSerialText(deviceNo, slot, serialText) == 0;
    if (deviceRecord(deviceNo).firmwareVersion < firmwareWithSlotSelection) return true;
    return selectCalSlot(deviceNo, static_cast<std::uint8_t>(slot & 0x7F)) == 0;
}

bool readMainArrays(std::uint8_t deviceNo, const CalibrationBuffers& buffers, const CalDimensions& size) {
    return fill(deviceNo, CalArray::matrix, buffers.matrix, size.elements()) &&
           fill(deviceNo, CalArray::offsets, buffers.offsets, offsetCount) &&
           fill(deviceNo, CalArray::maxima, buffers.maxima, size.outputs);
}

// The word that tells a calibration's dimensions. Nothing: lastError is set.
std::optional<std::int32_t> readUsableFormatWord(std::uint8_t deviceNo) {
    if (!hasFormatWord(deviceNo)) return 0;
    const auto word = readFormatWord(deviceNo);
    if (!word || dimensionsOf(*word).addressable()) return word;
    setError(deviceNo, error::wrongAnswer);
    return std::nullopt;
}

}  // namespace

std::int32_t writeStandardArrays(std::uint8_t deviceNo, const CalibrationArrays& arrays) {
    const StreamPause pause(deviceRecord(deviceNo), deviceNo);
    if (!writeMainArrays(deviceNo, arrays, {})) return -1;
    return writeSerialNumber(deviceNo, arrays.serial);
}

std::int32_t writeArrays(std::uint8_t deviceNo, std::uint8_t slot, const CalibrationArrays& arrays,
                         std::int32_t formatWord) {
    const bool extended = hasFormatWord(deviceNo);
    const CalDimensions size = extended ? dimensionsOf(formatWord) : CalDimensions{};
    {
        const StreamPause pause(deviceRecord(deviceNo), deviceNo);
        if (extended && !written(deviceNo, CalArray::format, formatWord)) return -1;
        if (!writeMainArrays(deviceNo, arrays, size)) return -1;
        if (extended && !written(deviceNo, CalArray::zeroSignals, arrays.zeroSignals, size.inputs)) return -1;
        if (writeSerialNumber(deviceNo, arrays.serial) != 0) return -1;
    }
    return storeCalSlot(deviceNo, slot);
}

std::int32_t readStandardArrays(std::uint8_t deviceNo, std::uint32_t slot, const CalibrationBuffers& buffers) {
    const StreamPause pause(deviceRecord(deviceNo), deviceNo);
    const bool complete =
        openSlot(deviceNo, slot, buffers.serialText) && fill(deviceNo, CalArray::outScale, buffers.outScale, 1) &&
        fill(deviceNo, CalArray::inScale, buffers.inScale, 1) && readMainArrays(deviceNo, buffers, {});
    return complete ? 0 : -1;
}

std::int32_t readArrays(std::uint8_t deviceNo, std::uint32_t slot, const CalibrationBuffers& buffers) {
    const StreamPause pause(deviceRecord(deviceNo), deviceNo);
    if (!openSlot(deviceNo, slot, buffers.serialText)) return -1;
    const auto word = readUsableFormatWord(deviceNo);
    if (!word) return -1;
    if (buffers.formatWord != nullptr) *buffers.formatWord = static_cast<std::uint32_t>(*word);
    const CalDimensions size = dimensionsOf(*word);
    // Kept: this one is always read, wanted or not.
    double inScale = 0;
    if (!fill(deviceNo, CalArray::inScale, &inScale, 1)) return -1;
    if (!fill(deviceNo, CalArray::outScale, buffers.outScale, 1)) return -1;
    if (buffers.inScale != nullptr) *buffers.inScale = inScale;
    if (!readMainArrays(deviceNo, buffers, size)) return -1;
    if (hasFormatWord(deviceNo) && !fill(deviceNo, CalArray::zeroSignals, buffers.zeroSignals, size.inputs)) return -1;
    return 0;
}

std::int32_t readSerialText(std::uint8_t deviceNo, std::uint32_t slot, char* text) {
    if (slot >= calSlotLimit) {
        setError(deviceNo, error::parameterExceedance);
        return -1;
    }
    const auto serial = readSerialNumber(deviceNo, slot);
    if (!serial) return -1;
    const std::span<char> digits(text, serialDigits);
    std::uint32_t rest = *serial;
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, rest /= 10)
        *digit = static_cast<char>('0' + rest % 10);
    text[serialDigits] = '\0';
    return 0;
}

}  // namespace torvik
