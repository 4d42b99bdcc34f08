// Ends with exit code 23 while a stream runs and three threads are busy inside the library: by return from main, or
// with "exit" as argument, by exit() in another thread. A second argument names a library to load before.
#include <array>
#include <chrono>
#include <cstdlib>
#include <string_view>
#include <thread>

#include "TORVIK.h"
#include "support/loaded_library.h"

namespace {

constexpr std::int32_t device = 1;
constexpr int exitCode = 23;

void readForEver() {
    std::array<double, 60> values{};
    for (;;) {
        std::int32_t count = 0;
        TORVIKreadMultiple(device, 0, values.data(), static_cast<std::int32_t>(values.size()), &count, nullptr);
        std::uint32_t ident = 0;
        TORVIKgetInterfaceIdent(device, 0, &ident);
    }
}

}  // namespace

int main(int argumentCount, char** arguments) {
    std::uint32_t channels = 0;
    if (TORVIKactivateStd(device, &channels) != 0) return 1;
    for (int i = 0; i < 3; ++i)
        std::thread(readForEver).detach();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    if (argumentCount > 2) {
        // Never unloaded: it lives until the process ends. Static, so that it is no leak.
        static const auto* const library = new torvik::test::LoadedLibrary(arguments[2]);
        if (!library->loaded()) return 2;
    }
    if (argumentCount > 1 && std::string_view(arguments[1]) == "exit") {
        std::thread([] { std::exit(exitCode); }).join();
    }
    return exitCode;
}
