// The processor's floating-point exceptions.
#pragma once

#include <cfenv>

namespace torvik::platform {

// While it lives, no floating-point exception is trapped, whatever the host has set; afterwards everything is as
// before.
class MaskedFloatingPoint {
  public:
    MaskedFloatingPoint() { std::feholdexcept(&saved_); }
    ~MaskedFloatingPoint() { std::fesetenv(&saved_); }
    MaskedFloatingPoint(const MaskedFloatingPoint&) = delete;
    MaskedFloatingPoint& operator=(const MaskedFloatingPoint&) = delete;

  private:
    std::fenv_t saved_{};
};

}  // namespace torvik::platform
