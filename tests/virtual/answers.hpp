#pragma once

#include <bit>
#include <string>
#include <vector>

#include "open_adapter.hpp"

// Commands with numbers in them, and the answers that are expected.
namespace virtual_test {

inline constexpr Data kAcknowledged{0x40, 0x00};

inline Data refusal(std::uint8_t status) {
    return {0x40, status};
}

inline constexpr std::uint8_t kWrongIndex = 0x51;
inline constexpr std::uint8_t kWrongData = 0x52;

inline std::array<std::uint8_t, 4> bigEndian(std::uint32_t number) {
    return {static_cast<std::uint8_t>(number >> 24U), static_cast<std::uint8_t>(number >> 16U),
            static_cast<std::uint8_t>(number >> 8U), static_cast<std::uint8_t>(number)};
}

// A successful answer.
inline Data told(std::initializer_list<std::uint8_t> bytes) {
    Data answer{static_cast<std::uint8_t>(0x40U | bytes.size()), 0x00};
    std::copy(bytes.begin(), bytes.end(), answer.begin() + 2);
    return answer;
}

inline Data toldNumber(std::uint32_t number) {
    const auto bytes = bigEndian(number);
    return told({bytes[0], bytes[1], bytes[2], bytes[3]});
}

inline Data toldFloat(float number) {
    return toldNumber(std::bit_cast<std::uint32_t>(number));
}

// The number follows the code and the bytes before it.
inline std::optional<Data> askWithNumber(std::initializer_list<std::uint8_t> codeAndParameters, std::uint32_t number) {
    CanMessage command = commandFrame(codeAndParameters);
    for (const std::uint8_t byte : bigEndian(number))
        command.data[command.length++] = byte;
    command.data[0] = static_cast<std::uint8_t>(0x80 | (command.length - 2));
    if (CAN_Write(kUsb, &command) != kOk) return std::nullopt;
    const auto answer = readFrame();
    return answer ? std::optional(dataOf(*answer)) : std::nullopt;
}

inline std::optional<Data> askWithFloat(std::initializer_list<std::uint8_t> codeAndParameters, float number) {
    return askWithNumber(codeAndParameters, std::bit_cast<std::uint32_t>(number));
}

// The second answer to the command asked last.
inline std::optional<Data> secondAnswer() {
    const auto answer = readFrame();
    return answer ? std::optional(dataOf(*answer)) : std::nullopt;
}

// The values of the next sets of an amplifier that streams floats, one channel after the other.
inline std::vector<float> nextValues(std::uint32_t sets = 1) {
    virtualSendSets(0, sets);
    std::vector<float> values;
    for (const CanMessage& frame : drain()) {
        const Data data = dataOf(frame);
        values.push_back(std::bit_cast<float>(
            static_cast<std::uint32_t>(data[4] << 24U | data[5] << 16U | data[6] << 8U | data[7])));
    }
    return values;
}

// A reset that takes no time.
inline void restart() {
    CanMessage command = commandFrame({0x78});
    ASSERT_EQ(CAN_Write(kUsb, &command), kOk);
}

// An amplifier that streams only when told, and whose resets take no time; more keys and tables may follow.
class QuickAmplifier : public QuietAdapter {
  protected:
    static void configure(const std::string& more = "") {
        const std::string bench = "[[amplifier]]\nstreaming = false\nreset_time_ms = 0\n" + more;
        ASSERT_EQ(virtualConfigure(bench.c_str()), 0) << virtualMessage();
    }
    void SetUp() override {
        QuietAdapter::SetUp();
        configure();
    }
};

}  // namespace virtual_test
