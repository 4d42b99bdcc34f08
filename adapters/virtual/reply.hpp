#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

#include "device_status.hpp"

namespace virtual_adapter {

// The answers to one command: status and up to six data bytes each, big-endian. Most commands add one, some several,
// a few none.
class Reply {
  public:
    using Answer = std::array<std::uint8_t, 8>;
    static constexpr std::size_t kMostAnswers = 4;
    static constexpr std::size_t kDataBytes = 6;

    void acknowledge() { add(device_status::kDone, {}); }
    void error(std::uint8_t status) { add(status, {}); }

    void u8(std::uint8_t value) { bytes(std::array{value}); }
    void u16(std::uint16_t value) {
        bytes(std::array{static_cast<std::uint8_t>(value >> 8U), static_cast<std::uint8_t>(value)});
    }
    void u32(std::uint32_t value) {
        bytes(std::array{static_cast<std::uint8_t>(value >> 24U), static_cast<std::uint8_t>(value >> 16U),
                         static_cast<std::uint8_t>(value >> 8U), static_cast<std::uint8_t>(value)});
    }
    void f32(float value) { u32(std::bit_cast<std::uint32_t>(value)); }
    void bytes(std::span<const std::uint8_t> data) { add(device_status::kDone, data); }

    [[nodiscard]] std::span<const Answer> answers() const { return std::span(answers_).first(count_); }
    [[nodiscard]] std::uint8_t status() const { return count_ == 0 ? device_status::kDone : answers_[0][1]; }

  private:
    // Byte 0 is the answer marker and the number of data bytes that mean something.
    void add(std::uint8_t status, std::span<const std::uint8_t> data) {
        Answer& answer = answers_.at(count_);
        answer = {static_cast<std::uint8_t>(0x40U | data.size()), status};
        for (std::size_t i = 0; i < data.size(); ++i)
            answer.at(2 + i) = data[i];
        ++count_;
    }

    std::array<Answer, kMostAnswers> answers_{};
    std::size_t count_ = 0;
};

}  // namespace virtual_adapter
