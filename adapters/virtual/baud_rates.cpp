#include "baud_rates.hpp"

#include <algorithm>
#include <iterator>

namespace virtual_adapter {
namespace {

struct Row {
    std::uint16_t code;
    std::uint32_t bitRate;
};

constexpr Row kRows[] = {
    {0x0014, 1'000'000}, {0x0016, 800'000}, {0x001C, 500'000}, {0x011C, 250'000}, {0x031C, 125'000}, {0x432F, 100'000},
    {0xC34E, 95'000},    {0x852B, 83'000},  {0x472F, 50'000},  {0x1414, 47'000},  {0x8B2F, 33'000},  {0x4F2F, 25'000},
    {0x532F, 20'000},    {0x5F2F, 12'500},  {0x672F, 10'000},  {0x7F7F, 5'000},
};

}  // namespace

std::uint32_t bitRateOf(std::uint16_t btr0btr1) {
    const auto* const row = std::ranges::find(kRows, btr0btr1, &Row::code);
    return row == std::end(kRows) ? 0 : row->bitRate;
}

std::uint32_t frameBits(std::uint8_t type, std::uint8_t length) {
    const bool remote = (type & kRemoteFrame) != 0;
    const bool extended = (type & kExtendedFrame) != 0;
    const std::uint32_t dataBits = remote ? 0 : 8U * std::min<std::uint32_t>(length, 8);
    // Start bit, identifier, control bits, data and checksum are stuffed; delimiters, end of frame and space are not.
    const std::uint32_t stuffed = (extended ? 54U : 34U) + dataBits;
    constexpr std::uint32_t unstuffed = 13;
    const std::uint32_t mostStuffBits = (stuffed - 1) / 4;
    return stuffed + unstuffed + mostStuffBits / 2;
}

Nanoseconds frameDuration(std::uint32_t bits, std::uint32_t bitRate) {
    return (Nanoseconds{bits} * 1'000'000'000U + bitRate / 2) / bitRate;
}

}  // namespace virtual_adapter
