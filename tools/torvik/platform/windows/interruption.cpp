#include "platform/interruption.h"

#include <windows.h>

#include <atomic>
#include <system_error>

namespace torvik::tool::platform {

namespace {

/// The system ends the process when the handler of a closed console returns: the clean end gets this long.
constexpr DWORD closingTime = 5000;

std::atomic<bool> endRequested = false;
HANDLE wakeEvent = nullptr;
HANDLE finishedEvent = nullptr;
HANDLE mainThread = nullptr;

BOOL WINAPI requestEnd(DWORD kind) {
    if (endRequested.exchange(true)) return FALSE;
    SetEvent(wakeEvent);
    // The main thread may wait for a reader that takes nothing.
    CancelSynchronousIo(mainThread);
    if (kind != CTRL_C_EVENT && kind != CTRL_BREAK_EVENT) WaitForSingleObject(finishedEvent, closingTime);
    return TRUE;
}

HANDLE makeEvent() {
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (event == nullptr) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), "CreateEvent");
    }
    return event;
}

}  // namespace

// The events stay until the process ends: the handler runs on a thread of the system's and may still use them.
Interruption::Interruption() {
    endRequested = false;
    wakeEvent = makeEvent();
    finishedEvent = makeEvent();
    DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &mainThread, 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
    SetConsoleCtrlHandler(nullptr, FALSE);
    SetConsoleCtrlHandler(requestEnd, TRUE);
}

Interruption::~Interruption() {
    SetEvent(finishedEvent);
    SetConsoleCtrlHandler(requestEnd, FALSE);
}

bool Interruption::requested() const {
    return endRequested;
}

bool Interruption::waitFor(std::chrono::milliseconds time) const {
    WaitForSingleObject(wakeEvent, static_cast<DWORD>(time.count()));
    return requested();
}

}  // namespace torvik::tool::platform
