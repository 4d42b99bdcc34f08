#include "TORVIK.h"
#include "TORVIKcommand.h"
#include "TORVIKstatistics.h"
#include "random_call.h"

namespace torvik::proof {

namespace {

template <class Signature>
using C = Caller<Signature>;

// Activation asks for value identifier, firmware, channels and mode.
constexpr int activationCommands = 4;

std::int32_t activate(decltype(TORVIKactivateExtended)* function, Arguments& any, std::int32_t deviceNo) {
    const bool usual = !any.onceIn(50);
    // Each device's own amplifier, at times another one's.
    const bool own = deviceNo >= 1 && deviceNo <= deviceCount && !any.onceIn(50);
    const std::uint32_t amplifier = own ? static_cast<std::uint32_t>(deviceNo - 1) : any.below(deviceCount);
    std::uint32_t commandId = commandIdOf(amplifier);
    std::uint32_t answerId = commandId + 1;
    // Identifiers that belong to nobody would make it wait two seconds for each answer.
    if (any.onceIn(50)) answerId = any.onceIn(2) ? commandId : 2048 + any.number() % 0x10000;
    if (any.onceIn(2000)) commandId = 0x7FF;
    // Bit rate and kind count when the adapter is opened, and have to fit the bus. Debug output is left out: it is
    // text.
    const std::uint32_t baudRate = usual ? 1'000'000 : 1;
    const std::uint32_t kind = any.onceIn(2) ? TORVIK_FLAG_PROTOCOL_KIND_16 : TORVIK_FLAG_PROTOCOL_KIND_32;
    const std::uint32_t flags = (usual ? kind : 0) | (any.onceIn(2) ? TORVIK_FLAG_PCAN_LOG : 0);
    const std::uint32_t bufferSize = any.onceIn(500) ? any.number() : any.below(1000);
    return function(deviceNo, usual ? TORVIK_ADAPTER_USB : any.byte(), baudRate, bufferSize,
                    any.array<std::uint32_t>(1), commandId, answerId, flags);
}

std::int32_t readMultiple(decltype(TORVIKreadMultiple)* function, Arguments& any, std::int32_t deviceNo) {
    constexpr std::int32_t room = 96;
    const auto asked = static_cast<std::int32_t>(any.onceIn(4) ? any.number() : 6 * (1 + any.below(16)));
    return function(deviceNo, any.onceIn(2) ? 0 : any.channel(), any.array<double>(room), std::min(asked, room),
                    any.array<std::int32_t>(1), any.array<std::uint32_t>(room));
}

std::int32_t version(decltype(TORVIKDllVersion)* function, Arguments&, std::int32_t) {
    std::uint32_t number = 0;
    return function(&number);
}

std::int32_t statistics(decltype(TORVIKgetStatistics)* function, Arguments& any, std::int32_t deviceNo) {
    TORVIKstatistics counts{};
    counts.size = any.onceIn(4) ? any.below(sizeof counts) : sizeof counts;
    return function(deviceNo, any.onceIn(16) ? nullptr : &counts);
}

// Readers, a code that no device knows, and those that have several answers or none. No writers: a device that goes by
// another identifier answers nobody.
std::int32_t command(decltype(TORVIKcommand)* function, Arguments& any, std::int32_t deviceNo) {
    constexpr std::array<std::uint8_t, 9> readers{0x01, 0x1F, 0x26, 0x2B, 0x4B, 0x4F, 0x51, 0x8A, 0xFE};
    constexpr std::array<std::uint8_t, 5> rejected{0x11, 0x1B, 0x53, 0x3B, 0x78};
    constexpr std::uint32_t most = 6;
    if (any.usual()) return function(deviceNo, 0x2B, nullptr, 0, any.array<std::uint8_t>(8));
    const bool reads = !any.onceIn(16);
    const std::uint8_t code = reads ? readers[any.below(readers.size())] : rejected[any.below(rejected.size())];
    const std::uint32_t length = any.onceIn(16) ? any.number() : any.below(most + 1);
    return function(deviceNo, code, any.array<std::uint8_t>(most), length, any.array<std::uint8_t>(8));
}

}  // namespace

std::vector<RandomCall> libraryCalls() {
    using u32 = std::uint32_t;
    return {
        callWith<decltype(TORVIKDllVersion)>("TORVIKDllVersion", 0, version),
        callWith<decltype(TORVIKgetStatistics)>("TORVIKgetStatistics", 0, statistics),
        callWith<decltype(TORVIKcommand)>("TORVIKcommand", 1, command),
        C<decltype(TORVIKgetLastErrorText)>::make("TORVIKgetLastErrorText", 0, many<char, 128>, one<u32>),
        C<decltype(TORVIKgetLastProtocolError)>::make("TORVIKgetLastProtocolError", 1, number, byte, one<u32>),
        C<decltype(TORVIKgetLastValueError)>::make("TORVIKgetLastValueError", 1, byte, many<std::uint8_t, 6>),
        C<decltype(TORVIKresetStatus)>::make("TORVIKresetStatus", 1),
        // Everything on the first amplifier; with room for 65534 values a channel, which takes its time.
        C<decltype(TORVIKactivateStd)>::make("TORVIKactivateStd", activationCommands, one<u32>).weighing(1),
        callWith<decltype(TORVIKactivateExtended)>("TORVIKactivateExtended", activationCommands, activate)
            .onlyInStorms()
            .weighing(900),
        C<decltype(TORVIKgetInterfaceIdent)>::make("TORVIKgetInterfaceIdent", 1, byte, one<u32>),
        C<decltype(TORVIKread)>::make("TORVIKread", 0, channel, one<double>),
        callWith<decltype(TORVIKreadMultiple)>("TORVIKreadMultiple", 0, readMultiple),
        C<decltype(TORVIKreceived)>::make("TORVIKreceived", 0, channel, one<std::int32_t>),
        C<decltype(TORVIKclearDLLbuffer)>::make("TORVIKclearDLLbuffer", 0),
        C<decltype(TORVIKgetValue)>::make("TORVIKgetValue", 0),
        C<decltype(TORVIKgetRawValue)>::make("TORVIKgetRawValue", 1, channel, one<u32>),
        C<decltype(TORVIKstartTX)>::make("TORVIKstartTX", 1),
        C<decltype(TORVIKstopTX)>::make("TORVIKstopTX", 1),
        C<decltype(TORVIKclearDeviceBuf)>::make("TORVIKclearDeviceBuf", 1),
        C<decltype(TORVIKclearMaximumValue)>::make("TORVIKclearMaximumValue", 1, channel),
    };
}

std::vector<RandomCall> randomCalls() {
    std::vector<RandomCall> calls;
    for (const auto& family : {libraryCalls(), settingCalls(), filterCalls(), calibrationCalls()})
        calls.insert(calls.end(), family.begin(), family.end());
    return calls;
}

}  // namespace torvik::proof
