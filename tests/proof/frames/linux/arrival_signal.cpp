#include "arrival_signal.h"

#include <sys/eventfd.h>
#include <unistd.h>

namespace torvik::proof {

ArrivalSignal::ArrivalSignal() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

ArrivalSignal::~ArrivalSignal() {
    close(descriptor_);
}

void ArrivalSignal::useEvent(std::uint64_t) {}

void ArrivalSignal::give() {
    eventfd_write(descriptor_, 1);
}

void ArrivalSignal::clear() {
    eventfd_t count = 0;
    eventfd_read(descriptor_, &count);
}

}  // namespace torvik::proof
