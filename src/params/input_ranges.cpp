#include "params/input_ranges.h"

#include <algorithm>

#include "core/ask.h"
#include "core/device_table.h"
#include "core/error_codes.h"

namespace torvik {

namespace {

constexpr std::uint32_t scaledType = 3;  // its ranges are a thousand times smaller than they read
constexpr std::size_t choosableEntries = 4;

InputRange decode(const AnswerView& answer) {
    const std::uint32_t word = answer.u32();
    const std::uint32_t type = word >> 24;
    const double range = (word & 0x00FFFFFF) / 100.0;
    return {type, type == scaledType ? range / 1000.0 : range};
}

Parameters entryOf(std::uint32_t channel, std::uint32_t entry) {
    return Parameters().u8(static_cast<std::uint8_t>(channel)).u8(static_cast<std::uint8_t>(entry));
}

std::size_t entryLimit(const DeviceRecord& record) {
    if (libraryState.protocolKind == 32) return 10;
    return libraryState.protocolKind == 16 && record.firmwareVersion >= firstFirmwareWithTypes ? 10 : 1;
}

}  // namespace

std::optional<InputRange> readInputRange(std::uint8_t deviceNo, std::uint32_t channel, std::uint32_t entry) {
    const auto answer = ask(deviceNo, Command::inputTypeRange, entryOf(channel, entry));
    if (!answer) return std::nullopt;
    return decode(*answer);
}

std::optional<InputRangeList> readInputRanges(std::uint8_t deviceNo, std::uint32_t channel) {
    InputRangeList list;
    const std::size_t limit = entryLimit(deviceRecord(deviceNo));
    while (list.count < limit) {
        const auto entry = static_cast<std::uint32_t>(list.count + 1);
        const auto answer = exchangeAnswer(deviceNo, Command::inputTypeRange, entryOf(channel, entry));
        if (!answer) return std::nullopt;
        if (answer->refused()) {
            setError(deviceNo, answer->status());
            break;
        }
        list.entries[list.count++] = decode(*answer);
    }
    if (list.count == 0) return std::nullopt;
    return list;
}

InputRange chooseInputRange(std::span<const InputRange> offered, double sensitivity) {
    const auto choosable = offered.first(std::min(offered.size(), choosableEntries));
    const auto fitting =
        std::ranges::find_if(choosable, [=](const InputRange& entry) { return entry.range <= 2 * sensitivity; });
    return fitting == choosable.end() ? choosable.back() : *fitting;
}

std::int32_t setInputType(std::uint8_t deviceNo, std::uint32_t channel, std::uint8_t type) {
    if (channel != 0) {
        return acknowledge(deviceNo, Command::setInputType,
                           Parameters().u8(static_cast<std::uint8_t>(channel)).u8(type));
    }
    // Kept: only a command that could not be sent ends this early, and only the last acknowledgement counts.
    std::int32_t result = 0;
    const std::uint32_t channels = deviceRecord(deviceNo).activeChannels;
    for (std::uint32_t number = 1; number <= channels; ++number) {
        const Parameters parameters = Parameters().u8(static_cast<std::uint8_t>(number)).u8(type);
        if (sendCommand(deviceNo, Command::setInputType, parameters.bytes()) != 0) return -1;
        result = expectAck(deviceNo);
    }
    return result;
}

}  // namespace torvik
