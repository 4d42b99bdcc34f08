// A system test's bench: the virtual adapter with its default amplifier, whose stream is held, so that only what a test
// pushes arrives. Everything goes through the exports, as in an application.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "TORVIK.h"
#include "virtual_control.h"

namespace torvik::test {

inline constexpr std::int32_t device = 1;      // as the library numbers it
inline constexpr std::uint32_t amplifier = 0;  // as the virtual adapter numbers it
inline constexpr std::uint32_t answerId = 0x101;
inline constexpr std::uint32_t valueId = 0x102;

inline constexpr std::uint32_t int16Type = 1;
inline constexpr std::uint32_t int24Type = 2;
inline constexpr std::uint32_t float32Type = 3;

// What the library says about the device's last error; reading clears it.
struct LastError {
    std::uint32_t code;
    std::string text;
};
LastError takeLastError(std::int32_t deviceNo);

// "100: 81 49 00": identifier and data bytes of a frame.
std::string frameText(const VirtualFrame& frame);

// The frames that the library has written since the last call.
std::vector<std::string> takeWritten();

// One channel's frame of a set. Integers are given as counts, floats as their bits.
VirtualFrame valueFrame(std::uint32_t id, unsigned channel, unsigned sequence, unsigned type, std::uint32_t value,
                        unsigned statusNibble = 0);

class Bench : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // Makes the amplifier answer `command` with this status and these data bytes from now on.
    static void answerWith(std::uint32_t command, std::initializer_list<std::uint8_t> statusAndData,
                           std::uint32_t times = VIRTUAL_FOR_EVER);
    static void drop(std::uint32_t command, std::uint32_t times = VIRTUAL_FOR_EVER);

    // The default device with this many values per channel, and `channels` channels.
    static void activate(std::uint32_t bufferSize = 65534, std::uint8_t channels = 6);

    static void push(const std::vector<VirtualFrame>& frames);
    // Pushes a complete set of the default device, one value per channel.
    static void pushSet(unsigned sequence, unsigned type, std::initializer_list<std::int32_t> values);
    // Returns when everything pushed before has been stored or dropped.
    static void settle();

    static void expectNothingSent();
};

// The last error is this code with this text, and reading has cleared it.
void expectLastError(std::int32_t deviceNo, std::uint32_t code, std::string_view text);
void expectNoError(std::int32_t deviceNo);

inline constexpr std::string_view parameterExceedance = "TORVIKLIB: function parameter exceedance [805306624]";
inline constexpr std::string_view notInitialized = "TORVIKLIB: requested ressource not initialized [805306643]";

}  // namespace torvik::test
