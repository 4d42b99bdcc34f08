#include "core/activation.h"
#include "windows_api.h"

// Frees what the C++ run-time keeps for exceptions when there is no memory. The run-time is a part of this library, and
// its memory would stay behind in the process with every unload.
namespace __gnu_cxx {
void __freeres();  // NOLINT(bugprone-reserved-identifier)
}

extern "C" BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, LPVOID processEnds) {
    // When the process ends the other threads are gone already and may have owned any lock: nothing is touched.
    if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) {
        torvik::shutDown();
        __gnu_cxx::__freeres();
    }
    return TRUE;
}
