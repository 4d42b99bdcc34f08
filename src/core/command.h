// The command codes of the devices, each with its parameter bytes and what its answer carries.
#pragma once

#include <cstdint>

namespace torvik {

// "Acknowledged": the answer carries nothing but the status. Numbers are big-endian; floats have four bytes.
enum class Command : std::uint8_t {
    resetStatus = 0x00,            // no parameters; acknowledged
    interfaceIdent = 0x01,         // index 0..3; number in bytes 2..5
    readZero = 0x02,               // channel; zero in bytes 2..5
    writeZero = 0x03,              // channel or 0, zero as 32 bits; acknowledged
    readAoutOffset = 0x04,         // channel; float in bytes 2..5
    writeAoutOffset = 0x05,        // channel or 0, float; acknowledged
    readAoutScale = 0x06,          // channel; float in bytes 2..5
    writeAoutScale = 0x07,         // channel or 0, float; acknowledged
    writeAoutDirect = 0x08,        // channel or 0, value as 16 bits; acknowledged
    loadSettings = 0x09,           // set; acknowledged
    storeSettings = 0x0A,          // set; acknowledged
    setZero = 0x0C,                // channel or 0; acknowledged
    getAoutType = 0x0D,            // channel; two type bytes in 2 and 3
    setAoutType = 0x0E,            // channel or 0, two type bytes; acknowledged
    getUnit = 0x0F,                // channel; unit number in byte 2
    setUnit = 0x10,                // channel or 0, unit number; acknowledged
    readUserText = 0x11,           // text 0 or 1; two answers: part in byte 2, four characters in 3..6
    writeUserText = 0x12,          // text 0 or 1, part 1 or 2, four characters; acknowledged
    readUserScale = 0x14,          // channel; float in bytes 2..5
    writeUserScale = 0x15,         // channel or 0, float; acknowledged
    readCalibrationValue = 0x17,   // index, channel 0..7; float or 32 bits in bytes 2..5
    writeCalibrationValue = 0x18,  // index, channel 0..7, float or 32 bits; acknowledged
    setIdentifier = 0x19,          // four bytes; acknowledged
    identifierState = 0x1A,        // no parameters; state in byte 2
    readModelName = 0x1B,          // no parameters; four answers: part 1..4 in byte 2, four characters in 3..6
    writeModelName = 0x1C,         // part 1..4, four characters; acknowledged
    getSerialNumber = 0x1F,        // no parameters; number in bytes 2..5
    setSerialNumber = 0x20,        // number as 32 bits; acknowledged
    stopTransmitting = 0x23,       // no parameters; acknowledged
    startTransmitting = 0x24,      // no parameters; acknowledged
    clearDeviceBuffer = 0x25,      // no parameters; acknowledged
    mode = 0x26,                   // no parameters; mode word in bytes 2..5
    setMode = 0x27,                // mode word; acknowledged
    softwareConfiguration = 0x2A,  // no parameters; word in bytes 2..5
    firmwareVersion = 0x2B,        // no parameters; version in bytes 2..5
    writeInputRange = 0x34,        // channel or 0, entry, hundredths as 32 bits; acknowledged
    hardwareVersion = 0x36,        // no parameters; version in bytes 2..5
    rawValue = 0x3A,               // channel; counts in bytes 2..5
    requestValues = 0x3B,          // no parameters; no answer, one set of value frames follows
    clearMaximum = 0x3C,           // channel or 0; acknowledged
    protocolError = 0x42,          // index; code in bytes 2..5
    valueError = 0x43,             // index; six bytes 2..7
    readCalElement = 0x47,         // array, element; value in bytes 2..5
    writeCalElement = 0x48,        // array, element, value as 4 bytes; acknowledged
    channelCount = 0x49,           // 0: number of channels in byte 3; 1..16: mapping entry in bytes 2..3
    setTransmitMapping = 0x4A,     // entry, value as 16 bits; acknowledged
    getFilterType = 0x4B,          // filter, bank; type in byte 2
    setFilterType = 0x4C,          // filter, type; acknowledged
    getFilterCutoff = 0x4D,        // filter, bank + 0 or 1; float in bytes 2..5, a fraction of the sampling frequency
    setFilterCutoff = 0x4E,        // filter, 0 or 1, float; acknowledged
    getFilterCoefficient = 0x4F,   // filter, index; 32 bits in bytes 2..5, with 24 fraction bits
    setFilterCoefficient = 0x50,   // filter, index, float or sign and magnitude; acknowledged
    getFiltersOn = 0x51,           // no parameters; mask in bytes 2..5
    setFiltersOn = 0x52,           // mask as 32 bits; acknowledged
    maximumMinimum = 0x53,         // channel; two answers, a float in bytes 2..5 of the second
    getCalArrayNumber = 0x54,      // no parameters; three bytes 2..4
    setCalArrayNumber = 0x55,      // number; acknowledged
    readHours = 0x56,              // index; float in bytes 2..5
    writeHours = 0x57,             // float; acknowledged
    dataRateLimit = 0x63,          // 0 smallest, 1 largest; float in bytes 2..5
    tedsData = 0x65,               // selector, word address as 16 bits; four bytes 2..5
    tedsActive = 0x68,             // no parameters; word in bytes 2..5
    getCounterMode = 0x69,         // input and sub; value in bytes 2..5
    setCounterMode = 0x6A,         // input and sub, value as 32 bits; acknowledged
    resetDevice = 0x78,            // no parameters; no answer
    selectCalSlot = 0x7D,          // slot; acknowledged
    storeFilter = 0x7E,            // two numbers; acknowledged
    storeCalSlot = 0x7F,           // slot; acknowledged
    transmitMode = 0x80,           // index; mode in bytes 2..3
    setTransmitMode = 0x81,        // index, mode as 16 bits; acknowledged
    getFrequency = 0x8A,           // no parameters; float in bytes 2..5
    setFrequency = 0x8B,           // float; acknowledged
    canSetting = 0x8C,             // number of the setting; value in bytes 2..5
    setCanSetting = 0x8D,          // number of the setting, value as 32 bits; acknowledged
    readAnalogueFilter = 0x90,     // one byte, 0; setting in bytes 2..3
    writeAnalogueFilter = 0x91,    // setting as 16 bits; acknowledged
    switchBlocking = 0x92,         // word; acknowledged
    commandAvailable = 0x93,       // two bytes of a query; acknowledged
    getNoiseCut = 0x94,            // channel; float in bytes 2..5
    setNoiseCut = 0x95,            // channel or 0, float; acknowledged
    readUserOffset = 0x9A,         // channel; float in bytes 2..5
    writeUserOffset = 0x9B,        // channel or 0, float; acknowledged
    inputTypeRange = 0xA2,         // channel, entry (0: the present one); type in byte 2, hundredths in 3..5
    setInputType = 0xA3,           // channel, type; acknowledged
};

}  // namespace torvik
