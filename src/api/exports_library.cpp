#include <algorithm>
#include <span>

#include "api/TORVIK.h"
#include "api/device_call.h"
#include "core/error_table.h"
#include "core/library_state.h"

using namespace torvik;

namespace {

constexpr std::size_t errorTextSize = 128;
constexpr std::uint32_t version = 0x00010011;

std::int32_t takeLibraryError(const DeviceCall& call, std::uint32_t* code) {
    if (libraryState.lastProtocolError != 0 && libraryState.lastProtocolErrorDevice == call.deviceNo()) {
        *code = libraryState.lastProtocolError.exchange(0);
        libraryState.lastProtocolErrorDevice = noDevice;
        return success;
    }
    *code = call.record().lastError.exchange(0);
    return success;
}

}  // namespace

int32_t TORVIKDllVersion(uint32_t* versionNumber) {
    *versionNumber = version;
    return success;
}

int32_t TORVIKgetLastErrorText(int32_t deviceNo, char* text, uint32_t* code) {
    const Visit inLibrary(libraryGate);
    if (text == nullptr || code == nullptr) return failure;
    const std::span<char> buffer(text, errorTextSize);
    // Read and cleared in one step: a failure stored meanwhile by another thread is not lost.
    const std::uint32_t lastError = lastErrorOf(deviceNumber(deviceNo)).exchange(0);
    *code = lastError;
    if (lastError == error::none) {
        std::ranges::copy(std::span("no error exists"), buffer.begin());
        return success;
    }
    formatError(lastError, buffer);
    libraryState.lastProtocolError = 0;
    return success;
}

int32_t TORVIKgetLastProtocolError(int32_t deviceNo, uint32_t kind, uint8_t index, uint32_t* code) {
    constexpr std::uint32_t libraryKind = 1;
    constexpr std::uint32_t deviceKind = 2;
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.argumentsValid(code != nullptr && (kind == libraryKind || kind == deviceKind))) return failure;
        if (!call.numberValid() || !call.active()) return failure;
        if (kind == libraryKind) return takeLibraryError(call, code);
        const auto answer = call.ask(Command::protocolError, Parameters().u8(index));
        if (!answer) return failure;
        *code = answer->u32();
        return success;
    });
}

int32_t TORVIKgetLastValueError(int32_t deviceNo, uint8_t index, uint8_t* data) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(data != nullptr)) return failure;
        const auto answer = call.ask(Command::valueError, Parameters().u8(index));
        if (!answer) return failure;
        std::ranges::copy(answer->data(), data);
        return success;
    });
}

int32_t TORVIKresetStatus(int32_t deviceNo) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(true)) return failure;
        return call.acknowledge(Command::resetStatus);
    });
}
