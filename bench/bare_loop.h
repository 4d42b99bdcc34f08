// The reference of the receive path: nothing but decoding and storing, one mutex a frame.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

#include "can/pcan_api.h"
#include "devices.h"
#include "frames.h"

namespace torvik::bench {

class BareLoop {
  public:
    BareLoop();

    void run(std::span<const PcanMessage> frames);

    // Throws the stored values away; the rings go on where they are, as the library's do after reading.
    void clear();

    // Whether the values of these sets have been stored in order since the last clear().
    bool holdsInOrder(std::uint8_t deviceNo, std::uint32_t sets) const;

    // Sum of all decoded values, as decoded.
    double sum() const;

  private:
    struct Entry {
        std::uint8_t status = 0;
        double value = 0.0;
    };
    struct Ring {
        std::vector<Entry> entries = std::vector<Entry>(ringLength);
        std::uint32_t writeIndex = 0;
        std::uint32_t count = 0;
    };

    std::mutex mutex_;
    std::array<std::uint8_t, 2048> devices_{};  // by identifier
    std::array<std::array<Ring, 8>, deviceCount> rings_;
};

}  // namespace torvik::bench
