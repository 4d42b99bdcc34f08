// The services of the system that the library asks for by name; the linker puts these in their place (--wrap).
#include <pthread.h>
#include <sys/eventfd.h>

#include <cerrno>

#include "faults/failing_services.h"

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {

int __real_eventfd(unsigned count, int flags);
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*routine)(void*), void* argument);

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

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
