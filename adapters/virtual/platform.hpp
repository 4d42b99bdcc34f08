#pragma once

#include <optional>
#include <string>

#include "frame.hpp"

// What differs between the systems beside lock.hpp and receive_notifier.hpp. The folders linux/ and windows/ hold the
// same file names.
namespace virtual_adapter {

// The monotonic clock; on Linux the one of timer descriptors (CLOCK_MONOTONIC).
[[nodiscard]] Nanoseconds monotonicNow();

// `before` and then one of the others is called around every fork of this process, if it can fork at all.
void callAroundFork(void (*before)(), void (*inParent)(), void (*inChild)());

// As the process's environment holds it now.
[[nodiscard]] std::optional<std::string> environmentVariable(const char* name);

}  // namespace virtual_adapter
