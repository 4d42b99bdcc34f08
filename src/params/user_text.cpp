#include "params/user_text.h"

#include <algorithm>

#include "core/ask.h"
#include "core/device_table.h"
#include "params/convert_from_device.h"

namespace torvik {

namespace {

constexpr std::size_t halfLength = userTextLength / 2;
constexpr std::size_t partLength = 1 + halfLength;  // its number and the characters

using Part = std::array<char, partLength>;

// An answer's part number and characters, up to the first zero byte.
Part partOf(const AnswerView& answer) {
    Part part{};
    convertFromDevice(static_cast<std::uint32_t>(DeviceNumber::text), part.data(), answer.data().data(),
                      static_cast<std::int32_t>(part.size()));
    return part;
}

// The characters in the order in which their parts have come.
UserText join(const Part& first, const Part& second) {
    UserText text{};
    const auto end = std::ranges::copy(first.begin() + 1, first.end(), text.begin()).out;
    std::ranges::copy(second.begin() + 1, second.end(), end);
    std::fill(std::ranges::find(text, '\0'), text.end(), '\0');
    return text;
}

Parameters half(std::uint32_t textNo, std::uint8_t part, const UserText& text) {
    Parameters parameters = Parameters().u8(static_cast<std::uint8_t>(textNo - 1)).u8(part);
    const auto begin = static_cast<std::size_t>(part - 1) * halfLength;
    for (std::size_t i = begin; i < begin + halfLength; ++i)
        parameters.u8(static_cast<std::uint8_t>(text[i]));
    return parameters;
}

}  // namespace

std::optional<UserText> readUserText(std::uint8_t deviceNo, std::uint32_t textNo) {
    const Parameters parameters = Parameters().u8(static_cast<std::uint8_t>(textNo - 1));
    if (sendCommand(deviceNo, Command::readUserText, parameters.bytes()) != 0) return std::nullopt;
    const KeptTransaction kept(deviceRecord(deviceNo));
    const auto first = nextAnswer(deviceNo);
    if (!first) return std::nullopt;
    const auto second = nextAnswer(deviceNo);
    if (!second) return std::nullopt;
    return join(partOf(*first), partOf(*second));
}

std::int32_t writeUserText(std::uint8_t deviceNo, std::uint32_t textNo, std::string_view text) {
    // Kept: the last of the eight bytes is always zero, so that a text of eight characters or more arrives with seven.
    UserText bytes{};
    std::ranges::copy(text.substr(0, userTextLength - 1), bytes.begin());
    if (acknowledge(deviceNo, Command::writeUserText, half(textNo, 1, bytes)) != 0) return -1;
    // Kept: a second half that could not be sent is passed over, one that is refused is not.
    if (sendCommand(deviceNo, Command::writeUserText, half(textNo, 2, bytes).bytes()) != 0) return 0;
    return expectAck(deviceNo);
}

std::int32_t setUserTextUnit(std::uint8_t deviceNo, std::uint32_t channel, std::uint32_t textNo) {
    return acknowledge(
        deviceNo, Command::setUnit,
        Parameters().u8(static_cast<std::uint8_t>(channel)).u8(static_cast<std::uint8_t>(unitOfUserText(textNo))));
}

}  // namespace torvik
