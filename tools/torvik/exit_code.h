#pragma once

#include <string_view>

namespace torvik::tool {

/// What the program ends with. The numbers are documented in --help and docs/tool.md: scripts rely on them.
enum class ExitCode : int {
    success = 0,
    codeUnknown = 1,
    usage = 2,
    noAdapter = 3,
    deviceFailed = 4,
    streamFailed = 5,
    outputFailed = 6,
    differs = 7,
    notDrawn = 8,
    fileProblems = 9,
    valuesLost = 10,
    interrupted = 130,
};

inline constexpr std::string_view exitCodeHelp =
    "Exit codes:\n"
    "  0    done; also when the reader of the output has closed it\n"
    "  1    explain: no error has this code\n"
    "  2    wrong use: unknown option or parameter, value out of range, unusable bench, configuration or\n"
    "       calibration file\n"
    "  3    no adapter: its library is missing or the adapter cannot be opened\n"
    "  4    the device did not answer, refused what it was asked, or could not be activated\n"
    "  5    failure while streaming\n"
    "  6    the output could not be written\n"
    "  7    set, config load: the device reads back another value; config diff: something differs;\n"
    "       filter load, on, off: the device reads back another filter;\n"
    "       calibration load: the device reads back other values; calibration compare: something differs\n"
    "  8    filter plot: gnuplot is not installed, or could not draw\n"
    "  9    calibration check, load, compare: the calibration file would be refused\n"
    "  10   stream: something was lost, as the report at its end says\n"
    "  130  interrupted (Ctrl-C, or asked to end); the device has been released";

}  // namespace torvik::tool
