#include "params/teds.h"

#include <algorithm>
#include <cstddef>

#include "core/ask.h"

namespace torvik {

std::int32_t readTedsData(std::uint8_t deviceNo, std::uint8_t selector, std::span<std::uint8_t> bytes,
                          std::uint32_t offset) {
    constexpr std::size_t wordSize = 4;
    // Kept: the address begins at a quarter of the offset and then goes up by four; callers count on both.
    auto address = static_cast<std::uint16_t>(offset / wordSize);
    for (std::size_t begin = 0; begin < bytes.size(); begin += wordSize) {
        const auto answer = ask(deviceNo, Command::tedsData, Parameters().u8(selector).u16(address));
        if (!answer) return -1;
        const auto word = bytes.subspan(begin, std::min(wordSize, bytes.size() - begin));
        std::ranges::copy(answer->data().first(word.size()), word.begin());
        address = static_cast<std::uint16_t>(address + wordSize);
    }
    return 0;
}

}  // namespace torvik
