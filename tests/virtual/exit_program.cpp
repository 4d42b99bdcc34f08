// Ends with exit code 23 while three threads are busy inside the adapter.
#include <chrono>
#include <thread>

#include "can_entry_points.h"
#include "system_support.hpp"
#include "virtual_control.h"

namespace {

constexpr std::uint16_t kUsb = 0x51;

void readForEver(const virtual_test::Library& library) {
    auto* const read = library.entry<decltype(CAN_Read)>("CAN_Read");
    auto* const write = library.entry<decltype(CAN_Write)>("CAN_Write");
    for (;;) {
        CanMessage message{0x100, 0, 2, {0x80, 0x2B}};
        write(kUsb, &message);
        while (read(kUsb, &message, nullptr) == 0)
            continue;
    }
}

}  // namespace

int main() {
    // Never unloaded: that is what ends with the process.
    static const auto* const library = new virtual_test::Library(TORVIK_VIRTUAL_ADAPTER);
    if (!library->loaded()) return 1;
    if (library->entry<decltype(CAN_Initialize)>("CAN_Initialize")(kUsb, 0x0014, 0, 0, 0) != 0) return 2;
    if (virtual_test::attachEventOf(*library, kUsb) != 0) return 3;
    for (int i = 0; i < 3; ++i)
        std::thread([] { readForEver(*library); }).detach();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    return 23;
}
