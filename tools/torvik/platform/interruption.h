#pragma once

#include <chrono>

namespace torvik::tool::platform {

/// Turns Ctrl-C and the system's request to end into a flag that can be waited for, as long as the one object lives.
/// A second Ctrl-C ends the program at once.
class Interruption {
  public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    bool requested() const;

    /// Waits so long at most; true as soon as the end is requested.
    bool waitFor(std::chrono::milliseconds time) const;
};

}  // namespace torvik::tool::platform
