#include "platform/thread.h"

#include <memory>
#include <new>

#include "platform/faults.h"
#include "windows_api.h"

namespace torvik::platform {

// While a library is unloaded its caller holds the loader lock, which a thread needs to end: waiting for the thread's
// handle would hang, and an event set from our own code would be set before that code is left. A callback of a private
// thread pool has its event set by the system after it has returned.
struct ThreadState {
    PTP_POOL pool = nullptr;
    PTP_WORK work = nullptr;
    HANDLE ended = nullptr;
    void (*routine)() = nullptr;

    ~ThreadState() {
        if (work != nullptr) CloseThreadpoolWork(work);
        if (pool != nullptr) CloseThreadpool(pool);
        if (ended != nullptr) CloseHandle(ended);
    }
};

namespace {

void CALLBACK run(PTP_CALLBACK_INSTANCE instance, void* argument, PTP_WORK) {
    const auto* state = static_cast<const ThreadState*>(argument);
    CallbackMayRunLong(instance);
    SetEventWhenCallbackReturns(instance, state->ended);
    state->routine();
}

// The system's own answer, which no import library has. Looked up once while this library is loaded: later the loader
// lock, which that needs, may belong to a thread that unloads the library.
using ShutdownInProgress = BOOLEAN WINAPI();
ShutdownInProgress* findShutdownInProgress() {
    const HMODULE system = GetModuleHandleW(L"ntdll.dll");
    if (system == nullptr) return nullptr;
    return reinterpret_cast<ShutdownInProgress*>(
        reinterpret_cast<void*>(GetProcAddress(system, "RtlDllShutdownInProgress")));
}
ShutdownInProgress* const shutdownInProgress = findShutdownInProgress();

bool prepare(ThreadState& state) {
    state.ended = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (state.ended == nullptr) return false;
    state.pool = CreateThreadpool(nullptr);
    if (state.pool == nullptr) return false;
    SetThreadpoolThreadMaximum(state.pool, 1);
    if (!SetThreadpoolThreadMinimum(state.pool, 1)) return false;
    TP_CALLBACK_ENVIRON environment;
    InitializeThreadpoolEnvironment(&environment);
    SetThreadpoolCallbackPool(&environment, state.pool);
    state.work = CreateThreadpoolWork(run, &state, &environment);
    return state.work != nullptr;
}

}  // namespace

std::uint32_t Thread::start(void (*routine)()) try {
    if (const std::uint32_t error = injectedFault(FaultPoint::threadStart); error != 0) return error;
    auto state = std::make_unique<ThreadState>();
    state->routine = routine;
    if (!prepare(*state)) return GetLastError() != 0 ? GetLastError() : ERROR_NOT_ENOUGH_MEMORY;
    SubmitThreadpoolWork(state->work);
    state_ = state.release();
    return 0;
} catch (const std::bad_alloc&) {
    return ERROR_NOT_ENOUGH_MEMORY;
}

bool Thread::join(std::optional<std::chrono::milliseconds> limit) {
    std::unique_ptr<ThreadState> state(state_);
    state_ = nullptr;
    const DWORD milliseconds = limit ? static_cast<DWORD>(limit->count()) : INFINITE;
    if (WaitForSingleObject(state->ended, milliseconds) == WAIT_OBJECT_0) return true;
    // The callback still uses its state: it is left behind.
    static_cast<void>(state.release());
    return false;
}

std::uint64_t processId() {
    return GetCurrentProcessId();
}

void runBeforeLoadedLibrariesEnd(void (*)()) {}

void runInForkedChild(void (*)()) {}

bool processEnds() {
    return shutdownInProgress != nullptr && shutdownInProgress() != FALSE;
}

void sleepFor(std::chrono::milliseconds duration) {
    Sleep(static_cast<DWORD>(duration.count()));
}

}  // namespace torvik::platform
