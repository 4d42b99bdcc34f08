#pragma once

#include <pthread.h>

namespace torvik::platform {

struct NativeMutex {
    pthread_mutex_t handle = PTHREAD_MUTEX_INITIALIZER;
};

struct NativeCondition {
    pthread_cond_t handle = PTHREAD_COND_INITIALIZER;
};

}  // namespace torvik::platform
