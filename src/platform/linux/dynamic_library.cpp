#include "platform/dynamic_library.h"

#include <dlfcn.h>

namespace torvik::platform {

void* loadAdapterLibrary() {
    return dlopen("libpcanbasic.so", RTLD_NOW | RTLD_LOCAL);
}

void* findSymbol(void* library, const char* name) {
    return dlsym(library, name);
}

}  // namespace torvik::platform
