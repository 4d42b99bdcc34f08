// The ten entry points of an adapter library that is a class of the program: linking it takes the place of loading one.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include "can/pcan_api.h"

namespace torvik::test {

// The arguments of CAN_Initialize.
struct AdapterInitialization {
    std::uint16_t channel = 0;
    std::uint16_t baudCode = 0;
    std::uint8_t hardwareType = 0;
    std::uint32_t ioPort = 0;
    std::uint16_t interrupt = 0;
    friend bool operator==(const AdapterInitialization&, const AdapterInitialization&) = default;
};

// The arguments of one CAN_SetValue.
struct AdapterSetting {
    std::uint16_t channel = 0;
    std::uint8_t parameter = 0;
    std::uint64_t value = 0;
    std::uint32_t size = 0;
    friend bool operator==(const AdapterSetting&, const AdapterSetting&) = default;
};

// What an adapter says to the calls that it does not care about; it hides those that it does.
class AdapterDefaults {
  public:
    std::uint32_t initialize(const AdapterInitialization& /*arguments*/) { return pcan::ok; }
    std::uint32_t uninitialize(std::uint16_t /*channel*/) { return pcan::ok; }
    std::uint32_t reset() { return pcan::ok; }
    // -1 for everything: where a descriptor to wait on is asked for, that means there is none.
    std::uint32_t getValue(std::uint8_t /*parameter*/, void* value, std::uint32_t size) {
        std::memset(value, 0xFF, size);
        return pcan::ok;
    }
    std::uint32_t setValue(const AdapterSetting& /*setting*/) { return pcan::ok; }
    std::uint32_t getErrorText(std::uint16_t /*language*/, char* text) {
        *text = '\0';
        return pcan::ok;
    }
};

// `Adapter` is an AdapterDefaults with read(PcanMessage&, PcanTimestamp&), write(const PcanMessage&) and instance().
template <class Adapter>
class AdapterEntryPoints {
  public:
    // Null: there is none of this name.
    static void* find(std::string_view name) {
        const std::pair<std::string_view, void*> entries[] = {
            {"CAN_Initialize", address(initialize)},
            {"CAN_Uninitialize", address(uninitialize)},
            {"CAN_Reset", address(reset)},
            {"CAN_GetStatus", address(getStatus)},
            {"CAN_Read", address(read)},
            {"CAN_Write", address(write)},
            {"CAN_FilterMessages", address(filterMessages)},
            {"CAN_GetValue", address(getValue)},
            {"CAN_SetValue", address(setValue)},
            {"CAN_GetErrorText", address(getErrorText)},
        };
        for (const auto& [entry, function] : entries) {
            if (entry == name) return function;
        }
        return nullptr;
    }

  private:
    template <class Function>
    static void* address(Function* function) {
        return reinterpret_cast<void*>(function);
    }

    static std::uint32_t initialize(std::uint16_t channel, std::uint16_t baudCode, std::uint8_t hardwareType,
                                    std::uint32_t ioPort, std::uint16_t interrupt) {
        return Adapter::instance().initialize({channel, baudCode, hardwareType, ioPort, interrupt});
    }
    static std::uint32_t uninitialize(std::uint16_t channel) { return Adapter::instance().uninitialize(channel); }
    static std::uint32_t reset(std::uint16_t) { return Adapter::instance().reset(); }
    static std::uint32_t read(std::uint16_t, PcanMessage* message, PcanTimestamp* timestamp) {
        return Adapter::instance().read(*message, *timestamp);
    }
    static std::uint32_t write(std::uint16_t, PcanMessage* message) { return Adapter::instance().write(*message); }
    static std::uint32_t getValue(std::uint16_t, std::uint8_t parameter, void* value, std::uint32_t size) {
        return Adapter::instance().getValue(parameter, value, size);
    }
    static std::uint32_t setValue(std::uint16_t channel, std::uint8_t parameter, void* value, std::uint32_t size) {
        AdapterSetting setting{channel, parameter, 0, size};
        std::memcpy(&setting.value, value, size);
        return Adapter::instance().setValue(setting);
    }
    static std::uint32_t getErrorText(std::uint32_t, std::uint16_t language, char* text) {
        return Adapter::instance().getErrorText(language, text);
    }

    // The library wants these two and calls neither.
    static std::uint32_t getStatus(std::uint16_t) { return pcan::ok; }
    static std::uint32_t filterMessages(std::uint16_t, std::uint32_t, std::uint32_t, std::uint8_t) { return pcan::ok; }
};

}  // namespace torvik::test
