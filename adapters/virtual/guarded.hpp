#pragma once

#include <xmmintrin.h>

#include "adapter.hpp"

namespace virtual_adapter {

// A host may have floating-point exceptions unmasked, which would end it at the first rounding in a signal.
class MaskedFloatExceptions {
  public:
    MaskedFloatExceptions() { _mm_setcsr(kInitialState); }
    ~MaskedFloatExceptions() { _mm_setcsr(saved_); }
    MaskedFloatExceptions(const MaskedFloatExceptions&) = delete;
    MaskedFloatExceptions& operator=(const MaskedFloatExceptions&) = delete;

  private:
    static constexpr unsigned kInitialState = 0x1F80;  // all masked, none raised, rounding to nearest
    unsigned saved_ = _mm_getcsr();
};

// The frame of every exported function: no exception leaves the library. The only one to be expected is a refused
// allocation.
template <class Result, class Call>
Result guarded(Result onException, Call call) noexcept {
    const MaskedFloatExceptions masked;
    try {
        return call(Adapter::instance());
    } catch (...) {
        return onException;
    }
}

}  // namespace virtual_adapter
