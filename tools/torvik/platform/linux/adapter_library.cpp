#include "platform/adapter_library.h"

#include <dlfcn.h>

#include <cstdlib>
#include <stdexcept>

namespace torvik::tool::platform {

std::string_view adapterLibraryName() {
    return "libpcanbasic.so";
}

std::filesystem::path executableFolder() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

void setEnvironment(const std::string& name, const std::string& value) {
    setenv(name.c_str(), value.c_str(), 1);
}

ResidentLibrary::ResidentLibrary(const std::filesystem::path& path)
    : handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ != nullptr) return;
    const char* const reason = dlerror();
    throw std::runtime_error(reason != nullptr ? reason : "it could not be loaded");
}

ResidentLibrary::AnyFunction* ResidentLibrary::symbol(const char* name) const {
    return reinterpret_cast<AnyFunction*>(dlsym(handle_, name));
}

}  // namespace torvik::tool::platform
