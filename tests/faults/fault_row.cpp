#include "faults/fault_row.h"

#include <algorithm>

namespace torvik::test {

namespace {

CallerMemory untouchedMemory() {
    CallerMemory memory{};
    memory.matrix.fill(untouched<double>());
    memory.numbers.fill(untouched<double>());
    memory.more.fill(untouched<double>());
    memory.words.fill(untouched<std::uint32_t>());
    memory.moreWords.fill(untouched<std::uint32_t>());
    memory.bytes.fill(untouched<std::uint8_t>());
    memory.text.fill('~');
    return memory;
}

template <class Array>
void appendBytes(std::string& text, const Array& array) {
    text.append(reinterpret_cast<const char*>(array.data()), array.size() * sizeof(array[0]));
}

std::string bytesOf(const CallerMemory& memory) {
    std::string text;
    appendBytes(text, memory.matrix);
    appendBytes(text, memory.numbers);
    appendBytes(text, memory.more);
    appendBytes(text, memory.words);
    appendBytes(text, memory.moreWords);
    appendBytes(text, memory.bytes);
    appendBytes(text, memory.text);
    return text;
}

}  // namespace

Call fills(std::function<std::int32_t(std::int32_t, CallerMemory&)> function) {
    return [function = std::move(function)](std::int32_t deviceNo) {
        CallerMemory memory = untouchedMemory();
        const std::string before = bytesOf(memory);
        const std::int32_t result = function(deviceNo, memory);
        std::string after = bytesOf(memory);
        const bool unchanged = after == before;
        return Outcome{result, std::move(after), unchanged};
    };
}

Story asks(std::uint8_t command) {
    return [command](ExpectedExchange& exchange) { return exchange.ask(command) ? 0 : -1; };
}

Story acknowledges(std::uint8_t command) {
    return [command](ExpectedExchange& exchange) { return exchange.acknowledge(command) ? 0 : -1; };
}

Story returns(std::int32_t result, std::uint32_t code) {
    return [=](ExpectedExchange& exchange) {
        exchange.store(code);
        return result;
    };
}

const std::vector<FaultRow>& faultRows() {
    static const std::vector<FaultRow> rows = [] {
        std::vector<FaultRow> all;
        for (const auto& family : {libraryRows(), parameterRows(), filterRows(), calibrationRows()})
            all.insert(all.end(), family.begin(), family.end());
        return all;
    }();
    return rows;
}

}  // namespace torvik::test
