// Restarting a device, and pausing for it.
#pragma once

#include <cstdint>

namespace torvik {

// Restarts an active device and brings its value stream back to what it was.
// Result: 0; 229 when the value buffers could not be cleared; -1 with lastError set.
std::int32_t restartDevice(std::uint8_t deviceNo);

// The restart that ends a setting. Result: as restartDevice, but 0 where the firmware knows no restart (0x30000062
// stays stored).
std::int32_t restartAfterSetting(std::uint8_t deviceNo);

// Loads a stored set of settings; set 1 is stored as set 0 as well. Result: as restartAfterSetting.
std::int32_t loadSettings(std::uint8_t deviceNo, std::uint32_t set);

}  // namespace torvik
