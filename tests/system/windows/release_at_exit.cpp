#include "../release_at_exit.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

// The system has ended all other threads by now.
extern "C" BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, LPVOID processEnds) {
    if (reason == DLL_PROCESS_DETACH && processEnds != nullptr && !torvik::test::releaseIsQuick())
        TerminateProcess(GetCurrentProcess(), torvik::test::releaseWasSlow);
    return TRUE;
}
