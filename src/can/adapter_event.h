// How the receive event and the adapter are brought together; this differs between the systems' adapter libraries.
#pragma once

#include <cstdint>

namespace torvik {

// Windows: hands the receive event to the adapter. Linux: fetches the adapter's own descriptor to wait on.
// Result: the adapter's status.
std::uint32_t registerReceiveEvent();

// Takes the receive event from the adapter. Result: the adapter's status, 0x10000 when it is closed or not loaded.
std::uint32_t pcanEventOff();

}  // namespace torvik
