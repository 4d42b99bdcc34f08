#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "can_entry_points.h"

// What the tests of the virtual adapter need of the system. linux/ has the same.
namespace virtual_test {

inline void setEnvironment(const char* name, const char* value) {
    SetEnvironmentVariableA(name, value);
}

// How late a waiter may be woken half of the time: timers are no finer than the clock tick on some systems.
inline constexpr std::chrono::milliseconds kWakeTolerance{20};
inline constexpr int kExitRuns = 5;

// The receive notification as a client of this system uses it.
class ReceiveEvent {
  public:
    ReceiveEvent() : event_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}
    ~ReceiveEvent() { CloseHandle(event_); }
    ReceiveEvent(const ReceiveEvent&) = delete;
    ReceiveEvent& operator=(const ReceiveEvent&) = delete;

    std::uint32_t attach(std::uint16_t channel) { return CAN_SetValue(channel, 0x03, &event_, sizeof event_); }
    static std::uint32_t detach(std::uint16_t channel) {
        std::uint32_t nothing = 0;
        return CAN_SetValue(channel, 0x03, &nothing, sizeof nothing);
    }
    [[nodiscard]] bool wait(int milliseconds) const {
        return WaitForSingleObject(event_, static_cast<DWORD>(milliseconds)) == WAIT_OBJECT_0;
    }
    [[nodiscard]] HANDLE handle() const { return event_; }

  private:
    HANDLE event_;
};

// A library loaded at run time.
class Library {
  public:
    explicit Library(const std::string& name) : handle_(LoadLibraryA(name.c_str())) {}
    ~Library() { unload(); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    static constexpr const char* kName = "PCANBasic.dll";
    [[nodiscard]] static bool isLoaded(const std::string& /*path*/) { return GetModuleHandleA(kName) != nullptr; }
    [[nodiscard]] bool loaded() const { return handle_ != nullptr; }
    [[nodiscard]] bool sameAs(const Library& other) const { return handle_ == other.handle_; }
    template <class Function>
    [[nodiscard]] Function* entry(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(handle_, name)));
    }
    void unload() {
        if (handle_ != nullptr) FreeLibrary(handle_);
        handle_ = nullptr;
    }

  private:
    HMODULE handle_;
};

// The receive notification registered with a loaded library, and left as it is. The event lives as long as the process,
// as that of a client that never takes it back.
inline std::uint32_t attachEventOf(const Library& library, std::uint16_t channel) {
    static const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    HANDLE value = event;
    return library.entry<decltype(CAN_SetValue)>("CAN_SetValue")(channel, 0x03, &value, sizeof value);
}

inline int openHandles() {
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return static_cast<int>(count);
}

}  // namespace virtual_test
