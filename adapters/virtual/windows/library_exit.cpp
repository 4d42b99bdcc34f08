#include "adapter.hpp"

extern "C" BOOL WINAPI DllMain(HINSTANCE /*instance*/, DWORD reason, LPVOID processEnds) {
    // When the process ends, the other threads are gone already and may have held any lock: the system cleans up.
    if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) virtual_adapter::Adapter::shutDownInstance();
    return TRUE;
}
