#include "parameters.hpp"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

namespace virtual_adapter {
namespace {

using Place = ParameterRow::Place;

constexpr std::uint64_t kHighest32 = std::numeric_limits<std::uint32_t>::max();

constexpr ParameterRow kParameterRows[] = {
    {0x01, Place::openChannel, true, true, nullptr, 1, kHighest32},         // device number
    {0x03, Place::openChannel, true, true, nullptr, 0, ~std::uint64_t{0}},  // receive event
    {0x04, Place::openChannel, true, true, nullptr, 1, 2},                  // message filter
    {0x05, Place::library, true, false, "4.8.0.0", 0, 0},                   // version of the interface
    {0x06, Place::openChannel, true, false, "virtual 1.0", 0, 0},           // version of the channel
    {0x07, Place::openChannel, true, true, nullptr, 0, 1},                  // reset after bus-off
    {0x08, Place::channel, true, true, nullptr, 0, 1},                      // listen only
    {0x09, Place::library, true, true, "", 0, 0},                           // folder of the log
    {0x0A, Place::library, true, true, nullptr, 0, 1},                      // log on or off
    {0x0B, Place::library, true, true, nullptr, 0, 0xFFFF},                 // what is logged
    {0x0C, Place::library, false, true, "", 0, 0},                          // a line for the log
    {0x0D, Place::channel, true, false, nullptr, 0, 0},                     // available or in use
    {0x0E, Place::openChannel, true, false, "virtual adapter", 0, 0},       // name of the hardware
    {0x0F, Place::channel, true, true, nullptr, 1, 1},                      // reception on or off
    {0x10, Place::openChannel, true, false, nullptr, 0, 0},                 // controller number
    {0x15, Place::openChannel, true, true, nullptr, 0, 1},                  // blinking
    {0x16, Place::channel, true, false, nullptr, 0, 0},                     // features
    {0x18, Place::openChannel, true, false, nullptr, 0, 0},                 // bit rate as its code
    {0x1A, Place::openChannel, true, false, nullptr, 0, 0},                 // bit rate in bit/s
    {0x1E, Place::openChannel, true, true, nullptr, 1, 1},                  // status frames
    {0x1F, Place::openChannel, true, true, nullptr, 1, 1},                  // remote frames
    {0x20, Place::openChannel, true, true, nullptr, 0, 1},                  // error frames
};

}  // namespace

const ParameterRow* findParameter(std::uint8_t number) {
    const auto* const row = std::ranges::find(kParameterRows, number, &ParameterRow::number);
    return row == std::end(kParameterRows) ? nullptr : row;
}

void ParameterValues::reset() {
    for (const ParameterRow& row : kParameterRows)
        values_[row.number] = row.initial;
}

Status numberFromBuffer(const void* buffer, std::uint32_t length, std::uint64_t& value) {
    if (buffer == nullptr) return kIllegalValue;
    std::uint32_t narrow = 0;
    if (length == sizeof narrow) {
        std::memcpy(&narrow, buffer, sizeof narrow);
        value = narrow;
        return kOk;
    }
    if (length != sizeof value) return kIllegalValue;
    std::memcpy(&value, buffer, sizeof value);
    return kOk;
}

Status numberToBuffer(std::uint64_t value, void* buffer, std::uint32_t length) {
    if (buffer == nullptr) return kIllegalValue;
    const auto narrow = static_cast<std::uint32_t>(value);
    if (length == sizeof narrow) {
        std::memcpy(buffer, &narrow, sizeof narrow);
        return kOk;
    }
    if (length != sizeof value) return kIllegalValue;
    std::memcpy(buffer, &value, sizeof value);
    return kOk;
}

Status textToBuffer(const char* text, void* buffer, std::uint32_t length) {
    const std::size_t size = std::strlen(text) + 1;
    if (buffer == nullptr || length < size) return kIllegalValue;
    std::memcpy(buffer, text, size);
    return kOk;
}

}  // namespace virtual_adapter
