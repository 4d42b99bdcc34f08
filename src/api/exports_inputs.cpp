#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "api/TORVIK.h"
#include "api/device_call.h"
#include "core/library_state.h"
#include "params/calibration_values.h"
#include "params/device_numbers.h"
#include "params/device_reset.h"
#include "params/input_ranges.h"

using namespace torvik;

namespace {

constexpr std::uint32_t lastRangeEntry = 5;
constexpr std::uint32_t lastCalibrationIndex = 48;
constexpr std::uint32_t lastCalibrationChannel = 7;
constexpr double epsilon = std::numeric_limits<double>::epsilon();

Parameters calibrationValue(std::uint32_t index, std::uint32_t channel) {
    return Parameters().u8(static_cast<std::uint8_t>(index)).u8(static_cast<std::uint8_t>(channel));
}

std::int32_t writeInputRange(const DeviceCall& call, std::uint32_t channel, std::uint32_t entry, std::uint32_t range) {
    const std::int32_t result = call.acknowledge(
        Command::writeInputRange,
        Parameters().u8(static_cast<std::uint8_t>(channel)).u8(static_cast<std::uint8_t>(entry)).u32(range));
    return result == success ? restartAfterSetting(call.deviceNo()) : result;
}

}  // namespace

int32_t TORVIKgetInTypeRange(int32_t deviceNo, uint32_t channel, uint32_t* type, double* range) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(channel <= lastChannel && type != nullptr && range != nullptr)) return failure;
        // Kept: where channels have lists, channel 0 means the first entry of channel 1.
        const bool listed = channel == 0 && call.record().firmwareVersion >= firstFirmwareWithTypes;
        const auto present = readInputRange(call.deviceNo(), listed ? 1 : channel, listed ? 1 : 0);
        if (!present) return failure;
        *type = present->type;
        *range = present->range;
        return success;
    });
}

int32_t TORVIKgetAllInTypesRanges(int32_t deviceNo, uint32_t channel, uint32_t* count, uint32_t* types,
                                  double* ranges) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(isChannel(channel))) return failure;
        const auto list = readInputRanges(call.deviceNo(), channel);
        if (!list) return failure;
        const auto offered = list->offered();
        if (types != nullptr) std::ranges::transform(offered, types, &InputRange::type);
        if (ranges != nullptr) std::ranges::transform(offered, ranges, &InputRange::range);
        if (count != nullptr) *count = static_cast<std::uint32_t>(offered.size());
        return success;
    });
}

int32_t TORVIKsetInType(int32_t deviceNo, uint32_t channel, uint8_t type) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(channel <= lastChannel)) return failure;
        if (call.record().firmwareVersion < firstFirmwareWithTypes) return call.fail(error::firmwareUnsupported);
        const std::int32_t result = setInputType(call.deviceNo(), channel, type);
        return result == success ? restartAfterSetting(call.deviceNo()) : result;
    });
}

int32_t TORVIKFABwriteInputRange(int32_t deviceNo, uint32_t channel, uint32_t entry, double range) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        // Kept: the factor of a thousand that reading applies to type 3 is not applied here.
        const auto number = hundredths(range);
        if (!call.activeAnd(channel <= lastChannel && entry <= lastRangeEntry && number)) return failure;
        return writeInputRange(call, channel, entry, *number);
    });
}

int32_t TORVIKreadInputSensitivity(int32_t deviceNo, uint32_t channel, double* sensitivity) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.argumentsValid(isChannel(channel)) || !call.activeAnd(true)) return failure;
        const auto present = readInputRange(call.deviceNo(), channel, 0);
        if (!present) return failure;
        if (std::abs(present->range) <= epsilon) return call.fail(error::notStored);
        const auto answer = call.ask(Command::readAoutScale, Parameters().u8(static_cast<std::uint8_t>(channel)));
        if (!answer) return failure;
        const double scale = answer->f32();
        if (!isNan(scale) && std::abs(scale) <= epsilon) return call.fail(error::notStored);
        if (sensitivity != nullptr) *sensitivity = present->range / scale;
        // Kept: the input type is the result.
        return static_cast<std::int32_t>(present->type);
    });
}

int32_t TORVIKwriteInputSensitivity(int32_t deviceNo, uint32_t channel, int32_t mode, double sensitivity) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.argumentsValid(mode >= 0 && !isNan(sensitivity) && sensitivity > epsilon)) return failure;
        if (mode != 0) return call.fail(error::firmwareUnsupported);
        const std::uint32_t listed = channel == 0 ? 1 : channel;
        if (!call.activeAnd(isChannel(listed))) return failure;
        const auto list = readInputRanges(call.deviceNo(), listed);
        if (!list) return failure;
        if (!call.argumentsValid(sensitivity <= list->offered().front().range)) return failure;
        const InputRange chosen = chooseInputRange(list->offered(), sensitivity);
        const auto range = hundredths(chosen.range);
        if (!call.argumentsValid(range.has_value())) return failure;
        if (writeInputRange(call, channel, 0, *range) != success) return failure;
        if (!call.active()) return failure;
        return call.acknowledge(Command::writeAoutScale,
                                Parameters().u8(static_cast<std::uint8_t>(channel)).f32(chosen.range / sensitivity));
    });
}

int32_t TORVIKreadCal(int32_t deviceNo, int32_t index, uint32_t channel, double* value) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        const auto number = static_cast<std::uint32_t>(index);
        if (!call.argumentsValid(number <= lastCalibrationIndex && channel <= lastCalibrationChannel &&
                                 value != nullptr))
            return failure;
        if (!call.activeAnd(true)) return failure;
        const CalibrationFormat format = calibrationFormat(libraryState.protocolKind, number);
        if (format == CalibrationFormat::unknownProtocol) return call.fail(error::parameterExceedance);
        // Kept: whether it could be sent is not looked at; the answer tells.
        sendCommand(call.deviceNo(), Command::readCalibrationValue, calibrationValue(number, channel).bytes());
        const auto answer = nextAnswer(call.deviceNo());
        if (!answer) return failure;
        if (format == CalibrationFormat::floating) *value = answer->f32();
        if (format == CalibrationFormat::integer) *value = static_cast<std::int32_t>(answer->u32());
        return success;
    });
}

int32_t TORVIKFABwriteCal(int32_t deviceNo, uint32_t index, uint32_t channel, double value) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.activeAnd(index <= lastCalibrationIndex && channel <= lastCalibrationChannel)) return failure;
        const CalibrationFormat format = calibrationFormat(libraryState.protocolKind, index);
        // Kept: another code than when it is read.
        if (format == CalibrationFormat::unknownProtocol) return call.fail(error::internalCallFailed);
        if (!call.argumentsValid(format != CalibrationFormat::none)) return failure;
        const Parameters place = calibrationValue(index, channel);
        if (format == CalibrationFormat::floating)
            return call.acknowledge(Command::writeCalibrationValue, Parameters(place).f32(value));
        const auto number = truncated(value);
        if (!call.argumentsValid(number.has_value())) return failure;
        return call.acknowledge(Command::writeCalibrationValue,
                                Parameters(place).u32(static_cast<std::uint32_t>(*number)));
    });
}
