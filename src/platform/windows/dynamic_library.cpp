#include "platform/dynamic_library.h"

#include "windows_api.h"

namespace torvik::platform {

void* loadAdapterLibrary() {
    return LoadLibraryW(L"PCANBasic.dll");
}

void* findSymbol(void* library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

}  // namespace torvik::platform
