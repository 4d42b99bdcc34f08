#include "calib/calibration_device.h"

#include "core/ask.h"
#include "core/device_table.h"
#include "core/error_codes.h"
#include "params/device_numbers.h"

namespace torvik {

namespace {

Parameters elementOf(std::uint32_t arrayCode, std::size_t index) {
    return Parameters().u8(static_cast<std::uint8_t>(arrayCode)).u8(static_cast<std::uint8_t>(index));
}

constexpr std::uint8_t codeOf(CalArray array) {
    return static_cast<std::uint8_t>(array);
}

}  // namespace

void stopStream(DeviceRecord& record, std::uint8_t deviceNo) {
    if (acknowledge(deviceNo, Command::stopTransmitting, {}) == 0) record.transmitting = false;
}

void startStream(DeviceRecord& record, std::uint8_t deviceNo) {
    if (acknowledge(deviceNo, Command::startTransmitting, {}) == 0) record.transmitting = true;
}

StreamPause::StreamPause(DeviceRecord& record, std::uint8_t deviceNo)
    : record_(record), deviceNo_(deviceNo), wasTransmitting_(record.transmitting) {
    if (wasTransmitting_) stopStream(record_, deviceNo_);
}

StreamPause::~StreamPause() {
    if (wasTransmitting_) startStream(record_, deviceNo_);
}

std::int32_t writeCalElement(std::uint8_t deviceNo, std::uint32_t arrayCode, std::uint32_t elementIndex, double value) {
    if (deviceNo >= deviceLimit) {
        setError(deviceNo, error::parameterExceedance);
        return -1;
    }
    if (!deviceRecord(deviceNo).active) {
        setError(deviceNo, error::notActive);
        return -1;
    }
    const std::uint32_t array = arrayCode & 0x7F;
    if (array < 1 || array > lastCalArray) {
        setError(deviceNo, error::parameterExceedance);
        return 0;
    }
    return acknowledge(deviceNo, Command::writeCalElement, elementOf(arrayCode, elementIndex).f32(value));
}

std::int32_t writeCalElement(std::uint8_t deviceNo, CalArray array, std::size_t elementIndex, double value) {
    return writeCalElement(deviceNo, std::uint32_t{codeOf(array)}, static_cast<std::uint32_t>(elementIndex), value);
}

std::int32_t writeCalElements(std::uint8_t deviceNo, CalArray array, std::span<const double> values) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (writeCalElement(deviceNo, array, i, values[i]) == -1) return -1;
    }
    return 0;
}

std::int32_t clearCalElements(std::uint8_t deviceNo, CalArray array, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (writeCalElement(deviceNo, array, i, 0.0) == -1) return -1;
    }
    return 0;
}

std::optional<double> readCalElement(std::uint8_t deviceNo, std::uint8_t arrayCode, std::uint8_t elementIndex) {
    const auto answer = ask(deviceNo, Command::readCalElement, elementOf(arrayCode, elementIndex));
    if (!answer) return std::nullopt;
    return answer->f32();
}

bool readCalElements(std::uint8_t deviceNo, CalArray array, std::span<double> values) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto value = readCalElement(deviceNo, codeOf(array), static_cast<std::uint8_t>(i));
        if (!value) return false;
        values[i] = *value;
    }
    return true;
}

std::optional<std::int32_t> readFormatWord(std::uint8_t deviceNo) {
    const auto value = readCalElement(deviceNo, codeOf(CalArray::format), 0);
    if (!value) return std::nullopt;
    const auto word = truncated(*value);
    if (!word) setError(deviceNo, error::wrongAnswer);
    return word;
}

std::optional<std::uint32_t> readSerialNumber(std::uint8_t deviceNo, std::uint32_t slot) {
    if (deviceRecord(deviceNo).firmwareVersion >= firmwareWithSlotSelection &&
        selectCalSlot(deviceNo, static_cast<std::uint8_t>(slot & 0x7F)) != 0)
        return std::nullopt;
    // Bit 7 of the slot goes out as bit 7 of the array code.
    const auto answer = ask(deviceNo, Command::readCalElement, elementOf(slot & 0x80, 0));
    if (!answer) return std::nullopt;
    if (answer->u32() > highestSerialNumber) {
        setError(deviceNo, error::notStored);
        return std::nullopt;
    }
    return answer->u32();
}

std::int32_t writeSerialNumber(std::uint8_t deviceNo, std::uint32_t serial) {
    return acknowledge(deviceNo, Command::writeCalElement, elementOf(codeOf(CalArray::serialNumber), 0).u32(serial));
}

std::int32_t selectCalSlot(std::uint8_t deviceNo, std::uint8_t slot) {
    return acknowledge(deviceNo, Command::selectCalSlot, Parameters().u8(slot));
}

std::int32_t storeCalSlot(std::uint8_t deviceNo, std::uint8_t slot) {
    return acknowledge(deviceNo, Command::storeCalSlot, Parameters().u8(slot));
}

}  // namespace torvik
