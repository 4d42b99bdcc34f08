#include "can/adapter_event.h"

#include "can/pcan_api.h"
#include "core/library_state.h"

namespace torvik {

std::uint32_t registerReceiveEvent() {
    int descriptor = -1;
    const std::uint32_t status =
        pcanGetValue(libraryState.channelHandle, pcan::receiveEvent, &descriptor, sizeof descriptor);
    if (status == pcan::ok) libraryState.receiveEvent.watchDescriptor(descriptor);
    return status;
}

std::uint32_t pcanEventOff() {
    libraryState.receiveEvent.watchDescriptor(-1);
    // The adapter has nothing of ours: whatever it answers, the next event is to be registered anew.
    libraryState.receiveEventSet = false;
    return pcanSetValue(libraryState.channelHandle, pcan::receiveEvent, 0);
}

}  // namespace torvik
