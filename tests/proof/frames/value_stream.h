// The values that a device sends, computable for every set, so that each value read can be compared with the one sent.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "proof_adapter.h"

namespace torvik::proof {

// A third of the devices each sends 16-bit, 24-bit and float values.
enum class Encoding : std::uint8_t { int16 = 1, int24 = 2, float32 = 3 };
constexpr Encoding encodingOf(std::uint8_t deviceNo) {
    return static_cast<Encoding>(1 + deviceNo % 3);
}

// Different for neighbours in every direction; of one channel no two of 65536 sets on end are alike, in 24 bits no two
// of 16777216.
constexpr std::uint32_t mixedCounts(std::uint8_t deviceNo, std::uint32_t channel, std::uint64_t set) {
    return static_cast<std::uint32_t>(set) * 0x00929D1BU + channel * 4099U + deviceNo * 31U;
}

template <Encoding encoding>
constexpr std::int32_t countsOf(std::uint32_t mixed) {
    if constexpr (encoding == Encoding::int16) return static_cast<std::int16_t>(mixed & 0xFFFF);
    return static_cast<std::int32_t>(mixed << 8) >> 8;
}

// As the library scales what it reads.
template <Encoding encoding>
constexpr double scaledValue(std::uint32_t mixed) {
    const double counts = countsOf<encoding>(mixed);
    if constexpr (encoding == Encoding::int16) return counts * (2.1 / 65535);
    if constexpr (encoding == Encoding::int24) return counts * (2.1 / 16777215);
    return counts;
}

constexpr std::uint32_t bitsOnTheBus(Encoding encoding, std::uint32_t mixed) {
    switch (encoding) {
        case Encoding::int16:
            return mixed << 16;
        case Encoding::int24:
            return mixed << 8;
        default:
            return std::bit_cast<std::uint32_t>(static_cast<float>(countsOf<Encoding::float32>(mixed)));
    }
}

inline void writeValueFrame(std::uint8_t deviceNo, std::uint32_t channel, std::uint64_t set, PcanMessage& message) {
    const Encoding encoding = encodingOf(deviceNo);
    const std::uint32_t bits = bitsOnTheBus(encoding, mixedCounts(deviceNo, channel, set));
    const auto byte = [](std::uint64_t number, unsigned place) {
        return static_cast<std::uint8_t>(number >> (8 * place));
    };
    message.id = valueIdOf(deviceNo);
    message.type = 0;
    message.length = 8;
    message.data = {byte(channel, 0), static_cast<std::uint8_t>(static_cast<unsigned>(encoding) << 4U),
                    byte(set, 1),     byte(set, 0),
                    byte(bits, 3),    byte(bits, 2),
                    byte(bits, 1),    byte(bits, 0)};
}

// Reads a device's sets and compares every value with the one sent.
class SetChecker {
  public:
    explicit SetChecker(std::uint8_t deviceNo, std::size_t setsAtOnce);

    // Takes what waits. Result: how many sets came.
    std::size_t take();

    std::uint64_t sets() const { return sets_; }

    // What is wrong, if anything is: lost, doubled, reordered or wrong values.
    const std::optional<std::string>& fault() const { return fault_; }

  private:
    bool holds(std::span<const double> values) const;
    void describeFault(std::span<const double> values);

    std::uint8_t deviceNo_;
    std::uint64_t sets_ = 0;
    std::vector<double> values_;
    std::optional<std::string> fault_;
};

// Activates a device on the proof adapter. Throws when that fails.
void activateDevice(std::uint8_t deviceNo, std::uint32_t bufferSize);

}  // namespace torvik::proof
