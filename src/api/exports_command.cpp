#include <algorithm>
#include <span>

#include "api/TORVIKcommand.h"
#include "api/device_call.h"

using namespace torvik;

namespace {

// Whether the device sends exactly one answer.
bool drawsOneAnswer(Command command) {
    switch (command) {
        case Command::readUserText:
        case Command::readModelName:
        case Command::maximumMinimum:
        case Command::requestValues:
        case Command::resetDevice:
            return false;
        default:
            return true;
    }
}

}  // namespace

int32_t TORVIKcommand(int32_t deviceNo, uint8_t code, const uint8_t* parameters, uint32_t length, uint8_t answer[8]) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        const auto command = static_cast<Command>(code);
        const bool parametersValid = length == 0 || (parameters != nullptr && length <= Parameters::limit);
        if (!call.ready(answer != nullptr && parametersValid && drawsOneAnswer(command))) return failure;
        Parameters bytes;
        for (std::uint32_t i = 0; i < length; ++i)
            bytes.u8(parameters[i]);
        const auto received = exchangeAnswer(call.deviceNo(), command, bytes);
        if (!received) return failure;
        std::ranges::copy(received->bytes(), answer);
        return received->refused() ? call.fail(received->status()) : success;
    });
}
