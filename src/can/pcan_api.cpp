#include "can/pcan_api.h"

#include <atomic>

#include "core/library_state.h"
#include "platform/dynamic_library.h"

namespace torvik {

namespace {

struct PcanApi {
    void* module = nullptr;
    std::uint32_t (*initialize)(std::uint16_t, std::uint16_t, std::uint8_t, std::uint32_t, std::uint16_t) = nullptr;
    std::uint32_t (*uninitialize)(std::uint16_t) = nullptr;
    std::uint32_t (*reset)(std::uint16_t) = nullptr;
    std::uint32_t (*getStatus)(std::uint16_t) = nullptr;
    std::uint32_t (*read)(std::uint16_t, PcanMessage*, PcanTimestamp*) = nullptr;
    std::uint32_t (*write)(std::uint16_t, PcanMessage*) = nullptr;
    std::uint32_t (*filterMessages)(std::uint16_t, std::uint32_t, std::uint32_t, std::uint8_t) = nullptr;
    std::uint32_t (*getValue)(std::uint16_t, std::uint8_t, void*, std::uint32_t) = nullptr;
    std::uint32_t (*setValue)(std::uint16_t, std::uint8_t, void*, std::uint32_t) = nullptr;
    std::uint32_t (*getErrorText)(std::uint32_t, std::uint16_t, char*) = nullptr;
};

constinit PcanApi api;
constinit std::atomic<bool> loaded = false;

// The one list of the entry points: what clears, finds and checks them goes through here, in this order.
template <class Action>
void forEachEntry(Action action) {
    action("CAN_Initialize", api.initialize);
    action("CAN_Uninitialize", api.uninitialize);
    action("CAN_Reset", api.reset);
    action("CAN_GetStatus", api.getStatus);
    action("CAN_Read", api.read);
    action("CAN_Write", api.write);
    action("CAN_FilterMessages", api.filterMessages);
    action("CAN_GetValue", api.getValue);
    action("CAN_SetValue", api.setValue);
    action("CAN_GetErrorText", api.getErrorText);
}

bool usable() {
    return libraryState.adapterOpen && loaded;
}

}  // namespace

bool pcanLoaded() {
    return loaded;
}

std::uint32_t loadPcanApi() {
    forEachEntry([](const char*, auto& entry) { entry = nullptr; });
    if (!loaded) {
        void* const module = platform::loadAdapterLibrary();
        if (module == nullptr) return pcan::unknownError;
        api.module = module;
    }
    bool complete = api.module != nullptr;
    forEachEntry([&complete]<class Entry>(const char* name, Entry& entry) {
        if (api.module != nullptr) entry = reinterpret_cast<Entry>(platform::findSymbol(api.module, name));
        complete = complete && entry != nullptr;
    });
    loaded = complete;
    return complete ? pcan::ok : pcan::unknownError;
}

std::uint32_t pcanInitialize(std::uint16_t channel, std::uint16_t baudCode) {
    return loaded ? api.initialize(channel, baudCode, 0, 0, 0) : pcan::unknownError;
}

std::uint32_t pcanUninitialize(std::uint16_t channel) {
    if (!loaded || api.uninitialize == nullptr) return pcan::unknownError;
    const std::uint32_t status = api.uninitialize(channel);
    api.uninitialize = nullptr;
    return status;
}

std::uint32_t pcanReset(std::uint16_t channel) {
    return usable() ? api.reset(channel) : pcan::unknownError;
}

std::uint32_t pcanRead(std::uint16_t channel, PcanMessage& message, PcanTimestamp& timestamp) {
    return usable() ? api.read(channel, &message, &timestamp) : pcan::unknownError;
}

std::uint32_t pcanWrite(std::uint16_t channel, PcanMessage& message) {
    return usable() ? api.write(channel, &message) : pcan::unknownError;
}

std::uint32_t pcanGetValue(std::uint16_t channel, std::uint8_t parameter, void* value, std::uint32_t size) {
    return usable() ? api.getValue(channel, parameter, value, size) : pcan::unknownError;
}

std::uint32_t pcanSetValue(std::uint16_t channel, std::uint8_t parameter, void* value, std::uint32_t size) {
    return usable() ? api.setValue(channel, parameter, value, size) : pcan::unknownError;
}

std::uint32_t pcanSetValue(std::uint16_t channel, std::uint8_t parameter, std::uint32_t value) {
    return pcanSetValue(channel, parameter, &value, sizeof value);
}

void printPcanError(std::uint32_t status) {
    std::array<char, 256> text{};
    if (usable() && api.getErrorText(status, 0, text.data()) == pcan::ok) {
        text.back() = '\0';
        debugPrint("%s\n", text.data());
    } else {
        debugPrint("An error ocurred. Error-code's text (%Xh) couldn't be retrieved\n", status);
    }
}

}  // namespace torvik
