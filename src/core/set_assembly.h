// Assembling the value frames of a measuring cycle into a set, and storing complete sets.
#pragma once

#include <array>
#include <cstdint>

#include "core/device_record.h"

namespace torvik {

// Takes one value frame of a device. Called by the receive thread only.
void assembleValueFrame(DeviceRecord& record, const std::array<std::uint8_t, 8>& data);

}  // namespace torvik
