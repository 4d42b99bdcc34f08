// Descriptions of simulated amplifiers in TOML: whatever the text is, it is read within its limits, and what is
// understood can be run: its amplifiers stream for a moment and answer the text's own bytes as commands.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>

#include "bench_file.hpp"
#include "bus.hpp"
#include "toml_file.hpp"

namespace {

using namespace virtual_adapter;

void require(bool holds, const char* rule) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", rule);
    std::abort();
}

std::size_t depthOf(const toml::node& node) {
    std::size_t deepest = 0;
    if (const toml::table* const table = node.as_table()) {
        for (const auto& [key, value] : *table)
            deepest = std::max(deepest, depthOf(value));
    } else if (const toml::array* const array = node.as_array()) {
        for (const toml::node& value : *array)
            deepest = std::max(deepest, depthOf(value));
    }
    return deepest + 1;
}

void checkLimits(std::string_view text) {
    using namespace bounded_toml;
    try {
        // A table's name, a dotted key, and in each of the nested values another dotted key.
        require(depthOf(parse(text)) <= 2 + kMostParts * (kMostNested + 2), "no table is deeper than the limits allow");
    } catch (const Error& error) {
        const std::string message = error.message("name");
        require(message.starts_with("name:"), "messages begin with the name");
        require(std::ranges::none_of(message, [](char byte) { return static_cast<unsigned char>(byte) < 0x20; }),
                "messages have no control characters");
    }
}

class CheckingReceiver final : public FrameReceiver {
  public:
    void receive(const Frame& frame, Nanoseconds /*time*/) override {
        require(frame.id <= kHighestStandardId && frame.type == kStandardFrame, "frames are standard ones");
        require(frame.length == 8, "frames have eight bytes");
    }
};

// Frames of the text's bytes: an amplifier, a command, and its parameters.
void sendCommands(Bus& bus, std::string_view text, CheckingReceiver& receiver, const BenchConfig& bench) {
    Nanoseconds now = 0;
    for (; text.size() >= 8 && now < 200'000'000; text.remove_prefix(8)) {
        const std::size_t device = static_cast<unsigned char>(text[7]) % bench.amplifiers.size();
        Frame frame{bench.amplifiers[device].commandId, kStandardFrame, 8, {}};
        const std::size_t parameters = static_cast<unsigned char>(text[0]) % 7;
        frame.length = static_cast<std::uint8_t>(parameters + 2);
        std::ranges::transform(text.substr(0, 8), frame.data.begin(),
                               [](char byte) { return static_cast<std::uint8_t>(byte); });
        frame.data[0] = static_cast<std::uint8_t>(0x80U | parameters);
        static_cast<void>(bus.write(frame, now, receiver));
        now += 1'000'000;
        bus.advance(now, receiver);
    }
}

void run(const BenchConfig& bench, std::string_view text) {
    require(bench.amplifiers.size() <= kMostAmplifiers, "there are at most 39 amplifiers");
    VirtualCounters counters{};
    Bus bus(counters);
    CheckingReceiver receiver;
    bus.setUp(bench);
    bus.open(0, 1'000'000);
    bus.advance(100'000, receiver);
    if (!bench.amplifiers.empty()) sendCommands(bus, text, receiver, bench);
    bus.close();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    checkLimits(text);
    const BenchResult result = parseBench(text, "bench");
    require(result.bench.has_value() == result.message.empty(), "either a bench or a message");
    if (result.bench) run(*result.bench, text);
    return 0;
}
