// The frame around every export that works on a device: protection against a release that runs at the same time,
// nothing thrown across the C boundary, and the checks that most exports share as separate, named steps.
#pragma once

#include <cstdint>
#include <new>
#include <optional>

#include "core/ask.h"
#include "core/call_control.h"
#include "core/device_table.h"
#include "core/error_codes.h"
#include "core/library_state.h"

namespace torvik {

inline constexpr std::int32_t success = 0;
inline constexpr std::int32_t failure = -1;

// Channels as callers count them. Many setters take 0 as well, which the device interprets.
inline constexpr std::uint32_t lastChannel = channelLimit;
constexpr bool isChannel(std::uint32_t channel) {
    return channel >= 1 && channel <= lastChannel;
}

class DeviceCall {
  public:
    explicit DeviceCall(std::uint8_t deviceNo) : deviceNo_(deviceNo) {}

    std::uint8_t deviceNo() const { return deviceNo_; }
    DeviceRecord& record() const { return deviceRecord(deviceNo_); }

    // Stores a code and gives the usual result of a failure.
    std::int32_t fail(std::uint32_t code) const {
        setError(deviceNo_, code);
        return failure;
    }

    // The three usual checks. False: the code is stored.
    bool numberValid() const { return deviceNo_ < deviceLimit || refuse(error::parameterExceedance); }
    bool argumentsValid(bool condition) const { return condition || refuse(error::parameterExceedance); }
    bool active() const { return record().active || refuse(error::notActive); }

    // The order of the checks of the device parameters: the arguments come last.
    bool activeAnd(bool condition) const { return numberValid() && active() && argumentsValid(condition); }

    // The usual order of the checks.
    bool ready(bool condition) const { return numberValid() && argumentsValid(condition) && active(); }

    std::optional<AnswerView> ask(Command command, const Parameters& parameters = {}) const {
        return torvik::ask(deviceNo_, command, parameters);
    }

    // Result: 0 or -1.
    std::int32_t acknowledge(Command command, const Parameters& parameters = {}) const {
        return torvik::acknowledge(deviceNo_, command, parameters);
    }

  private:
    bool refuse(std::uint32_t code) const {
        setError(deviceNo_, code);
        return false;
    }

    std::uint8_t deviceNo_;
};

template <class Body>
std::int32_t runBody(const DeviceCall& call, std::int32_t failed, Body& body) noexcept {
    try {
        return body(call);
    } catch (const std::bad_alloc&) {
        setError(call.deviceNo(), error::outOfMemory);
    } catch (...) {
        setError(call.deviceNo(), error::internalCallFailed);
    }
    return failed;
}

// Runs `body` inside the record; `failed` is the export's own result of a failure. A call that fails because the device
// is released meanwhile ends with 0x30000113, whatever it was waiting for.
template <class Body>
std::int32_t deviceCall(std::int32_t deviceNo, std::int32_t failed, Body body) noexcept {
    const DeviceCall call(deviceNumber(deviceNo));
    const bool ofRecord = call.deviceNo() < deviceLimit;
    CallGate& gate = ofRecord ? call.record().gate : libraryGate;
    const FinishReleaseAtEnd finish(ofRecord ? &call.record() : nullptr);
    const Visit visit(gate);
    // One call of the body, so that the compiler sets it in here: a call and what it spills cost a single read much.
    const std::int32_t result = visit.inside() ? runBody(call, failed, body) : failed;
    if (result != failed) [[likely]]
        return result;
    if (!visit.inside() || (ofRecord && gate.closing())) {
        if (ofRecord) call.record().callCutShort = true;
        setError(call.deviceNo(), error::notActive);
    }
    return result;
}

template <class Body>
std::int32_t deviceCall(std::int32_t deviceNo, Body body) noexcept {
    return deviceCall(deviceNo, failure, body);
}

}  // namespace torvik
