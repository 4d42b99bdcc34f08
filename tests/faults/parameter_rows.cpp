// Exports of device parameters: their calls and answers are those of the parameter tests.
#include <algorithm>
#include <map>

#include "TORVIK.h"
#include "faults/fault_row.h"
#include "params/export_tables.h"

namespace torvik::test {

namespace {

using namespace std::chrono_literals;
using u8 = std::uint8_t;
using u32 = std::uint32_t;
using Answered = ExpectedExchange::Answer;

Story restartsAfter(u8 command) {
    return [command](ExpectedExchange& exchange) {
        return exchange.acknowledge(command) ? exchange.restartAfterSetting() : std::int32_t{-1};
    };
}

// The entries of a channel's list; a refusal ends it. False: not even the first came.
bool inputRanges(ExpectedExchange& exchange) {
    const bool onlyOne = exchange.protocolKind() == 16 && !exchange.knows(firmware_with::allCalibrations);
    const int longestList = onlyOne ? 1 : 10;
    for (int entry = 0; entry < longestList; ++entry) {
        const Answered answer = exchange.exchange(0xA2);
        if (answer == Answered::missing) return false;
        if (answer == Answered::refused) {
            exchange.storeRefusal();
            return entry > 0;
        }
    }
    return true;
}

std::int32_t inputSensitivity(ExpectedExchange& exchange) {
    if (!inputRanges(exchange)) return -1;
    if (!exchange.acknowledge(0x34) || exchange.restartAfterSetting() != 0) return -1;
    return exchange.acknowledge(0x07) ? 0 : -1;
}

// The first answer carries nothing; the code of a missing second one is replaced.
std::int32_t maximumMinimum(ExpectedExchange& exchange) {
    if (!exchange.send(0x53) || !exchange.askNext()) return -1;
    const Answered answer = exchange.take();
    if (answer == Answered::missing) return exchange.fail(expected_code::internalCallFailed);
    if (answer == Answered::good) return 0;
    exchange.storeRefusal();
    return -1;
}

std::int32_t deviceMode(ExpectedExchange& exchange) {
    switch (exchange.exchange(0x26)) {
        case Answered::good:
            return 0;
        case Answered::refused:
            return exchange.fail(expected_code::internalCallFailed);
        default:
            return -1;
    }
}

// Whether the command could be sent is not looked at.
std::int32_t calibrationValue(ExpectedExchange& exchange) {
    exchange.send(0x17);
    return exchange.askNext() ? 0 : -1;
}

std::int32_t inputType(ExpectedExchange& exchange) {
    if (!exchange.knows(firmware_with::allCalibrations)) return exchange.fail(expected_code::firmwareUnsupported);
    return exchange.acknowledge(0xA3) ? exchange.restartAfterSetting() : -1;
}

// Protocol kind 32 has no such value.
std::int32_t calibrationValueOfKind16(ExpectedExchange& exchange) {
    if (exchange.protocolKind() == 32) return exchange.fail(expected_code::parameterExceedance);
    return exchange.acknowledge(0x18) ? 0 : -1;
}

// Only a failed send ends it early, and only the last acknowledgement counts.
std::int32_t inputTypeOfAllChannels(ExpectedExchange& exchange) {
    if (!exchange.knows(firmware_with::allCalibrations)) return exchange.fail(expected_code::firmwareUnsupported);
    constexpr int channels = 6;
    bool accepted = false;
    for (int channel = 0; channel < channels; ++channel) {
        if (!exchange.send(0xA3)) return -1;
        accepted = exchange.takeAcknowledgement();
    }
    return accepted ? exchange.restartAfterSetting() : -1;
}

std::int32_t factorySettings(ExpectedExchange& exchange) {
    if (!exchange.acknowledge(0x09) || !exchange.pause(300ms)) return -1;
    return exchange.acknowledge(0x0A) ? exchange.restartAfterSetting() : -1;
}

// Those whose exchange is not one command with its answer.
const std::map<std::string, Story>& longerStories() {
    static const std::map<std::string, Story> stories = {
        {"TORVIKresetDevice", [](ExpectedExchange& exchange) { return exchange.restart(); }},
        {"TORVIKsetMode", restartsAfter(0x27)},
        {"TORVIKloadSettings", restartsAfter(0x09)},
        {"TORVIKwriteAoutOffset", restartsAfter(0x05)},
        {"TORVIKsetAoutType", restartsAfter(0x0E)},
        {"TORVIKsetInType", inputType},
        {"TORVIKFABwriteInputRange", restartsAfter(0x34)},
        {"TORVIKsetFrequency", restartsAfter(0x8B)},
        {"TORVIKgetMode", deviceMode},
        {"TORVIKreadMaxMinVal", maximumMinimum},
        {"TORVIKgetAllInTypesRanges", [](ExpectedExchange& exchange) { return inputRanges(exchange) ? 0 : -1; }},
        {"TORVIKwriteInputSensitivity", inputSensitivity},
        {"TORVIKreadInputSensitivity",
         [](ExpectedExchange& exchange) { return exchange.ask(0xA2) && exchange.ask(0x06) ? 2 : -1; }},
        {"TORVIKreadCal", calibrationValue},
        {"TORVIKgetDataRateRange",
         [](ExpectedExchange& exchange) { return exchange.ask(0x63) && exchange.ask(0x63) ? 0 : -1; }},
    };
    return stories;
}

// As many entries as a channel can have, all of the same range.
std::vector<Answer> fullList() {
    return std::vector<Answer>(10, accepts(0xA2, {1, 0x00, 0x03, 0xE8}));
}

FaultRow rowOf(const ExportRow& row) {
    FaultRow result{row.name, "", row.call, {}, row.answers};
    const auto longer = longerStories().find(row.name);
    const u8 command = commandOf(row.sent.front());
    if (longer != longerStories().end()) {
        result.story = longer->second;
    } else {
        result.story = row.unanswered == code::internalCallFailed ? acknowledges(command) : asks(command);
    }
    if (result.exportName == "TORVIKgetAllInTypesRanges" || result.exportName == "TORVIKwriteInputSensitivity")
        result.answers = fullList();
    return result;
}

Call fillsText(std::int32_t (*function)(std::int32_t, u32, std::int32_t, char*), u32 channel, std::int32_t mode) {
    return fills([=](std::int32_t deviceNo, CallerMemory& memory) {
        return function(deviceNo, channel, mode, memory.text.data());
    });
}

// Other arguments of the same exports, with longer exchanges.
std::vector<FaultRow> longerVariants() {
    return {
        {"TORVIKloadSettings", "ofTheFactory", writes(TORVIKloadSettings, 1U), factorySettings},
        {"TORVIKreadTEDSrawData", "threeWords", fills([](std::int32_t deviceNo, CallerMemory& memory) {
             return TORVIKreadTEDSrawData(deviceNo, 1, memory.bytes.data(), 10, 0);
         }),
         [](ExpectedExchange& exchange) { return askAll(exchange, 0x65, 3) ? 0 : -1; }},
        {"TORVIKsetInType", "ofAllChannels", writes(TORVIKsetInType, 0U, u8{1}), inputTypeOfAllChannels},
        {"TORVIKgetUnitText", "ofTheUser", fillsText(TORVIKgetUnitText, 1, 1),
         [](ExpectedExchange& exchange) { return asksForUserText(exchange) ? 0 : -1; }},
        {"TORVIKsetUnitText", "ofTheUser", writes(TORVIKsetUnitText, 3U, 2, "daN"),
         [](ExpectedExchange& exchange) { return writesUserText(exchange) ? 0 : -1; }},
        {"TORVIKgetInTypeRange", "ofAllChannels", reads<u32, double>(TORVIKgetInTypeRange, 0U), asks(0xA2)},
        {"TORVIKreadCal", "ofASecondBank", reads<double>(TORVIKreadCal, 40, 3U), calibrationValue},
        {"TORVIKFABwriteCal", "ofASecondBank", writes(TORVIKFABwriteCal, 40U, 3U, -2.7), calibrationValueOfKind16},
        {"TORVIKsetCounterFreqMode", "ofSubZero", writes(TORVIKsetCounterFreqMode, 1, 0U, 7U),
         [](ExpectedExchange& exchange) { return exchange.acknowledge(0x6A) && exchange.ask(0x49) ? 0 : -1; }},
    };
}

}  // namespace

std::vector<FaultRow> parameterRows() {
    std::vector<FaultRow> rows;
    for (const ExportFamily& family :
         {identityExports(), scalingExports(), inputExports(), unitExports(), rateExports(), canExports()})
        std::ranges::transform(family.exports, std::back_inserter(rows), rowOf);
    for (FaultRow& row : longerVariants())
        rows.push_back(std::move(row));
    return rows;
}

}  // namespace torvik::test
