#include "frames.h"

#include <bit>

namespace torvik::bench {

namespace {

constexpr std::size_t framesOfAllDevices = std::size_t{deviceCount} * channelCount;

enum class Encoding : std::uint8_t { int16 = 1, int24 = 2, float32 = 3 };

constexpr Encoding encodingOf(std::uint8_t deviceNo) {
    return static_cast<Encoding>(1 + deviceNo % 3);
}

std::uint32_t encodedBits(Encoding encoding, std::int32_t counts) {
    switch (encoding) {
        case Encoding::int16:
            return static_cast<std::uint32_t>(counts) << 16;
        case Encoding::int24:
            return static_cast<std::uint32_t>(counts) << 8;
        default:
            return std::bit_cast<std::uint32_t>(static_cast<float>(counts));
    }
}

constexpr std::uint8_t byteOf(std::uint32_t number, unsigned place) {
    return static_cast<std::uint8_t>(number >> (8 * place));
}

}  // namespace

std::int32_t countsOf(std::uint8_t deviceNo, std::uint32_t channel, std::uint32_t set) {
    // Both signs, different for neighbours in every direction.
    const std::uint32_t mixed = set * 257 + channel * 4099 + deviceNo * 31U;
    return static_cast<std::int32_t>(mixed % 65536) - 32768;
}

PcanMessage valueFrame(std::uint8_t deviceNo, std::uint32_t channel, std::uint32_t set) {
    const Encoding encoding = encodingOf(deviceNo);
    const std::uint32_t bits = encodedBits(encoding, countsOf(deviceNo, channel, set));
    PcanMessage message;
    message.id = valueIdOf(deviceNo);
    message.length = 8;
    message.data = {byteOf(channel, 0), static_cast<std::uint8_t>(static_cast<unsigned>(encoding) << 4U),
                    byteOf(set, 1),     byteOf(set, 0),
                    byteOf(bits, 3),    byteOf(bits, 2),
                    byteOf(bits, 1),    byteOf(bits, 0)};
    return message;
}

std::vector<PcanMessage> makeQueue(std::size_t length) {
    std::vector<PcanMessage> frames;
    frames.reserve(length);
    for (std::size_t i = 0; i < length; ++i) {
        const std::size_t place = i % framesOfAllDevices;
        frames.push_back(valueFrame(static_cast<std::uint8_t>(place / channelCount),
                                    static_cast<std::uint32_t>(place % channelCount),
                                    static_cast<std::uint32_t>(i / framesOfAllDevices)));
    }
    return frames;
}

std::uint32_t completeSetsOf(std::uint8_t deviceNo) {
    const std::size_t rest = queueLength % framesOfAllDevices;
    const bool oneMore = (std::size_t{deviceNo} + 1) * channelCount <= rest;
    return static_cast<std::uint32_t>(queueLength / framesOfAllDevices) + (oneMore ? 1 : 0);
}

double scaledValueOf(std::uint8_t deviceNo, std::uint32_t channel, std::uint32_t set) {
    const double counts = countsOf(deviceNo, channel, set);
    switch (encodingOf(deviceNo)) {
        case Encoding::int16:
            return counts * (2.1 / 65535);
        case Encoding::int24:
            return counts * (2.1 / 16777215);
        default:
            return counts;
    }
}

}  // namespace torvik::bench
