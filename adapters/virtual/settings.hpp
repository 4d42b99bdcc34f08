#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "bench.hpp"
#include "filter_settings.hpp"

namespace virtual_adapter {

// What an amplifier keeps in its settings sets, a struct for each family of commands.

struct ModeSettings {
    std::uint32_t mode = 0;                       // without the channel count in its low three bits
    std::array<std::uint16_t, 2> transmitMode{};  // bit 0 of the first: the amplifier does not transmit

    [[nodiscard]] bool streaming() const { return (transmitMode[0] & 1U) == 0; }
};

// What a channel's measured value goes through: (value - zero) * userScale + userOffset, and what is smaller than the
// noise cut becomes 0. The output's numbers concern its analogue output alone.
struct ChannelScaling {
    std::int32_t zero = 0;
    float userOffset = 0;
    float userScale = 1;
    float noiseCut = 0;
    float outputOffset = 0;
    float outputScale = 1;
    std::array<std::uint8_t, 2> outputType{};  // in the order in which they were written
};

struct ChannelInput {
    InputRange present;
    std::array<InputRange, kMostRanges> offered{};
};

struct RateSettings {
    static constexpr std::size_t kCounterInputs = 3;
    static constexpr std::size_t kCounterItems = 16;

    double frequency = 0;
    std::array<std::array<std::uint32_t, kCounterItems>, kCounterInputs> counterModes{};
    std::uint16_t analogueFilter = 0;
};

struct CanSettings {
    static constexpr std::size_t kMappingEntries = 17;
    static constexpr std::uint16_t kMostCounted = 16;  // channels in a set, though fewer are sent

    std::array<std::uint32_t, 8> numbered{};               // 0..2: identifiers of commands, answers and values
    std::array<std::uint16_t, kMappingEntries> mapping{};  // entry 0: number of channels in a set

    [[nodiscard]] std::uint16_t channelCount() const { return mapping[0]; }
};

struct Settings {
    ModeSettings mode;
    std::array<ChannelScaling, kMostChannels> scaling{};
    std::array<ChannelInput, kMostChannels> inputs{};
    std::array<std::uint8_t, kMostChannels> units{};
    RateSettings rates;
    FilterSettings filters;
    CanSettings can;
};

[[nodiscard]] Settings factorySettings(const AmplifierConfig& config);

// Where a written value goes: into the present settings, which a reset forgets, or into the stored ones as well.
enum class Kept : std::uint8_t { present, stored };

// The present settings and the stored sets. Set 0 is what a reset restores, set 1 the factory's.
class SettingsMemory {
  public:
    static constexpr std::uint8_t kSets = 8;
    static constexpr std::uint8_t kStartUp = 0;
    static constexpr std::uint8_t kFactory = 1;

    explicit SettingsMemory(const Settings& factory) : present_(factory) { sets_.fill(factory); }

    [[nodiscard]] const Settings& present() const { return present_; }

    template <class Change>
    void change(Kept kept, Change change) {
        change(present_);
        if (kept == Kept::stored) change(sets_[kStartUp]);
    }

    void store(std::uint8_t set) { sets_.at(set) = present_; }
    // A set other than the factory's becomes the one that a reset restores.
    void load(std::uint8_t set) {
        present_ = sets_.at(set);
        if (set != kFactory) sets_[kStartUp] = present_;
    }
    void restart() { present_ = sets_[kStartUp]; }

  private:
    Settings present_;
    std::array<Settings, kSets> sets_;
};

}  // namespace virtual_adapter
