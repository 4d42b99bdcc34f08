#pragma once

#include <dlfcn.h>
#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "can_entry_points.h"

// What the tests of the virtual adapter need of the system. windows/ has the same.
namespace virtual_test {

inline void setEnvironment(const char* name, const char* value) {
    setenv(name, value, 1);
}

// How late a waiter may be woken half of the time, on a busy machine.
inline constexpr std::chrono::milliseconds kWakeTolerance{1};
inline constexpr int kExitRuns = 20;

// The receive notification as a client of this system uses it.
class ReceiveEvent {
  public:
    std::uint32_t attach(std::uint16_t channel) {
        return CAN_GetValue(channel, 0x03, &descriptor_, sizeof descriptor_);
    }
    static std::uint32_t detach(std::uint16_t channel) {
        std::uint32_t nothing = 0;
        return CAN_SetValue(channel, 0x03, &nothing, sizeof nothing);
    }
    [[nodiscard]] bool wait(int milliseconds) const {
        pollfd waited{descriptor_, POLLIN, 0};
        return poll(&waited, 1, milliseconds) == 1;
    }

  private:
    int descriptor_ = -1;
};

// A library loaded at run time.
class Library {
  public:
    explicit Library(const std::string& name) : handle_(dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL)) {}
    ~Library() { unload(); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    static constexpr const char* kName = "libpcanbasic.so";
    [[nodiscard]] static bool isLoaded(const std::string& path) {
        void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
        if (handle != nullptr) dlclose(handle);
        return handle != nullptr;
    }
    [[nodiscard]] bool loaded() const { return handle_ != nullptr; }
    [[nodiscard]] bool sameAs(const Library& other) const { return handle_ == other.handle_; }
    template <class Function>
    [[nodiscard]] Function* entry(const char* name) const {
        return reinterpret_cast<Function*>(dlsym(handle_, name));
    }
    void unload() {
        if (handle_ != nullptr) dlclose(handle_);
        handle_ = nullptr;
    }

  private:
    void* handle_;
};

// The receive notification taken from a loaded library, and left as it is.
inline std::uint32_t attachEventOf(const Library& library, std::uint16_t channel) {
    int descriptor = -1;
    return library.entry<decltype(CAN_GetValue)>("CAN_GetValue")(channel, 0x03, &descriptor, sizeof descriptor);
}

// Descriptors of this process.
inline int openHandles() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return static_cast<int>(std::count_if(begin(descriptors), end(descriptors), [](const auto&) { return true; }));
}

}  // namespace virtual_test
