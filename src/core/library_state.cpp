#include "core/library_state.h"

#include <cstdarg>
#include <cstdio>

namespace torvik {

constinit platform::TimedMutex lifecycleMutex(true);
constinit platform::TimedMutex answerMutex;
constinit platform::TimedMutex valueMutex;
constinit CallGate libraryGate;
constinit LibraryState libraryState;

void debugPrint(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::vprintf(format, arguments);
    va_end(arguments);
    std::fflush(stdout);
}

}  // namespace torvik
