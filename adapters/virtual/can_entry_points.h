/*
 * The ten entry points of the adapter interface, in the layout that its clients use. Plain C99.
 */
#ifndef VIRTUAL_CAN_ENTRY_POINTS_H
#define VIRTUAL_CAN_ENTRY_POINTS_H

#include <stdint.h>

#ifdef __cplusplus
#define CAN_NOEXCEPT noexcept
extern "C" {
#else
#define CAN_NOEXCEPT
#endif

typedef struct CanMessage {
    uint32_t id;
    uint8_t type;
    uint8_t length;
    uint8_t data[8];
} CanMessage;

typedef struct CanTimestamp {
    uint32_t milliseconds; /* of the monotonic clock */
    uint16_t overflow;     /* how often `milliseconds` has overflowed */
    uint16_t microseconds; /* 0..999 */
} CanTimestamp;

uint32_t CAN_Initialize(uint16_t channel, uint16_t btr0btr1, uint8_t hardwareType, uint32_t ioPort,
                        uint16_t interrupt) CAN_NOEXCEPT;
uint32_t CAN_Uninitialize(uint16_t channel) CAN_NOEXCEPT;
uint32_t CAN_Reset(uint16_t channel) CAN_NOEXCEPT;
uint32_t CAN_GetStatus(uint16_t channel) CAN_NOEXCEPT;
uint32_t CAN_Read(uint16_t channel, CanMessage* message, CanTimestamp* timestamp) CAN_NOEXCEPT;
uint32_t CAN_Write(uint16_t channel, CanMessage* message) CAN_NOEXCEPT;
uint32_t CAN_FilterMessages(uint16_t channel, uint32_t fromId, uint32_t toId, uint8_t mode) CAN_NOEXCEPT;
uint32_t CAN_GetValue(uint16_t channel, uint8_t parameter, void* buffer, uint32_t length) CAN_NOEXCEPT;
uint32_t CAN_SetValue(uint16_t channel, uint8_t parameter, void* buffer, uint32_t length) CAN_NOEXCEPT;
uint32_t CAN_GetErrorText(uint32_t status, uint16_t language, char* buffer) CAN_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
