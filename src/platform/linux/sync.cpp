#include "platform/sync.h"

#include <ctime>

namespace torvik::platform {

void Mutex::lock() {
    pthread_mutex_lock(&native_.handle);
}

void Mutex::unlock() {
    pthread_mutex_unlock(&native_.handle);
}

void Condition::notifyOne() {
    pthread_cond_signal(&native_.handle);
}

void Condition::notifyAll() {
    pthread_cond_broadcast(&native_.handle);
}

void Condition::waitFor(Mutex& mutex, Duration duration) {
    const auto deadline = (systemNow() + duration).time_since_epoch();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(deadline);
    timespec until{};
    until.tv_sec = static_cast<time_t>(seconds.count());
    until.tv_nsec = static_cast<long>((deadline - seconds).count());
    pthread_cond_clockwait(&native_.handle, &mutex.native_.handle, CLOCK_MONOTONIC, &until);
}

}  // namespace torvik::platform
