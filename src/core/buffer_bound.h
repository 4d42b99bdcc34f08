// The library-wide bound on the length of value buffers.
#pragma once

#include <cstdint>

namespace torvik {

// Sets the bound. Where it changes the effective length of a device's buffers, the newest unread values that fit stay
// there in order of arrival, and the others are counted as cleared.
// False: valueMutex was not obtained, and the bound stays as it is.
bool setValueBufferLength(std::int32_t length);

}  // namespace torvik
