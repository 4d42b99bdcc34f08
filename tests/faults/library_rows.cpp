// Exports of the library itself, of activation and of measured values.
#include "TORVIK.h"
#include "TORVIKcommand.h"
#include "TORVIKstatistics.h"
#include "faults/fault_row.h"
#include "faults/simulated_bus.h"

namespace torvik::test {

namespace {

using u8 = std::uint8_t;
using u32 = std::uint32_t;

// Old firmware says it in its mode word, which is read as the application does.
bool asksForChannelCount(ExpectedExchange& exchange) {
    if (exchange.knows(firmware_with::channelCount)) return exchange.ask(0x49);
    const auto answer = exchange.exchange(0x26);
    if (answer == ExpectedExchange::Answer::refused) exchange.store(expected_code::internalCallFailed);
    return answer == ExpectedExchange::Answer::good;
}

// The device's answers while it is set up. Whether it streams is asked last and does not count.
std::int32_t activation(ExpectedExchange& exchange) {
    if (!exchange.ask(0x8C)) return exchange.fail(expected_code::noValueIdentifier);
    if (!exchange.ask(0x2B) || !asksForChannelCount(exchange)) return -1;
    exchange.ask(0x80);
    exchange.store(0);
    return 0;
}

Call activateExtended() {
    return fills([](std::int32_t deviceNo, CallerMemory& memory) {
        return TORVIKactivateExtended(deviceNo, TORVIK_ADAPTER_USB, 1000000, 16, memory.words.data(),
                                      commandIdOf(deviceNo), answerIdOf(deviceNo), TORVIK_FLAG_PROTOCOL_KIND_16);
    });
}

Call activateStd() {
    return fills(
        [](std::int32_t deviceNo, CallerMemory& memory) { return TORVIKactivateStd(deviceNo, memory.words.data()); });
}

Call command() {
    return fills([](std::int32_t deviceNo, CallerMemory& memory) {
        constexpr std::array<u8, 2> parameters{3, 0x12};
        return TORVIKcommand(deviceNo, 0x4F, parameters.data(), parameters.size(), memory.bytes.data());
    });
}

Call releasing(bool all) {
    return [all](std::int32_t deviceNo) { return Outcome{TORVIKrelease(all ? 0 : deviceNo), "", true}; };
}

std::vector<FaultRow> frameRows() {
    return {
        {"TORVIKDllVersion", "",
         [](std::int32_t) {
             u32 version = 0;
             const auto result = TORVIKDllVersion(&version);
             return Outcome{result, show(version), false};
         },
         returns(0)},
        {"TORVIKgetStatistics", "",
         [](std::int32_t deviceNo) {
             TORVIKstatistics statistics{};
             statistics.size = sizeof statistics;
             return Outcome{TORVIKgetStatistics(deviceNo, &statistics), "", true};
         },
         returns(0)},
        {"TORVIKcommand", "", command(), asks(0x4F), {}, Start::active, {}, false, -1, true},
        {"TORVIKgetLastErrorText", "", fills([](std::int32_t deviceNo, CallerMemory& memory) {
             return TORVIKgetLastErrorText(deviceNo, memory.text.data(), memory.words.data());
         }),
         returns(0)},
        {"TORVIKgetLastProtocolError", "ofTheLibrary", reads<u32>(TORVIKgetLastProtocolError, 1U, u8{0}), returns(0)},
        {"TORVIKgetLastProtocolError", "ofTheDevice", reads<u32>(TORVIKgetLastProtocolError, 2U, u8{3}), asks(0x42)},
        {"TORVIKgetLastValueError", "", fills([](std::int32_t deviceNo, CallerMemory& memory) {
             return TORVIKgetLastValueError(deviceNo, 1, memory.bytes.data());
         }),
         asks(0x43)},
        {"TORVIKresetStatus", "", writes(TORVIKresetStatus), acknowledges(0x00)},
        {"TORVIKactivateStd", "opensTheAdapter", activateStd(), activation, {}, Start::adapterClosed},
        {"TORVIKactivateExtended", "opensTheAdapter", activateExtended(), activation, {}, Start::adapterClosed},
        {"TORVIKactivateExtended", "besideOthers", activateExtended(), activation, {}, Start::inactive},
        {"TORVIKrelease", "ofOne", releasing(false), returns(0), {}, Start::active, {}, true},
        {"TORVIKrelease", "ofAll", releasing(true), returns(0), {}, Start::active, {}, true},
        {"TORVIKgetInterfaceIdent", "", reads<u32>(TORVIKgetInterfaceIdent, u8{1}), asks(0x01)},
    };
}

std::vector<FaultRow> valueRows() {
    return {
        {"TORVIKread", "", reads<double>(TORVIKread, 1U), returns(0)},
        {"TORVIKreadMultiple", "ofAllChannels", fills([](std::int32_t deviceNo, CallerMemory& memory) {
             std::int32_t count = -1;
             return TORVIKreadMultiple(deviceNo, 0, memory.numbers.data(), 12, &count, memory.words.data()) + count;
         }),
         returns(0)},
        {"TORVIKreadMultiple", "ofOneChannel", fills([](std::int32_t deviceNo, CallerMemory& memory) {
             std::int32_t count = -1;
             return TORVIKreadMultiple(deviceNo, 2, memory.numbers.data(), 12, &count, memory.words.data()) + count;
         }),
         returns(0)},
        {"TORVIKreceived", "", reads<std::int32_t>(TORVIKreceived, 1U), returns(0)},
        {"TORVIKclearDLLbuffer", "", writes(TORVIKclearDLLbuffer), returns(0)},
        {"TORVIKgetValue", "", writes(TORVIKgetValue),
         [](ExpectedExchange& exchange) { return exchange.send(0x3B) ? 0 : -1; }},
        {"TORVIKgetRawValue", "", reads<u32>(TORVIKgetRawValue, 2U), asks(0x3A)},
        {"TORVIKstartTX", "", writes(TORVIKstartTX), acknowledges(0x24)},
        {"TORVIKstopTX", "", writes(TORVIKstopTX), acknowledges(0x23)},
        {"TORVIKclearDeviceBuf", "", writes(TORVIKclearDeviceBuf), acknowledges(0x25)},
        {"TORVIKclearMaximumValue", "", writes(TORVIKclearMaximumValue, 3U), acknowledges(0x3C)},
    };
}

}  // namespace

std::vector<FaultRow> libraryRows() {
    std::vector<FaultRow> rows = frameRows();
    for (FaultRow& row : valueRows())
        rows.push_back(std::move(row));
    return rows;
}

}  // namespace torvik::test
