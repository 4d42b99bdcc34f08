// The command codes of the devices, each with its parameter bytes and what its answer carries.
#pragma once

#include <cstdint>

namespace torvik {

enum class Command : std::uint8_t {
    resetStatus = 0x00,        // no parameters; acknowledged
    interfaceIdent = 0x01,     // index 0..3; number in bytes 2..5
    stopTransmitting = 0x23,   // no parameters; acknowledged
    startTransmitting = 0x24,  // no parameters; acknowledged
    clearDeviceBuffer = 0x25,  // no parameters; acknowledged
    mode = 0x26,               // no parameters; mode word in bytes 2..5
    firmwareVersion = 0x2B,    // no parameters; version in bytes 2..5
    rawValue = 0x3A,           // channel; counts in bytes 2..5
    requestValues = 0x3B,      // no parameters; no answer, one set of value frames follows
    clearMaximum = 0x3C,       // channel or 0; acknowledged
    protocolError = 0x42,      // index; code in bytes 2..5
    valueError = 0x43,         // index; six bytes 2..7
    channelCount = 0x49,       // 0; number of channels in byte 3
    resetDevice = 0x78,        // no parameters; no answer
    transmitMode = 0x80,       // index; mode in bytes 2..3
    canSetting = 0x8C,         // number of the setting; value in bytes 2..5
};

}  // namespace torvik
