#include "core/activation.h"
#include "windows_api.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, LPVOID processEnds) {
    // When the process ends the other threads are gone already and may have owned any lock: nothing is touched.
    if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) torvik::shutDown();
    return TRUE;
}
