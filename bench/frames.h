// The value frames that all benchmarks of the receive path work on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "can/pcan_api.h"

namespace torvik::bench {

inline constexpr std::uint8_t deviceCount = 39;
inline constexpr std::uint32_t channelCount = 6;
inline constexpr std::size_t queueLength = 32767;  // what an adapter keeps

constexpr std::uint32_t commandIdOf(std::uint8_t deviceNo) {
    return 0x100 + 4U * deviceNo;
}
constexpr std::uint32_t answerIdOf(std::uint8_t deviceNo) {
    return commandIdOf(deviceNo) + 1;
}
constexpr std::uint32_t valueIdOf(std::uint8_t deviceNo) {
    return commandIdOf(deviceNo) + 2;
}

// The value in counts that a channel has in a set; as a float exactly representable, too.
std::int32_t countsOf(std::uint8_t deviceNo, std::uint32_t channel, std::uint32_t set);

// One channel's frame of a set. A third of the devices each sends 16-bit, 24-bit and float values.
PcanMessage valueFrame(std::uint8_t deviceNo, std::uint32_t channel, std::uint32_t set);

// The first `length` frames of the bus: set after set, in each set device after device, channel after channel.
std::vector<PcanMessage> makeQueue(std::size_t length);

// How many complete sets of a device stand in the first queueLength frames.
std::uint32_t completeSetsOf(std::uint8_t deviceNo);

// What TORVIKreadMultiple gives for these counts.
double scaledValueOf(std::uint8_t deviceNo, std::uint32_t channel, std::uint32_t set);

}  // namespace torvik::bench
