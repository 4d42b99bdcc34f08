#include "platform/sync.h"

#include <algorithm>

#include "windows_api.h"

namespace torvik::platform {

static_assert(sizeof(SRWLOCK) == sizeof(NativeMutex) && sizeof(CONDITION_VARIABLE) == sizeof(NativeCondition));

namespace {

SRWLOCK* lockOf(NativeMutex& mutex) {
    return reinterpret_cast<SRWLOCK*>(&mutex.handle);
}

CONDITION_VARIABLE* conditionOf(NativeCondition& condition) {
    return reinterpret_cast<CONDITION_VARIABLE*>(&condition.handle);
}

}  // namespace

void Mutex::lock() {
    AcquireSRWLockExclusive(lockOf(native_));
}

void Mutex::unlock() {
    ReleaseSRWLockExclusive(lockOf(native_));
}

void Condition::notifyOne() {
    WakeConditionVariable(conditionOf(native_));
}

void Condition::notifyAll() {
    WakeAllConditionVariable(conditionOf(native_));
}

void Condition::waitFor(Mutex& mutex, Duration duration) {
    constexpr std::chrono::milliseconds longest(60'000);
    const auto milliseconds = std::min(std::chrono::ceil<std::chrono::milliseconds>(duration), longest);
    SleepConditionVariableSRW(conditionOf(native_), lockOf(mutex.native_), static_cast<DWORD>(milliseconds.count()), 0);
}

}  // namespace torvik::platform
