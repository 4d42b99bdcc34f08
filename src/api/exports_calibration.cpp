#include <cstdint>

#include "api/TORVIK.h"
#include "api/device_call.h"
#include "calib/calibration_arrays.h"
#include "calib/calibration_device.h"
#include "calib/calibration_from_file.h"
#include "core/call_control.h"
#include "params/convert_from_device.h"

using namespace torvik;

namespace {

constexpr std::uint32_t arrayFlag = 0x80;

bool supports(const DeviceCall& call, std::uint32_t firmware) {
    if (call.record().firmwareVersion >= firmware) return true;
    call.fail(error::firmwareUnsupported);
    return false;
}

// What a calibration file is read for.
struct SetUp {
    std::uint32_t count = 0;
    bool hasFormatWord = false;
};

SetUp setUpOf(const DeviceRecord& record) {
    return {record.setUpCount, record.firmwareVersion >= firmwareWithFormatWord};
}

bool isStill(const SetUp& setUp, const DeviceRecord& record) {
    return record.active && record.setUpCount == setUp.count;
}

// `code`: of the reading. Result: -1 with lastError set when there is no memory for it.
std::int32_t readFiles(std::uint8_t deviceNo, const SetUp& setUp, const char* path, CalibrationFile& calibration,
                       std::uint32_t& code) {
    const DeviceRecord& record = deviceRecord(deviceNo);
    const auto mustEnd = [&] { return libraryGate.closing() || callMustEnd(record) || !isStill(setUp, record); };
    const auto read = [&](const DeviceCall&) {
        code = readCalibrationFile(path, setUp.hasFormatWord, calibration, filesOnDisk(mustEnd));
        return success;
    };
    return runBody(DeviceCall(deviceNo), failure, read);
}

}  // namespace

int32_t TORVIKreadFTSensorCalValue(int32_t deviceNo, uint32_t arrayCode, uint8_t elementIndex, double* value) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        const std::uint32_t array = arrayCode & ~arrayFlag;
        if (!call.activeAnd(array >= 1 && array <= lastCalArray && value != nullptr)) return failure;
        const auto element = readCalElement(call.deviceNo(), static_cast<std::uint8_t>(arrayCode), elementIndex);
        if (!element) return failure;
        *value = *element;
        return success;
    });
}

int32_t TORVIKsetFTarrayToRead(int32_t deviceNo, uint8_t slot) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(true)) return failure;
        return selectCalSlot(call.deviceNo(), slot);
    });
}

int32_t TORVIKreadFTSensorSerNo(int32_t deviceNo, uint32_t calSlot, char* text) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(text != nullptr)) return failure;
        return readSerialText(call.deviceNo(), calSlot, text);
    });
}

int32_t TORVIKreadFTSensorCalArray(int32_t deviceNo, uint32_t calSlot, char* serialText, double* outScale,
                                   double* inScale, double* matrix, double* offsets, double* maxima) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(true)) return failure;
        return readStandardArrays(call.deviceNo(), calSlot,
                                  {.serialText = serialText,
                                   .outScale = outScale,
                                   .inScale = inScale,
                                   .matrix = matrix,
                                   .offsets = offsets,
                                   .maxima = maxima,
                                   .zeroSignals = nullptr,
                                   .formatWord = nullptr});
    });
}

int32_t TORVIKwriteFTSensorCalArray(int32_t deviceNo, uint32_t calSlot, char* serialText, double outScale,
                                    double inScale, double* matrix, double* offsets, double* maxima) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(serialText != nullptr && matrix != nullptr && maxima != nullptr &&
                            !isTooSmallForScale(outScale) && !isTooSmallForScale(inScale) && calSlot < calSlotLimit))
            return failure;
        const auto serial = parseSerialText(serialText);
        if (!call.argumentsValid(serial.has_value())) return failure;
        return writeStandardArrays(call.deviceNo(), {.serial = *serial,
                                                     .outScale = outScale,
                                                     .inScale = inScale,
                                                     .matrix = matrix,
                                                     .offsets = offsets,
                                                     .maxima = maxima,
                                                     .zeroSignals = nullptr});
    });
}

int32_t TORVIKreadFTsensorCalArrayA(int32_t deviceNo, uint32_t calSlot, char* serialText, double* scales,
                                    double* matrix, double* offsets, double* maxima, double* zeroSignals,
                                    uint32_t* matrixFormat) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(true)) return failure;
        return readArrays(call.deviceNo(), calSlot,
                          {.serialText = serialText,
                           .outScale = scales,
                           .inScale = scales == nullptr ? nullptr : scales + 1,
                           .matrix = matrix,
                           .offsets = offsets,
                           .maxima = maxima,
                           .zeroSignals = zeroSignals,
                           .formatWord = matrixFormat});
    });
}

int32_t TORVIKwriteFTsensorCalArrayA(int32_t deviceNo, uint32_t calSlot, char* serialText, double* scales,
                                     double* matrix, double* offsets, double* maxima, double* zeroSignals,
                                     int32_t matrixFormat) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(serialText != nullptr && matrix != nullptr && maxima != nullptr && scales != nullptr &&
                            matrixFormat >= 0))
            return failure;
        if (!call.argumentsValid(!isTooSmallForScale(scales[0]) && !isTooSmallForScale(scales[1]))) return failure;
        const auto serial = parseSerialText(serialText);
        if (!call.argumentsValid(serial.has_value())) return failure;
        if (matrixFormat != 0 && !supports(call, firmwareWithFormatWord)) return failure;
        if (!call.argumentsValid(dimensionsOf(matrixFormat).addressable())) return failure;
        const CalibrationArrays arrays{.serial = *serial,
                                       .outScale = scales[0],
                                       .inScale = scales[1],
                                       .matrix = matrix,
                                       .offsets = offsets,
                                       .maxima = maxima,
                                       .zeroSignals = zeroSignals};
        return writeArrays(call.deviceNo(), static_cast<std::uint8_t>(calSlot), arrays, matrixFormat);
    });
}

int32_t TORVIKwriteFTsensorCalArrExt(int32_t deviceNo, int32_t matrixFormat, double* matrixB, uint32_t* facB1,
                                     uint32_t* facB2, char* model) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(true) || !supports(call, firmwareWithFormatWord)) return failure;
        if (!call.argumentsValid(matrixFormat >= 0)) return failure;
        return writeExtension(call.deviceNo(), matrixFormat,
                              {.matrixB = matrixB, .firstFactors = facB1, .secondFactors = facB2, .model = model});
    });
}

int32_t TORVIKreadFTsensorCalArrExt(int32_t deviceNo, uint32_t* matrixFormat, double* matrixB, uint32_t* facB1,
                                    uint32_t* facB2, char* model) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(true) || !supports(call, firmwareWithFormatWord)) return failure;
        if (!call.argumentsValid(matrixFormat != nullptr)) return failure;
        return readExtension(call.deviceNo(), *matrixFormat,
                             {.matrixB = matrixB, .firstFactors = facB1, .secondFactors = facB2, .model = model});
    });
}

int32_t TORVIKwriteFTsensorCalArrInfo(int32_t deviceNo, int32_t* units, int32_t* date, double* info) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(true) || !supports(call, firmwareWithFormatWord)) return failure;
        return writeInfo(call.deviceNo(), units, date, info);
    });
}

int32_t TORVIKstoreFTSensorCal(int32_t deviceNo, uint8_t slot) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(true)) return failure;
        return storeCalSlot(call.deviceNo(), slot);
    });
}

int32_t TORVIKgetFTSensorCalArrNo(int32_t deviceNo, uint32_t ignored, uint8_t* out) {
    static_cast<void>(ignored);
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(true)) return failure;
        // Kept: a null pointer stores its code, and the result is that of a success.
        if (!call.argumentsValid(out != nullptr)) return success;
        const auto answer = call.ask(Command::getCalArrayNumber);
        if (!answer) return failure;
        constexpr std::int32_t length = 3;
        convertFromDevice(static_cast<std::uint32_t>(DeviceNumber::text), out, answer->data().data(), length);
        return success;
    });
}

int32_t TORVIKsetFTSensorCalArrNo(int32_t deviceNo, uint8_t number) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(true)) return failure;
        return call.acknowledge(Command::setCalArrayNumber, Parameters().u8(number));
    });
}

// The files are read outside the record: a release does not wait for them.
int32_t TORVIKwriteFTSensorCalFromFile(int32_t deviceNo, uint32_t calSlot, const char* path) {
    const Visit inLibrary(libraryGate);
    SetUp setUp;
    const std::int32_t checked = deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!inLibrary.inside()) return call.fail(error::notActive);
        if (!call.ready(path != nullptr)) return failure;
        setUp = setUpOf(call.record());
        return success;
    });
    if (checked != success) return failure;
    CalibrationFile calibration;
    std::uint32_t code = error::none;
    if (readFiles(deviceNumber(deviceNo), setUp, path, calibration, code) != success) return failure;
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!isStill(setUp, call.record())) return call.fail(error::notActive);
        if (code != error::none) return call.fail(code);
        return writeCalibration(call.deviceNo(), static_cast<std::uint8_t>(calSlot), calibration);
    });
}
