#include "platform/adapter_library.h"

#include <windows.h>

#include <cstdlib>
#include <stdexcept>
#include <system_error>

namespace torvik::tool::platform {

std::string_view adapterLibraryName() {
    return "PCANBasic.dll";
}

std::filesystem::path executableFolder() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return std::filesystem::path(path).parent_path();
}

void setEnvironment(const std::string& name, const std::string& value) {
    _putenv_s(name.c_str(), value.c_str());
}

ResidentLibrary::ResidentLibrary(const std::filesystem::path& path) : handle_(LoadLibraryW(path.c_str())) {
    if (handle_ != nullptr) return;
    throw std::runtime_error(std::system_category().message(static_cast<int>(GetLastError())));
}

ResidentLibrary::AnyFunction* ResidentLibrary::symbol(const char* name) const {
    return reinterpret_cast<AnyFunction*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

}  // namespace torvik::tool::platform
