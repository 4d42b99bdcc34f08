#include <algorithm>
#include <array>
#include <cstring>

#include "calib/calibration_arrays.h"
#include "calib/calibration_device.h"
#include "core/ask.h"
#include "core/device_table.h"
#include "core/error_codes.h"
#include "params/device_numbers.h"

namespace torvik {

namespace {

constexpr std::size_t modelParts = 4;
constexpr std::size_t partSize = modelNameSize / modelParts;

using ModelName = std::array<char, modelNameSize>;

bool writeFactor(std::uint8_t deviceNo, CalArray array, std::size_t index, std::uint32_t factor) {
    if (factor <= highestFactor) return writeCalElement(deviceNo, array, index, factor) == 0;
    setError(deviceNo, error::parameterExceedance);
    return false;
}

bool writeFactors(std::uint8_t deviceNo, const std::uint32_t* first, const std::uint32_t* second) {
    for (std::size_t i = 0; i < standardSize; ++i) {
        if (!writeFactor(deviceNo, CalArray::firstFactors, i, first[i])) return false;
        if (!writeFactor(deviceNo, CalArray::secondFactors, i, second[i])) return false;
    }
    return true;
}

// Kept: all parts are sent, and only the last one's result counts.
std::int32_t writeModelName(std::uint8_t deviceNo, const char* model) {
    ModelName name{};
    std::memcpy(name.data(), model, strnlen(model, modelNameSize - 1));
    std::int32_t result = 0;
    for (std::size_t part = 0; part < modelParts; ++part) {
        Parameters parameters = Parameters().u8(static_cast<std::uint8_t>(part + 1));
        for (std::size_t i = 0; i < partSize; ++i)
            parameters.u8(static_cast<std::uint8_t>(name[part * partSize + i]));
        result = acknowledge(deviceNo, Command::writeModelName, parameters);
    }
    return result;
}

std::optional<std::uint32_t> readFactor(std::uint8_t deviceNo, CalArray array, std::size_t index) {
    const auto value = readCalElement(deviceNo, static_cast<std::uint8_t>(array), static_cast<std::uint8_t>(index));
    if (!value) return std::nullopt;
    const auto number = truncated(*value);
    if (number && *number >= 0) return static_cast<std::uint32_t>(*number);
    setError(deviceNo, error::wrongAnswer);
    return std::nullopt;
}

bool readFactors(std::uint8_t deviceNo, std::uint32_t* first, std::uint32_t* second) {
    for (std::size_t i = 0; i < standardSize; ++i) {
        const auto firstFactor = readFactor(deviceNo, CalArray::firstFactors, i);
        if (!firstFactor) return false;
        first[i] = *firstFactor;
        const auto secondFactor = readFactor(deviceNo, CalArray::secondFactors, i);
        if (!secondFactor) return false;
        second[i] = *secondFactor;
    }
    return true;
}

// Nothing: lastError is set.
std::optional<ModelName> readModelName(std::uint8_t deviceNo) {
    if (sendCommand(deviceNo, Command::readModelName, {}) != 0) return std::nullopt;
    const KeptTransaction kept(deviceRecord(deviceNo));
    ModelName name{};
    for (std::size_t answers = 0; answers < modelParts; ++answers) {
        // Kept: the status of these answers is not looked at.
        const auto answer = takeAnswer(deviceNo);
        if (!answer) return std::nullopt;
        const std::size_t part = answer->byte(2);
        if (part < 1 || part > modelParts) {
            setError(deviceNo, error::wrongAnswer);
            return std::nullopt;
        }
        std::ranges::copy(answer->data().subspan<1, partSize>(),
                          name.begin() + static_cast<std::ptrdiff_t>((part - 1) * partSize));
    }
    name.back() = '\0';
    return name;
}

// What the info pair asks for.
struct InfoRequest {
    std::optional<double> formatWord;
    std::int32_t storeAs = 0;  // slot number + 1; 0: no storing
};

// Nothing: the slot is no number.
std::optional<InfoRequest> requestOf(const double* info) {
    InfoRequest request;
    if (info == nullptr) return request;
    if (!isNan(info[1]) && info[1] > 0.0) request.formatWord = info[1];
    if (!isNan(info[0]) && info[0] < 0.0) {
        const auto slot = truncated(-info[0]);
        if (!slot) return std::nullopt;
        request.storeAs = *slot;
    }
    return request;
}

bool writeNumbers(std::uint8_t deviceNo, CalArray array, std::span<const std::int32_t> numbers) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (writeCalElement(deviceNo, array, i, numbers[i]) == -1) return false;
    }
    return true;
}

}  // namespace

std::int32_t writeExtension(std::uint8_t deviceNo, std::int32_t formatWord, const ExtensionArrays& arrays) {
    DeviceRecord& record = deviceRecord(deviceNo);
    const StreamPause pause(record, deviceNo);
    if (writeCalElement(deviceNo, CalArray::format, 0, formatWord) == -1) return -1;
    if (arrays.matrixB != nullptr &&
        writeCalElements(deviceNo, CalArray::matrixB, {arrays.matrixB, standardElements}) == -1)
        return -1;
    if (arrays.firstFactors != nullptr && arrays.secondFactors != nullptr &&
        !writeFactors(deviceNo, arrays.firstFactors, arrays.secondFactors))
        return -1;
    if (arrays.model == nullptr || record.firmwareVersion < firmwareWithModelName) return 0;
    return writeModelName(deviceNo, arrays.model);
}

std::int32_t readExtension(std::uint8_t deviceNo, std::uint32_t& formatWord, const ExtensionBuffers& buffers) {
    DeviceRecord& record = deviceRecord(deviceNo);
    const StreamPause pause(record, deviceNo);
    const auto word = readFormatWord(deviceNo);
    if (!word) return -1;
    formatWord = static_cast<std::uint32_t>(*word);
    if (formatType(*word) == format_type::withMatrixB && buffers.matrixB != nullptr &&
        buffers.firstFactors != nullptr && buffers.secondFactors != nullptr) {
        if (!readCalElements(deviceNo, CalArray::matrixB, {buffers.matrixB, standardElements})) return -1;
        if (!readFactors(deviceNo, buffers.firstFactors, buffers.secondFactors)) return -1;
    }
    if (buffers.model == nullptr || record.firmwareVersion < firmwareWithModelName) return 0;
    const auto name = readModelName(deviceNo);
    if (!name) return -1;
    const auto end = std::ranges::find(*name, '\0');
    *std::copy(name->begin(), end, buffers.model) = '\0';
    return 0;
}

std::int32_t writeInfo(std::uint8_t deviceNo, const std::int32_t* units, const std::int32_t* date, const double* info) {
    const auto request = requestOf(info);
    if (!request) {
        setError(deviceNo, error::parameterExceedance);
        return -1;
    }
    DeviceRecord& record = deviceRecord(deviceNo);
    bool complete = !request->formatWord || writeCalElement(deviceNo, CalArray::format, 0, *request->formatWord) != -1;
    const bool wasTransmitting = record.transmitting;
    if (complete && units != nullptr) {
        if (wasTransmitting) stopStream(record, deviceNo);
        complete = writeNumbers(deviceNo, CalArray::units, {units, standardSize});
    }
    if (complete && date != nullptr) complete = writeNumbers(deviceNo, CalArray::date, {date, 3});
    std::int32_t result = complete ? 0 : -1;
    if (complete && request->storeAs != 0)
        result = storeCalSlot(deviceNo, static_cast<std::uint8_t>(request->storeAs - 1));
    // Kept: the stream is started again also where it was not stopped.
    if (wasTransmitting) startStream(record, deviceNo);
    return result;
}

}  // namespace torvik
