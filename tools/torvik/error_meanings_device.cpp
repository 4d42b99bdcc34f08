#include <array>

#include "error_meanings.h"

namespace torvik::tool {

namespace {

constexpr std::string_view checkManual = "check in the device's manual whether its model and firmware offer this";
constexpr std::string_view checkValue = "compare the value with the range in the device's manual";
constexpr std::string_view unlock = "unlock write access on the device, then repeat the command";
constexpr std::string_view repeatLater = "wait a moment and repeat the command";
constexpr std::string_view needsService = "switch the device off and on; when it stays, the device needs service";

constexpr auto deviceRows = std::to_array<ErrorMeaning>({
    {0x30000060, "the device's answer does not fit the command that was sent",
     "repeat the call; answers may have been late: release and activate the device to start afresh"},
    {0x30000062, "the device's firmware is too old for this request", "update the firmware or do without the function"},
    {0x30000063, "the measured values come in a format that the library does not know",
     "choose 16-bit, 24-bit or float values on the device, then activate it again"},
    {0x30000065, "what was written read back differently: the device has not stored it",
     "write it again and check that write access is not locked"},
    {0x40, "the device does not know this command", checkManual},
    {0x41, "the device knows the command, but this model does not carry it out", checkManual},
    {0x42, "the command carries a suffix that the device does not accept", checkManual},
    {0x50, "a parameter of the command is not accepted", checkValue},
    {0x51, "an index or address in the command names nothing that the device has",
     "check the channel or index against the number the device has"},
    {0x52, "the data in the command is not accepted", checkValue},
    {0x53, "a parameter has bits set that must be clear, or the other way round", checkValue},
    {0x54, "a parameter is above the largest value possible", checkValue},
    {0x55, "a parameter is below the smallest value possible", checkValue},
    {0x56, "parameters that are each possible do not go together", "change one of them"},
    {0x57, "a parameter is too large compared with another setting", "lower it, or change the other setting first"},
    {0x58, "a parameter is too small compared with another setting", "raise it, or change the other setting first"},
    {0x59, "the device does not offer this parameter", checkManual},
    {0x5A, "the time-out asked for is not accepted", checkValue},
    {0x5B, "the command has too many or too few parameters", checkManual},
    {0x6E, "memory cannot be reached in the device's present state", "bring the device into its normal mode first"},
    {0x6F, "access to this memory is denied", unlock},
    {0x70, "access is denied", unlock},
    {0x71, "access is denied because the device is locked", unlock},
    {0x72, "access is denied: the password is missing or wrong", "give the right password first"},
    {0x74, "access is denied: too many attempts", "switch the device off and on before the next attempt"},
    {0x75, "access is denied: this connection must not write", "use the connection that has write access"},
    {0x80, "an internal fault of the device", needsService},
    {0x81, "a calculation inside the device failed", "check scaling and calibration values for extreme numbers"},
    {0x82, "the converter delivers faulty values", needsService},
    {0x83, "the measured value is not reliable", "check the sensor and whether the input is overdriven"},
    {0x84, "the device's settings memory is faulty", needsService},
    {0x91, "the device's transmit buffer is full", "lower the bus load or the device's data rate"},
    {0x92, "the device is busy", repeatLater},
    {0x99, "the device's receive buffer is full: commands come too fast", repeatLater},
    {0x5C, "a parameter does not fit the device's settings", "change the setting it depends on first"},
    {0x5D, "the setting would connect hardware in conflict, for example short-circuit it",
     "check the wiring and the settings of inputs and outputs"},
    {0x60, "the data asked for is not there, for example not initialised yet", "initialise it first, then ask again"},
    {0x61, "stored data does not agree with itself or with the parameters", "write the data anew, completely"},
    {0x62, "the device cannot do this in its present state", "bring the device into its normal mode first"},
    {0x63, "the device does not support this function", checkManual},
    {0x64, "the data rate is too high for the setting asked for", "lower the data rate first"},
    {0x76, "writing is not allowed", unlock},
});

}  // namespace

std::span<const ErrorMeaning> deviceMeanings() {
    return deviceRows;
}

}  // namespace torvik::tool
