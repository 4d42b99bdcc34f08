#include "arrival_signal.h"

#include <windows.h>

#include <atomic>

namespace torvik::proof {

namespace {
std::atomic<HANDLE> event = nullptr;
}

ArrivalSignal::ArrivalSignal() = default;
ArrivalSignal::~ArrivalSignal() = default;

void ArrivalSignal::useEvent(std::uint64_t handle) {
    event = reinterpret_cast<HANDLE>(handle);
}

void ArrivalSignal::give() {
    if (const HANDLE handle = event) SetEvent(handle);
}

// The event resets itself when the library has waited for it.
void ArrivalSignal::clear() {}

}  // namespace torvik::proof
