// The services of the system that the library asks for by name; the linker puts these in their place (--wrap).
#include "faults/linux/failing_system_calls.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>

#include <cerrno>

#include "faults/failing_services.h"

namespace torvik::test {
std::atomic<bool> pollFails = false;
std::atomic<std::uint32_t> failedPolls = 0;
}  // namespace torvik::test

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {

int __real_eventfd(unsigned count, int flags);
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*routine)(void*), void* argument);

int __real_poll(pollfd* descriptors, nfds_t count, int limit);

int __wrap_poll(pollfd* descriptors, nfds_t count, int limit);
int __wrap_eventfd(unsigned count, int flags);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*routine)(void*), void* argument);

int __wrap_eventfd(unsigned count, int flags) {
    using namespace torvik::test;
    if (!serviceFails(Service::operatingSystem, "eventfd")) return __real_eventfd(count, flags);
    errno = injectedSystemError();
    return -1;
}

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*routine)(void*),
                          void* argument) {
    using namespace torvik::test;
    if (serviceFails(Service::operatingSystem, "pthread_create")) return injectedSystemError();
    return __real_pthread_create(thread, attributes, routine, argument);
}

int __wrap_poll(pollfd* descriptors, nfds_t count, int limit) {
    using namespace torvik::test;
    if (!pollFails) return __real_poll(descriptors, count, limit);
    ++failedPolls;
    errno = ENOMEM;
    return -1;
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
