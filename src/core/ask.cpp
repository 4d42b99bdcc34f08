#include "core/ask.h"

#include <array>

#include "core/device_table.h"

namespace torvik {

std::optional<AnswerView> exchangeAnswer(std::uint8_t deviceNo, Command command, const Parameters& parameters) {
    if (sendCommand(deviceNo, command, parameters.bytes()) != 0) return std::nullopt;
    std::array<std::uint8_t, 8> bytes{};
    std::uint8_t dataLength = 0;
    if (receiveAnswer(deviceNo, bytes.data(), &dataLength) != 0) return std::nullopt;
    return AnswerView(bytes);
}

std::optional<AnswerView> ask(std::uint8_t deviceNo, Command command, const Parameters& parameters) {
    const std::optional<AnswerView> answer = exchangeAnswer(deviceNo, command, parameters);
    if (answer && answer->refused()) {
        setError(deviceNo, answer->status());
        return std::nullopt;
    }
    return answer;
}

std::int32_t acknowledge(std::uint8_t deviceNo, Command command, const Parameters& parameters) {
    if (sendCommand(deviceNo, command, parameters.bytes()) != 0) return -1;
    return expectAck(deviceNo);
}

}  // namespace torvik
