// An adapter library inside the test program: linking it takes the place of loading one.
#pragma once

#include <cstdint>
#include <deque>
#include <mutex>
#include <utility>
#include <vector>

#include "can/pcan_api.h"

namespace torvik::test {

class FakeAdapter {
  public:
    static FakeAdapter& instance();

    // As if the channel had been opened; forgets everything scripted and recorded.
    void open();
    void forget();

    void failWrites(std::uint32_t status);
    void failInitialize(std::uint32_t status);
    void failSetValue(std::uint8_t parameter, std::uint32_t status);

    // What CAN_Read gives next, in this order; 0x20 (queue empty) after the last.
    void queueFrame(std::uint32_t identifier, std::array<std::uint8_t, 8> data);
    void queueStatus(std::uint32_t status);

    std::vector<PcanMessage> written() const;
    std::uint32_t resets() const;

    // The channel and baud code of the last CAN_Initialize.
    std::pair<std::uint16_t, std::uint16_t> initialized() const;

    // The entry points behind the library's calls.
    std::uint32_t initialize(std::uint16_t channel, std::uint16_t baudCode);
    std::uint32_t setValue(std::uint8_t parameter) const;
    std::uint32_t reset();
    std::uint32_t read(PcanMessage& message);
    std::uint32_t write(const PcanMessage& message);

  private:
    struct Reading {
        std::uint32_t status = 0;
        PcanMessage message;
    };

    mutable std::mutex mutex_;
    std::uint32_t writeStatus_ = 0;
    std::uint32_t initializeStatus_ = 0;
    std::pair<std::uint8_t, std::uint32_t> setValueStatus_{};
    std::deque<Reading> readings_;
    std::vector<PcanMessage> written_;
    std::uint32_t resets_ = 0;
    std::pair<std::uint16_t, std::uint16_t> initialized_{};
};

}  // namespace torvik::test
