#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "api/TORVIK.h"
#include "api/device_call.h"
#include "params/unit_table.h"
#include "params/user_text.h"

using namespace torvik;

namespace {

// Kept: reading takes the channels 1..7, writing 0..8.
constexpr std::uint32_t lastReadChannel = 7;
constexpr std::uint32_t lastWriteChannel = 8;
constexpr std::uint32_t highestUnitNo = 255;
constexpr std::size_t longestText = 10;

// The parts of a unit text mode word.
struct UnitTextMode {
    explicit UnitTextMode(std::int32_t word)
        : valid(word >= 0),
          request(static_cast<std::uint32_t>(word) & 0xFF),
          charset(static_cast<std::uint32_t>(word) >> 8 & 0xFFFF) {}

    bool valid;
    std::uint32_t request;
    std::uint32_t charset;
};

// What a request means: the unit of the table, or one of the user texts.
constexpr std::uint32_t tableUnit = 0;
constexpr std::uint32_t lastUserText = 2;
constexpr std::uint32_t tableUnitOnly = 16;
constexpr std::uint32_t lastSetRequest = 18;

constexpr bool isReadChannel(std::uint32_t channel) {
    return channel >= 1 && channel <= lastReadChannel;
}

void writeText(std::string_view text, char* destination) {
    const std::span<char> buffer(destination, unitTextSize);
    *std::ranges::copy(text, buffer.begin()).out = '\0';
}

std::int32_t deliverUserText(const DeviceCall& call, std::uint32_t textNo, char* destination) {
    const auto text = readUserText(call.deviceNo(), textNo);
    if (!text) return failure;
    const auto end = std::ranges::find(*text, '\0');
    writeText(std::string_view(text->begin(), end), destination);
    return success;
}

std::int32_t setUnit(const DeviceCall& call, std::uint32_t channel, std::uint32_t unitNo) {
    return call.acknowledge(Command::setUnit,
                            Parameters().u8(static_cast<std::uint8_t>(channel)).u8(static_cast<std::uint8_t>(unitNo)));
}

}  // namespace

int32_t TORVIKgetUnitNo(int32_t deviceNo, int32_t channel, uint32_t* unitNo) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        const auto number = static_cast<std::uint32_t>(channel);
        if (!call.ready(isReadChannel(number) && unitNo != nullptr)) return failure;
        const auto answer = call.ask(Command::getUnit, Parameters().u8(static_cast<std::uint8_t>(number)));
        if (!answer) return failure;
        *unitNo = answer->byte(2);
        return success;
    });
}

int32_t TORVIKsetUnitNo(int32_t deviceNo, uint32_t channel, uint32_t unitNo) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(channel <= lastWriteChannel && unitNo <= highestUnitNo)) return failure;
        return setUnit(call, channel, unitNo);
    });
}

int32_t TORVIKgetUnitText(int32_t deviceNo, uint32_t channel, int32_t unitTextMode, char* text) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        const UnitTextMode mode(unitTextMode);
        if (!call.ready(text != nullptr && mode.valid && mode.request <= lastUserText)) return failure;
        if (mode.request != tableUnit) return deliverUserText(call, mode.request, text);
        if (!call.argumentsValid(isReadChannel(channel))) return failure;
        const auto answer = call.ask(Command::getUnit, Parameters().u8(static_cast<std::uint8_t>(channel)));
        if (!answer) return failure;
        const std::uint32_t unitNo = answer->byte(2);
        if (unitNo == unitOfUserText(1)) return deliverUserText(call, 1, text);
        if (unitNo == unitOfUserText(2)) return deliverUserText(call, 2, text);
        const auto unit = unitText(unitNo, mode.charset);
        if (!unit) return call.fail(error::internalCallFailed);
        writeText(*unit, text);
        return success;
    });
}

int32_t TORVIKsetUnitText(int32_t deviceNo, uint32_t channel, int32_t unitTextMode, const char* text) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        const UnitTextMode mode(unitTextMode);
        std::uint32_t textNo = mode.request & 0x0F;
        if (!call.ready(channel <= lastWriteChannel && text != nullptr && mode.valid &&
                        mode.request <= lastSetRequest && textNo <= lastUserText &&
                        strnlen(text, longestText + 1) <= longestText))
            return failure;
        if (textNo == tableUnit) {
            if (const auto unitNo = findUnit(text, mode.charset))
                return call.active() ? setUnit(call, channel, *unitNo) : failure;
            if (mode.request == tableUnitOnly) return call.fail(error::parameterExceedance);
            textNo = 1;
        }
        if (writeUserText(call.deviceNo(), textNo, text) != success) return failure;
        if (!call.active()) return failure;
        return setUserTextUnit(call.deviceNo(), channel, textNo);
    });
}
