#include "params/convert_from_device.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>
#include <span>

#include "core/wire.h"

namespace torvik {

namespace {

static_assert(std::endian::native == std::endian::little, "destinations are little-endian");

using Bytes = std::span<const std::uint8_t>;

void copyInOrder(Bytes source, void* destination, std::size_t width) {
    std::memset(destination, 0, width);
    std::memcpy(destination, source.data(), source.size());
}

void copyReversed(Bytes source, void* destination) {
    std::reverse_copy(source.begin(), source.end(), static_cast<std::uint8_t*>(destination));
}

void copyReversed(Bytes source, void* destination, std::size_t width) {
    std::memset(destination, 0, width);
    copyReversed(source, destination);
}

std::uint32_t leftAligned32(Bytes source) {
    std::uint32_t value = 0;
    copyReversed(source, reinterpret_cast<std::uint8_t*>(&value) + sizeof value - source.size());
    return value;
}

// The longest source of a kind; 0: any length.
std::size_t longestSource(DeviceNumber kind) {
    switch (kind) {
        case DeviceNumber::littleEndian16:
        case DeviceNumber::bigEndian16:
            return 2;
        case DeviceNumber::littleEndian32:
        case DeviceNumber::bigEndian32:
        case DeviceNumber::bigEndian32Again:
        case DeviceNumber::leftAligned32:
        case DeviceNumber::widenedFloat:
            return 4;
        default:
            return 0;
    }
}

void convert(DeviceNumber kind, void* destination, Bytes source) {
    switch (kind) {
        case DeviceNumber::byte:
            copyInOrder(source.first(1), destination, 1);
            break;
        case DeviceNumber::littleEndian16:
            copyInOrder(source, destination, 2);
            break;
        case DeviceNumber::bigEndian16:
            copyReversed(source, destination, 2);
            break;
        case DeviceNumber::littleEndian32:
            copyInOrder(source, destination, 4);
            break;
        case DeviceNumber::bigEndian32:
        case DeviceNumber::bigEndian32Again:
            copyReversed(source, destination, 4);
            break;
        case DeviceNumber::reversed:
            copyReversed(source, destination);
            break;
        case DeviceNumber::leftAligned32: {
            const std::uint32_t value = leftAligned32(source);
            std::memcpy(destination, &value, sizeof value);
            break;
        }
        case DeviceNumber::widenedFloat: {
            const double value = widenFloat(leftAligned32(source));
            std::memcpy(destination, &value, sizeof value);
            break;
        }
        case DeviceNumber::bytes:
            std::memcpy(destination, source.data(), source.size());
            break;
        case DeviceNumber::text: {
            const auto zero = std::ranges::find(source, std::uint8_t{0});
            const auto end = zero == source.end() ? zero : std::next(zero);
            std::copy(source.begin(), end, static_cast<std::uint8_t*>(destination));
            break;
        }
    }
}

}  // namespace

std::uint32_t convertFromDevice(std::uint32_t kind, void* destination, const std::uint8_t* source,
                                std::int32_t length) {
    if (length < 1 || destination == nullptr || source == nullptr) return 0;
    if (kind > static_cast<std::uint32_t>(DeviceNumber::text)) return 1;
    const auto number = static_cast<DeviceNumber>(kind);
    const Bytes bytes(source, static_cast<std::size_t>(length));
    const std::size_t longest = longestSource(number);
    if (longest != 0 && bytes.size() > longest) return 0;
    convert(number, destination, bytes);
    return 1;
}

}  // namespace torvik
