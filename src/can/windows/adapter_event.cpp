#include "can/adapter_event.h"

#include "can/pcan_api.h"
#include "core/library_state.h"

namespace torvik {

std::uint32_t registerReceiveEvent() {
    std::uint64_t handle = libraryState.receiveEvent.handle();
    return pcanSetValue(libraryState.channelHandle, pcan::receiveEvent, &handle, sizeof handle);
}

std::uint32_t pcanEventOff() {
    return pcanSetValue(libraryState.channelHandle, pcan::receiveEvent, 0);
}

}  // namespace torvik
