#include "core/error_table.h"

#include <array>
#include <cstdio>

namespace torvik {

namespace {

using enum ErrorKind;

// Codes stand here more than once; the last row of a code gives its text. Callers rely on those texts, slips included.
constexpr std::array rows = {
    ErrorRow{library, 0xE1, "errortype is unknown"},
    ErrorRow{library, 0xF1, "wrong adapter handle"},
    ErrorRow{library, 0xF2, "wrong baudrate"},
    ErrorRow{library, 0xF3, "the handle for the device is already init"},
    ErrorRow{library, 0xF4, "error while init the device handle"},
    ErrorRow{library, 0xF5, "getting device stucture failed"},
    ErrorRow{library, 0xF6, "setting active chanels failed"},
    ErrorRow{library, 0xF7, "the devicetype is unknown"},
    ErrorRow{library, 0xF8, "setting wrong identifier for response"},
    ErrorRow{library, 0xF9, "error while getting CAN identifier"},
    ErrorRow{library, 0x20000000, "wrong error mask"},
    ErrorRow{library, 0x300000F3, "memory allocation request refused by OS"},
    ErrorRow{library, 0x30000100, "function parameter exceedance"},
    ErrorRow{device, 0x30000060, "VARDA sended wrong command answer"},
    ErrorRow{device, 0x30000062, "VARDA Firmware doesn't support the request"},
    ErrorRow{device, 0x30000063, "VARDA dataformat is no set"},
    ErrorRow{library, 0x30000064, "selected frequency ist out of range"},
    ErrorRow{library, 0x30000101, "invalid devicehandle"},
    ErrorRow{library, 0x30000105, " internal function call failed"},
    ErrorRow{device, 0x30000065, "parameter is not stored (correctly) in the device memory"},
    ErrorRow{library, 0x30000106, "error while reading can data buffer"},
    ErrorRow{library, 0x30000108, "file passen by user has error in content"},
    ErrorRow{library, 0x30000109, "error while starting thread"},
    ErrorRow{library, 0x30000110, "error while stopping thread"},
    ErrorRow{library, 0x30000111, "error while starting mutex"},
    ErrorRow{library, 0x30000112, "error or timeput while acquiring mutex"},
    ErrorRow{device, 0x40, "unknown command"},
    ErrorRow{device, 0x41, "command not implemented"},
    ErrorRow{device, 0x42, "wrong suffix"},
    ErrorRow{device, 0x50, "wrong parameter"},
    ErrorRow{device, 0x51, "wrong index or adressparameter"},
    ErrorRow{device, 0x52, "wrong dataparameter"},
    ErrorRow{device, 0x53, "wrong bits in paramter"},
    ErrorRow{device, 0x54, "parameter too big (in absolut)"},
    ErrorRow{device, 0x55, "parameter too small (in absolut)"},
    ErrorRow{device, 0x56, "wrong parameter combination"},
    ErrorRow{device, 0x57, "parameter too big (in relation)"},
    ErrorRow{device, 0x58, "parameter too small (in relation)"},
    ErrorRow{device, 0x59, "paramter no implemented"},
    ErrorRow{device, 0x5A, "wrong timeout parameter"},
    ErrorRow{device, 0x5B, "wrong parameter number"},
    ErrorRow{device, 0x6E, "wrong condition - memory access denied"},
    ErrorRow{device, 0x6F, "memory access denied"},
    ErrorRow{device, 0x70, "access denied"},
    ErrorRow{device, 0x71, "access denied - blocking aktive"},
    ErrorRow{device, 0x72, "access denied - password is missing or wrong"},
    ErrorRow{device, 0x74, "access denied - max. tryouts reached"},
    ErrorRow{device, 0x75, "access denied - no writing access for the port"},
    ErrorRow{device, 0x80, "internal exception error"},
    ErrorRow{device, 0x81, "internal arithmetic error"},
    ErrorRow{device, 0x82, "ADC full of mistakes"},
    ErrorRow{device, 0x83, "measured value not qualified"},
    ErrorRow{device, 0x84, "EEPROM full of mistakes"},
    ErrorRow{device, 0x91, "full transmitbuffer"},
    ErrorRow{device, 0x92, "CPU busy"},
    ErrorRow{device, 0x99, "full receivebuffer"},
    ErrorRow{adapter, 0x1, "Transmit buffer in CAN controller is full"},
    ErrorRow{adapter, 0x2, "CAN controller was read too late"},
    ErrorRow{adapter, 0x4, "Bus error: an error counter reached the 'light' limit"},
    ErrorRow{adapter, 0x8, "Bus error: an error counter reached the 'heavy' limit"},
    ErrorRow{adapter, 0x10, "Bus error: the CAN controller is in bus-off state"},
    ErrorRow{adapter, 0x4001C, "mask for all bus errors"},
    ErrorRow{adapter, 0x20, "receive queue is empty"},
    ErrorRow{adapter, 0x40, "receive queue was read too late"},
    ErrorRow{adapter, 0x80, "transmit queue is full"},
    ErrorRow{adapter, 0x100, "test of the CAN controller hardware registers failed (no hardware found)"},
    ErrorRow{adapter, 0x200, "driver not loaded"},
    ErrorRow{adapter, 0x400, "hardware already in use by a Net"},
    ErrorRow{adapter, 0x800, "a client is already connected to the Net"},
    ErrorRow{adapter, 0x1400, "hardware handle is invalid"},
    ErrorRow{adapter, 0x1800, "net handle is invalid"},
    ErrorRow{adapter, 0x1C00, "client handle is invalid"},
    ErrorRow{adapter, 0x1C00, "mask for all handle errors"},
    ErrorRow{adapter, 0x2000, "resource (FIFO, Client, timeout) cannot be created"},
    ErrorRow{adapter, 0x4000, "invalid parameter"},
    ErrorRow{adapter, 0x8000, "invalid parameter value"},
    ErrorRow{adapter, 0x10000, "unknow error"},
    ErrorRow{adapter, 0x20000, "invalid data, function, or action"},
    ErrorRow{adapter, 0x4000000, "channel is not initialized"},
    ErrorRow{adapter, 0x8000000, "invalid operation"},
    ErrorRow{library, 0xD1, "error while setting baudrate"},
    ErrorRow{library, 0xD2, "error while initializing devicestack"},
    ErrorRow{library, 0xD3, "error while initializing devicestack"},
    ErrorRow{library, 0xD4, "error while extracting CAN messages"},
    ErrorRow{library, 0xD5, "error while reading active channel count"},
    ErrorRow{library, 0xD6, "error while setting active channel count"},
    ErrorRow{library, 0xD7, "error while reading last error"},
    ErrorRow{library, 0xD8, "error while setting last error"},
    ErrorRow{library, 0xD9, "error while reading value count"},
    ErrorRow{library, 0xDA, "error while reading single data"},
    ErrorRow{library, 0xDB, "error while setting tranmit active"},
    ErrorRow{library, 0xDC, "error while setting tranmit inactive"},
    ErrorRow{library, 0xDD, "error while getting request receive"},
    ErrorRow{library, 0xDE, "error while reseting device"},
    ErrorRow{library, 0xDF, "error while writing device"},
    ErrorRow{library, 0xE1, "error while reading device"},
    ErrorRow{library, 0xE2, "error while reading formated error"},
    ErrorRow{library, 0xE3, "error while initializing events"},
    ErrorRow{library, 0xE4, "error while getting response"},
    ErrorRow{library, 0xE5, "error while clearing buffer"},
    ErrorRow{library, 0xE6, "error while setting device data type"},
    ErrorRow{library, 0xE7, "error while resetting last error"},
    ErrorRow{library, 0xE8, "error while getting buffer readposition"},
    ErrorRow{library, 0xE9, "error while getting buffer readposition"},
    ErrorRow{library, 0xEB, "timeout while waiting for other cmd to finish"},
    ErrorRow{library, 0x30000113, "requested ressource not initialized"},
    ErrorRow{library, 0x30000058, "Command response from device timed out"},
    ErrorRow{device, 0x5C, "Parameter improper with respect to device settings"},
    ErrorRow{device, 0x5D, "Function leads to hardware (connection) collision, e.g. short-circuit"},
    ErrorRow{device, 0x60, "Requested data not available (e.g. not initiated)"},
    ErrorRow{device, 0x61, "Data stored not consistent in itself or with parameters"},
    ErrorRow{device, 0x62, "Command could not be executed, because device or functionality in improper state"},
    ErrorRow{device, 0x63, "Denied, because requested functionality not supported"},
    ErrorRow{device, 0x64, "Denied, because data rate too high for requested setting"},
    ErrorRow{device, 0x76, "Write access not allowed"},
    ErrorRow{library, 0x30000114, "CAN-ID already in use"},
};

const char* frameOf(ErrorKind kind) {
    switch (kind) {
        case device:
            return "VARDA Device: %s [%i]";
        case adapter:
            return "CAN Adapter: %s [%i]";
        default:
            return "TORVIKLIB: %s [%i]";
    }
}

}  // namespace

std::span<const ErrorRow> errorRows() {
    return rows;
}

void formatError(std::uint32_t code, std::span<char> text) {
    bool known = false;
    for (const ErrorRow& row : rows) {
        if (row.code != code) continue;
        std::snprintf(text.data(), text.size(), frameOf(row.kind), row.text, static_cast<int>(code));
        known = true;
    }
    if (!known) std::snprintf(text.data(), text.size(), "Unknown Error. Code: 0x%X", code);
}

}  // namespace torvik
