#include "can_entry_points.h"

#include "adapter.hpp"
#include "guarded.hpp"

using virtual_adapter::Adapter;
using virtual_adapter::guarded;
using virtual_adapter::kNoResource;

// The simulated channels have no hardware to choose.
uint32_t CAN_Initialize(uint16_t channel, uint16_t btr0btr1, uint8_t /*hardwareType*/, uint32_t /*ioPort*/,
                        uint16_t /*interrupt*/) noexcept {
    return guarded(kNoResource, [&](Adapter& adapter) { return adapter.initialize(channel, btr0btr1); });
}

uint32_t CAN_Uninitialize(uint16_t channel) noexcept {
    return guarded(kNoResource, [&](Adapter& adapter) { return adapter.uninitialize(channel); });
}

uint32_t CAN_Reset(uint16_t channel) noexcept {
    return guarded(kNoResource, [&](Adapter& adapter) { return adapter.reset(channel); });
}

uint32_t CAN_GetStatus(uint16_t channel) noexcept {
    return guarded(kNoResource, [&](Adapter& adapter) { return adapter.status(channel); });
}

uint32_t CAN_Read(uint16_t channel, CanMessage* message, CanTimestamp* timestamp) noexcept {
    return guarded(kNoResource, [&](Adapter& adapter) { return adapter.read(channel, message, timestamp); });
}

uint32_t CAN_Write(uint16_t channel, CanMessage* message) noexcept {
    return guarded(kNoResource, [&](Adapter& adapter) { return adapter.write(channel, message); });
}

uint32_t CAN_FilterMessages(uint16_t channel, uint32_t fromId, uint32_t toId, uint8_t mode) noexcept {
    return guarded(kNoResource, [&](Adapter& adapter) { return adapter.filterMessages(channel, fromId, toId, mode); });
}

uint32_t CAN_GetValue(uint16_t channel, uint8_t parameter, void* buffer, uint32_t length) noexcept {
    return guarded(kNoResource, [&](Adapter& adapter) { return adapter.getValue(channel, parameter, buffer, length); });
}

uint32_t CAN_SetValue(uint16_t channel, uint8_t parameter, void* buffer, uint32_t length) noexcept {
    return guarded(kNoResource, [&](Adapter& adapter) { return adapter.setValue(channel, parameter, buffer, length); });
}

uint32_t CAN_GetErrorText(uint32_t status, uint16_t language, char* buffer) noexcept {
    return guarded(kNoResource, [&](Adapter& adapter) { return adapter.errorText(status, language, buffer); });
}
