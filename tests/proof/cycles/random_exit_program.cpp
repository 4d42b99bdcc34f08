// Ends at a random instant while four threads are inside the library, in a way that the seed chooses as well.
//
//   random_exit_program          ends at once with exit code 0
//   random_exit_program SEED     ends with exit code SEED mod 200; 250: nobody was inside; 251: no devices
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>

#include "TORVIK.h"
#include "virtual_control.h"

namespace {

constexpr int nobodyInside = 250;
constexpr int noDevices = 251;
constexpr auto longestWait = std::chrono::seconds(5);

// Never destroyed, like everything that the threads use until the end.
std::atomic<int> inside = 0;

template <class Call>
void callForEver(Call call) {
    for (unsigned round = 0;; ++round) {
        ++inside;
        call(round);
        --inside;
    }
}

std::int32_t activate(std::int32_t deviceNo) {
    const std::uint32_t commandId = 0x100 + 3 * static_cast<std::uint32_t>(deviceNo - 1);
    std::uint32_t channels = 0;
    return TORVIKactivateExtended(deviceNo, TORVIK_ADAPTER_USB, 1'000'000, 1000, &channels, commandId, commandId + 1,
                                  TORVIK_FLAG_PROTOCOL_KIND_16);
}

// Streams and reads; the device is there once one of the four has activated it.
void stream(unsigned) {
    activate(1);
    std::array<double, 60> values{};
    std::int32_t count = 0;
    TORVIKreadMultiple(1, 0, values.data(), static_cast<std::int32_t>(values.size()), &count, nullptr);
    TORVIKgetValue(1);
}

void ask(unsigned) {
    std::uint32_t ident = 0;
    TORVIKgetInterfaceIdent(1, 0, &ident);
}

void openAndClose(unsigned round) {
    activate(2);
    TORVIKrelease(round % 16 == 15 ? 0 : 2);
}

void restart(unsigned) {
    activate(3);
    TORVIKresetDevice(3);
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount < 2) return 0;
    const auto seed = std::stoull(arguments[1]);
    std::mt19937 random(static_cast<std::mt19937::result_type>(seed));
    if (virtualConfigure("[[amplifier]]\ncopies = 3\nfrequency = 1000\n") != 0) return noDevices;
    for (void (*call)(unsigned) : {stream, ask, openAndClose, restart})
        std::thread([call] { callForEver(call); }).detach();
    // As many instants between 10 and 100 microseconds as between 10 and 100 milliseconds.
    const double exponent = std::uniform_real_distribution<double>(-5, -1)(random);
    std::this_thread::sleep_for(std::chrono::duration<double>(std::pow(10.0, exponent)));
    const auto deadline = std::chrono::steady_clock::now() + longestWait;
    while (inside == 0 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    const int exitCode = inside == 0 ? nobodyInside : static_cast<int>(seed % 200);
    if (random() % 2 == 0) return exitCode;
    std::thread([exitCode] { std::exit(exitCode); }).join();
    return nobodyInside;
}
