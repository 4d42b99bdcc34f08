#pragma once

namespace torvik::platform {

// An SRWLOCK and a CONDITION_VARIABLE are one pointer each, null when initialised.
struct NativeMutex {
    void* handle = nullptr;
};

struct NativeCondition {
    void* handle = nullptr;
};

}  // namespace torvik::platform
