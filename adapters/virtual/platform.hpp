#pragma once

#include <optional>
#include <string>

#include "frame.hpp"

// What differs between the systems beside lock.hpp and receive_notifier.hpp. The folders linux/ and windows/ hold the
// same file names.
namespace virtual_adapter {

// The monotonic clock; on Linux the one of timer descriptors (CLOCK_MONOTONIC).
[[nodiscard]] Nanoseconds monotonicNow();

// As the process's environment holds it now.
[[nodiscard]] std::optional<std::string> environmentVariable(const char* name);

}  // namespace virtual_adapter
