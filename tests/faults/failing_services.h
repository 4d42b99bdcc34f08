// Makes what the library asks of its surroundings fail: memory, services of the operating system, files.
#pragma once

#include <cstddef>
#include <cstdint>

namespace torvik::test {

enum class Service : std::uint8_t { allocation, faultPoint, operatingSystem, file };

// Armed, the n-th use (1 the first) of the service by a call of this thread into the library fails, or all from it on.
class FailingService {
  public:
    FailingService(Service service, std::uint32_t nth, bool fromThenOn, int systemError);
    ~FailingService();
    FailingService(const FailingService&) = delete;
    FailingService& operator=(const FailingService&) = delete;

    // Whether anything has failed; `what`: the name of what failed first.
    static bool struck();
    static const char* what();
};

// Whether this use of a service fails; with the system's error to be reported. For those who stand in for a service.
bool serviceFails(Service service, const char* name);
int injectedSystemError();

// While it lives, its thread's uses of services are the test's own.
class ServicesUntouched {
  public:
    ServicesUntouched();
    ~ServicesUntouched();
    ServicesUntouched(const ServicesUntouched&) = delete;
    ServicesUntouched& operator=(const ServicesUntouched&) = delete;
};

// Blocks that were allocated inside the library and not freed.
std::int64_t liveBlocks();

}  // namespace torvik::test
