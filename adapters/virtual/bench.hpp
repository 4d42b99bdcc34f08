#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace virtual_adapter {

inline constexpr std::size_t kMostAmplifiers = 39;
inline constexpr std::size_t kMostChannels = 8;

// The codes are those of bits 4..6 of a value frame's type byte.
enum class ValueType : std::uint8_t { int16 = 1, int24 = 2, float32 = 3 };

enum class Waveform : std::uint8_t { constant, sine, step, ramp, noise };

// value = offset + amplitude * waveform(frequency * time) + noise * random
struct SignalConfig {
    Waveform waveform = Waveform::constant;
    double amplitude = 0;
    double offset = 0;
    double frequency = 0;  // Hz
    double noise = 0;      // half the width of the random part
};

// An input type and a measuring range that a channel offers.
struct InputRange {
    std::uint8_t type = 0;
    std::uint32_t hundredths = 0;
    bool operator==(const InputRange&) const = default;
};
inline constexpr std::size_t kMostRanges = 12;
inline constexpr std::uint32_t kLargestRange = 0xFFFFFF;

struct AmplifierConfig {
    std::uint32_t commandId = 0x100;
    std::uint32_t answerId = 0x101;
    std::uint32_t valueId = 0x102;
    std::uint32_t firmware = 0x00040000;
    std::uint32_t protocolKind = 16;
    std::uint32_t mode = 0;  // the mode word without its channel count
    std::array<std::uint32_t, 4> interfaceIdent{0x00010000, 0x00000001, 1'000'000, 0};
    std::uint32_t serial = 1'000'001;
    std::vector<InputRange> ranges{{1, 1000}, {1, 500}, {1, 250}, {1, 100}, {3, 250'000}};  // of each channel
    std::uint64_t seed = 1;
    ValueType valueType = ValueType::int24;
    bool counts = false;      // signals are given in raw counts, not as fractions of the full scale
    bool calibrated = false;  // signals are those of a six-axis sensor, values its forces and torques
    bool streaming = true;
    double frequency = 100;         // sets per second
    std::uint32_t answerTime = 0;   // microseconds from the end of a command to its answer
    std::uint32_t resetTime = 200;  // milliseconds that a reset keeps it off the bus
    std::vector<SignalConfig> signals = std::vector<SignalConfig>(6);  // one per channel
};

struct BenchConfig {
    bool timing = false;
    std::vector<AmplifierConfig> amplifiers;
};

// One six-channel amplifier with lively signals.
[[nodiscard]] BenchConfig defaultBench();

// The signals of an amplifier for which none are given.
[[nodiscard]] std::vector<SignalConfig> defaultSignals(std::size_t channels);

}  // namespace virtual_adapter
