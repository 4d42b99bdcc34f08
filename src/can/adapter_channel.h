// Opening and closing the adapter channel, and the receive thread's outer loop.
#pragma once

#include <cstdint>

#include "core/device_record.h"
#include "core/library_state.h"

namespace torvik {

inline constexpr std::uint16_t defaultBaudCode = 0x0014;  // 1 Mbit/s

// Opens the channel and starts the receive thread. All device records are lost; no call may be inside them, but for
// those that an earlier release has given up, whose records are left to them.
// Result: 0; 255 with the reason in a last error (0, which is no code, for an unknown adapter type).
std::uint8_t initAdapter(std::uint8_t deviceNo, std::uint8_t adapterType, std::uint16_t baudCode)
    REQUIRES(lifecycleMutex);

// Registers the receive event with the adapter.
// Result: the low 8 bits of the status.
std::uint8_t pcanEventOn();

// Stops the receive thread and takes all records down; closes the channel itself only when `uninitialize` is true, and
// otherwise waits for the thread without a limit: its code is unmapped next. Calls inside are woken and waited for to
// the deadline.
// Result: the low 8 bits of the last adapter status.
std::uint8_t releaseAdapter(bool uninitialize, platform::TimePoint deadline = platform::deadlineAfter(mutexLimit))
    REQUIRES(lifecycleMutex);

// What releasing all devices does to the adapter: as releaseAdapter, with every wait up to the deadline, and the table
// zeroed. The caller keeps new calls out of the records; a record that a call is still inside of is not zeroed.
void closeAdapter(platform::TimePoint deadline = platform::deadlineAfter(mutexLimit)) REQUIRES(lifecycleMutex);

}  // namespace torvik
