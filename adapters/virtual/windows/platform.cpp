#include "platform.hpp"

#include "lock.hpp"

namespace virtual_adapter {

Nanoseconds monotonicNow() {
    static const std::uint64_t frequency = [] {
        LARGE_INTEGER value{};
        QueryPerformanceFrequency(&value);
        return static_cast<std::uint64_t>(value.QuadPart);
    }();
    LARGE_INTEGER count{};
    QueryPerformanceCounter(&count);
    const auto ticks = static_cast<std::uint64_t>(count.QuadPart);
    constexpr std::uint64_t second = 1'000'000'000;
    return ticks / frequency * second + ticks % frequency * second / frequency;
}

void callAroundFork(void (* /*before*/)(), void (* /*inParent*/)(), void (* /*inChild*/)()) {}

std::optional<std::string> environmentVariable(const char* name) {
    // The run-time's copy of the environment does not see what the host sets after the library was loaded.
    const DWORD size = GetEnvironmentVariableA(name, nullptr, 0);
    if (size == 0) return std::nullopt;
    std::string value(size, '\0');
    value.resize(GetEnvironmentVariableA(name, value.data(), size));
    return value;
}

}  // namespace virtual_adapter
