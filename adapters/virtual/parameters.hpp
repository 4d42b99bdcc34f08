#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "status.hpp"

namespace virtual_adapter {

// Numbers of the parameters that need more than to be stored.
namespace parameter {
inline constexpr std::uint8_t kReceiveEvent = 0x03;
inline constexpr std::uint8_t kMessageFilter = 0x04;
inline constexpr std::uint8_t kListenOnly = 0x08;
inline constexpr std::uint8_t kChannelCondition = 0x0D;
inline constexpr std::uint8_t kReceiveStatus = 0x0F;
inline constexpr std::uint8_t kBitRateCode = 0x18;
inline constexpr std::uint8_t kBitRate = 0x1A;
}  // namespace parameter

// How a parameter may be used.
struct ParameterRow {
    enum class Place : std::uint8_t { library, channel, openChannel };

    std::uint8_t number;
    Place place;  // on channel 0 / on a channel / on an initialised channel
    bool readable;
    bool writable;
    const char* text;  // for texts, what reading gives; null for numbers
    std::uint64_t initial;
    std::uint64_t highest;
};

// Null when the adapter does not have the parameter.
[[nodiscard]] const ParameterRow* findParameter(std::uint8_t number);

// The numbers that are merely kept.
class ParameterValues {
  public:
    ParameterValues() { reset(); }
    void reset();
    [[nodiscard]] std::uint64_t get(std::uint8_t number) const { return values_[number]; }
    void set(std::uint8_t number, std::uint64_t value) { values_[number] = value; }

  private:
    static constexpr std::size_t kNumbers = 0x30;
    std::array<std::uint64_t, kNumbers> values_{};
};

// Numbers travel in buffers of 4 or 8 bytes; anything else is an illegal value.
Status numberFromBuffer(const void* buffer, std::uint32_t length, std::uint64_t& value);
Status numberToBuffer(std::uint64_t value, void* buffer, std::uint32_t length);

// Texts are terminated and must fit.
Status textToBuffer(const char* text, void* buffer, std::uint32_t length);

}  // namespace virtual_adapter
