#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "exit_code.h"

namespace torvik::tool {

/// An error as the library tells it: the code and the text that TORVIKgetLastErrorText gives.
struct LibraryError {
    std::uint32_t code = 0;
    std::string text;
};

/// Ends a command; main reports it.
struct Failure {
    ExitCode exitCode;
    std::string tried;                       ///< completes "torvik: ... failed"
    std::optional<LibraryError> error = {};  ///< absent when the library was not involved
    std::string reason = {};                 ///< in place of, or beside, the library's error
    std::string advice = {};                 ///< the next thing to try; empty: the one that belongs to the code
};

/// Takes a device's last error out of the library (reading clears it). Code 0: there was none.
LibraryError takeLastError(std::uint32_t deviceNo);

/// The same after a failed call on a device. A few failures are kept for device 0: looks there when there is none.
LibraryError takeErrorOfCall(std::uint32_t deviceNo);

/// The failure as the user reads it: what was tried, the code with its text and meaning, the next thing to try.
std::string describe(const Failure& failure);

/// Writes a message, whole lines, to standard error, with what would control a terminal made visible.
void printMessage(const std::string& message);

}  // namespace torvik::tool
