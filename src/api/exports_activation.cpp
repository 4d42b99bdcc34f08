#include "api/TORVIK.h"
#include "api/device_call.h"
#include "core/activation.h"

using namespace torvik;

namespace {

// None waits for its turn inside a record, where a release would wait for it.
std::int32_t takeRecord(const DeviceCall& outside, Activation& activation) {
    if (!lifecycleMutex.lockUntil(activation.deadline())) return outside.fail(error::mutexTimeout);
    const LifecycleLock lock;
    return deviceCall(outside.deviceNo(), [&](const DeviceCall& call) NO_THREAD_SAFETY_ANALYSIS {
        if (call.record().active) return call.fail(error::alreadyActive);
        return activation.begin();
    });
}

std::int32_t activate(std::int32_t deviceNo, const ActivationSettings& settings, std::uint32_t* channelCount) {
    const DeviceCall outside(deviceNumber(deviceNo));
    if (!outside.argumentsValid(channelCount != nullptr) || !outside.numberValid()) return failure;
    const Visit inLibrary(libraryGate);
    if (!inLibrary.inside() || adapterIsInherited()) return outside.fail(error::notActive);
    Activation activation(outside.deviceNo(), settings);
    std::int32_t result = takeRecord(outside, activation);
    if (result == success) {
        result = deviceCall(deviceNo, [&](const DeviceCall&) { return activation.complete(*channelCount); });
    }
    activation.finish();
    return result;
}

}  // namespace

int32_t TORVIKactivateStd(int32_t deviceNo, uint32_t* channelCount) {
    return activate(deviceNo, ActivationSettings{}, channelCount);
}

int32_t TORVIKactivateExtended(int32_t deviceNo, uint8_t adapterType, uint32_t baudRate, uint32_t bufferSize,
                               uint32_t* channelCount, uint32_t commandCanId, uint32_t answerCanId, uint32_t flags) {
    const ActivationSettings settings{adapterType, baudRate, bufferSize, commandCanId, answerCanId, flags};
    return activate(deviceNo, settings, channelCount);
}

int32_t TORVIKrelease(int32_t deviceNo) {
    // Nothing to release: the other threads are gone and may have owned any lock.
    if (platform::processEnds() || adapterIsInherited()) return success;
    const Visit inLibrary(libraryGate);
    // The library is being unloaded, which releases everything.
    if (!inLibrary.inside()) return success;
    if (deviceNo == 0) {
        releaseAll();
    } else if (deviceNo >= 1 && deviceNo <= deviceLimit) {
        releaseDevice(static_cast<std::uint8_t>(deviceNo));
    }
    return success;
}

int32_t TORVIKgetInterfaceIdent(int32_t deviceNo, uint8_t index, uint32_t* ident) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(ident != nullptr)) return failure;
        const auto answer = call.ask(Command::interfaceIdent, Parameters().u8(index & 3));
        if (!answer) return failure;
        *ident = answer->u32();
        return success;
    });
}
