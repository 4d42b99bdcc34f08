#include "support/loaded_library.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace torvik::test {

LoadedLibrary::LoadedLibrary(const char* path) : handle_(LoadLibraryA(path)) {}

LoadedLibrary::~LoadedLibrary() {
    if (loaded()) FreeLibrary(static_cast<HMODULE>(handle_));
}

LoadedLibrary::Address LoadedLibrary::address(const char* name) const {
    return reinterpret_cast<Address>(::GetProcAddress(static_cast<HMODULE>(handle_), name));
}

bool LoadedLibrary::present(const char* path) {
    return GetModuleHandleA(path) != nullptr;
}

}  // namespace torvik::test
