#include "platform/faults.h"

#include <atomic>

namespace torvik::platform {

namespace {
constinit std::atomic<FaultHook> faultHook = nullptr;
}

void setFaultHook(FaultHook hook) {
    faultHook.store(hook);
}

std::uint32_t injectedFault(FaultPoint point) {
    const FaultHook hook = faultHook.load();
    return hook == nullptr ? 0 : hook(point);
}

}  // namespace torvik::platform
