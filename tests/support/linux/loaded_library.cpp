#include "support/loaded_library.h"

#include <dlfcn.h>

namespace torvik::test {

LoadedLibrary::LoadedLibrary(const char* path) : handle_(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {}

LoadedLibrary::~LoadedLibrary() {
    if (loaded()) dlclose(handle_);
}

LoadedLibrary::Address LoadedLibrary::address(const char* name) const {
    return reinterpret_cast<Address>(dlsym(handle_, name));
}

bool LoadedLibrary::present(const char* path) {
    void* const handle = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
    if (handle == nullptr) return false;
    dlclose(handle);
    return true;
}

}  // namespace torvik::test
