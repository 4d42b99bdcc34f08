#include "core/ask.h"

#include <array>

#include "core/device_table.h"

namespace torvik {

namespace {

std::optional<AnswerView> accepted(std::uint8_t deviceNo, const std::optional<AnswerView>& answer) {
    if (!answer || !answer->refused()) return answer;
    setError(deviceNo, answer->status());
    return std::nullopt;
}

}  // namespace

std::optional<AnswerView> takeAnswer(std::uint8_t deviceNo) {
    std::array<std::uint8_t, 8> bytes{};
    std::uint8_t dataLength = 0;
    if (receiveAnswer(deviceNo, bytes.data(), &dataLength) != 0) return std::nullopt;
    return AnswerView(bytes);
}

std::optional<AnswerView> exchangeAnswer(std::uint8_t deviceNo, Command command, const Parameters& parameters) {
    if (sendCommand(deviceNo, command, parameters.bytes()) != 0) return std::nullopt;
    return takeAnswer(deviceNo);
}

std::optional<AnswerView> ask(std::uint8_t deviceNo, Command command, const Parameters& parameters) {
    return accepted(deviceNo, exchangeAnswer(deviceNo, command, parameters));
}

std::optional<AnswerView> nextAnswer(std::uint8_t deviceNo) {
    return accepted(deviceNo, takeAnswer(deviceNo));
}

std::int32_t acknowledge(std::uint8_t deviceNo, Command command, const Parameters& parameters) {
    if (sendCommand(deviceNo, command, parameters.bytes()) != 0) return -1;
    return expectAck(deviceNo);
}

}  // namespace torvik
