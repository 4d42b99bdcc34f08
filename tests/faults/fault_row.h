// One export with arguments that succeed, and what the rules say its exchange with the device is.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "faults/expected_exchange.h"
#include "params/export_row.h"

namespace torvik::test {

// The steps of an export and what each failure means for it. Result: what the export returns.
using Story = std::function<std::int32_t(ExpectedExchange&)>;

// What the first device is before the call.
enum class Start { active, inactive, adapterClosed };

struct FaultRow {
    std::string exportName;
    std::string variant;  // of the arguments; may be empty
    Call call;
    Story story;
    std::vector<Answer> answers{};
    Start start = Start::active;
    std::function<void()> prepare{};
    bool endsInactive = false;
    std::int32_t failed = -1;      // the export's own result of a failure
    bool deliversRefusal = false;  // the answer is written even when the device refused the command
};

std::vector<FaultRow> libraryRows();
std::vector<FaultRow> parameterRows();
std::vector<FaultRow> filterRows();
std::vector<FaultRow> calibrationRows();

// All of them.
const std::vector<FaultRow>& faultRows();

// The usual stories.
Story asks(std::uint8_t command);
Story acknowledges(std::uint8_t command);
// Nothing goes to the device.
Story returns(std::int32_t result, std::uint32_t code = 0);

// `body` with the value stream, which runs in the beginning, out of the way; neither a failed stop nor a failed start
// counts.
template <class Body>
std::int32_t withStreamPaused(ExpectedExchange& exchange, Body body) {
    if (!exchange.streaming().value_or(true)) return body();
    exchange.acknowledge(0x23);
    const std::int32_t result = body();
    exchange.acknowledge(0x24);
    return result;
}

inline bool acknowledgeAll(ExpectedExchange& exchange, std::uint8_t command, int count) {
    for (int i = 0; i < count; ++i) {
        if (!exchange.acknowledge(command)) return false;
    }
    return true;
}

inline bool askAll(ExpectedExchange& exchange, std::uint8_t command, int count) {
    for (int i = 0; i < count; ++i) {
        if (!exchange.ask(command)) return false;
    }
    return true;
}

// Both answers of a user text.
inline bool asksForUserText(ExpectedExchange& exchange) {
    return exchange.send(0x11) && exchange.askNext() && exchange.askNext();
}

// Both halves of a user text and the unit that stands for it. A second half that could not be sent is passed over.
inline bool writesUserText(ExpectedExchange& exchange) {
    if (!exchange.acknowledge(0x12)) return false;
    if (exchange.send(0x12) && !exchange.takeAcknowledgement()) return false;
    return exchange.acknowledge(0x10);
}

// The caller's memory of exports with many results.
struct CallerMemory {
    std::array<double, 36> matrix;
    std::array<double, 36> numbers;
    std::array<double, 36> more;
    std::array<std::uint32_t, 16> words;
    std::array<std::uint32_t, 16> moreWords;
    std::array<std::uint8_t, 16> bytes;
    std::array<char, 128> text;
};

// Calls `function(deviceNo, memory)`; delivers everything that has changed in the memory.
Call fills(std::function<std::int32_t(std::int32_t, CallerMemory&)> function);

}  // namespace torvik::test
