#pragma once

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <thread>
#include <vector>

#include "can_entry_points.h"
#include "virtual_control.h"

namespace virtual_test {

inline constexpr std::uint16_t kUsb = 0x51;
inline constexpr std::uint16_t kMegabit = 0x0014;

inline constexpr std::uint32_t kOk = 0;
inline constexpr std::uint32_t kEmpty = 0x20;
inline constexpr std::uint32_t kOverrun = 0x40;
inline constexpr std::uint32_t kInUse = 0x400;
inline constexpr std::uint32_t kIllegalHandle = 0x1400;
inline constexpr std::uint32_t kIllegalParameter = 0x4000;
inline constexpr std::uint32_t kIllegalValue = 0x8000;
inline constexpr std::uint32_t kIllegalData = 0x20000;
inline constexpr std::uint32_t kNotInitialised = 0x4000000;

inline constexpr std::uint32_t kReceiveQueueLength = 32'767;

// The default bench's amplifier.
inline constexpr std::uint32_t kCommandId = 0x100;
inline constexpr std::uint32_t kAnswerId = 0x101;
inline constexpr std::uint32_t kValueId = 0x102;

using Data = std::array<std::uint8_t, 8>;

inline Data dataOf(const CanMessage& message) {
    Data data{};
    std::copy_n(message.data, data.size(), data.begin());
    return data;
}

inline CanMessage commandFrame(std::initializer_list<std::uint8_t> codeAndParameters, std::uint32_t id = kCommandId) {
    CanMessage message{id, 0, static_cast<std::uint8_t>(codeAndParameters.size() + 1), {}};
    message.data[0] = static_cast<std::uint8_t>(0x80 | (codeAndParameters.size() - 1));
    std::copy(codeAndParameters.begin(), codeAndParameters.end(), message.data + 1);
    return message;
}

inline VirtualFrame frameOf(std::uint32_t id, std::uint8_t first = 0) {
    return {id, 0, 8, {first, 0, 0, 0, 0, 0, 0, 0}};
}

inline std::optional<CanMessage> readFrame() {
    CanMessage message{};
    if (CAN_Read(kUsb, &message, nullptr) != kOk) return std::nullopt;
    return message;
}

inline std::vector<CanMessage> drain() {
    std::vector<CanMessage> frames;
    while (const auto frame = readFrame())
        frames.push_back(*frame);
    return frames;
}

// Sends a command and takes its answer; nothing else may be on the bus.
inline std::optional<Data> ask(std::initializer_list<std::uint8_t> codeAndParameters) {
    CanMessage command = commandFrame(codeAndParameters);
    if (CAN_Write(kUsb, &command) != kOk) return std::nullopt;
    const auto answer = readFrame();
    if (!answer || answer->id != kAnswerId) return std::nullopt;
    return dataOf(*answer);
}

inline VirtualCounters counters() {
    VirtualCounters now{};
    virtualGetCounters(&now);
    return now;
}

// Looks again and again until the condition holds, for 20 s at most: a loaded machine may be that slow.
template <class Condition>
bool eventually(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

class ClosedAdapter : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(virtualReset(), 0) << virtualMessage(); }
    void TearDown() override { virtualReset(); }
};

// The default bench behind an initialised channel, its stream running.
class OpenAdapter : public ClosedAdapter {
  protected:
    void SetUp() override {
        ClosedAdapter::SetUp();
        ASSERT_EQ(CAN_Initialize(kUsb, kMegabit, 0, 0, 0), kOk);
    }
};

// The same with nothing on the bus but what the test puts there.
class QuietAdapter : public OpenAdapter {
  protected:
    void SetUp() override {
        OpenAdapter::SetUp();
        virtualHoldStream(0, 1);
        ASSERT_EQ(CAN_Reset(kUsb), kOk);
    }
};

}  // namespace virtual_test
