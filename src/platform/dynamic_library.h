// A shared library loaded at run time. It stays loaded: nothing here unloads it.
#pragma once

namespace torvik::platform {

// The adapter library under the system's name for it.
void* loadAdapterLibrary();

// Null when the library has no such symbol.
void* findSymbol(void* library, const char* name);

}  // namespace torvik::platform
