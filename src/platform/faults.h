// Lets tests fail the operating-system services that cannot be made to fail from outside.
#pragma once

#include <cstdint>

namespace torvik::platform {

enum class FaultPoint : std::uint8_t {
    eventCreate,
    mutexCreate,
    threadStart,
    allocation,
    eventWait,
    fileOpen,
    fileStatus,
    fileRead,
    fileWrite,
    fileClose
};

// Decides for one call whether it fails: 0 lets it go on, any other number is the system error it fails with.
using FaultHook = std::uint32_t (*)(FaultPoint);

// Null (the state in which the library runs): nothing fails.
void setFaultHook(FaultHook hook);

std::uint32_t injectedFault(FaultPoint point);

}  // namespace torvik::platform
