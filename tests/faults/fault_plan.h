// What goes wrong in an exchange, and at which frame of it.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace torvik::test {

enum class Fault : std::uint8_t {
    none,
    noAnswer,
    silentDevice,       // neither this answer nor any after it comes
    lateAnswer,         // comes in time or after the time-out, as the delay says
    doubledAnswer,      // comes twice
    shiftedAnswers,     // from here on every answer is the one before
    misdirectedAnswer,  // comes under the identifier of another active device
    foreignAnswer,      // an answer of a device that nobody has activated comes first
    errorStatus,
    failedWrite,
    busOff,       // the frame goes out, then there is no bus any more
    adapterGone,  // nothing works from this frame on
    release,      // instead of the answer comes, on another thread, a release
};

struct FaultPlan {
    Fault fault = Fault::none;
    std::size_t position = 0;            // of the exchange
    std::chrono::milliseconds delay{0};  // until the late answer or the release comes
    std::uint8_t deviceStatus = 0;       // of errorStatus
    std::uint32_t adapterStatus = 0;     // of failedWrite, busOff and adapterGone
    bool releaseAll = false;
};

inline constexpr std::uint8_t smallestRefusal = 0x40;

// How many answers a command draws. Every answer is a position of the exchange, and so is a frame without one.
constexpr std::size_t answersOf(std::uint8_t command) {
    switch (command) {
        case 0x3B:
        case 0x78:
            return 0;
        case 0x11:
        case 0x53:
            return 2;
        case 0x1B:
            return 4;
        default:
            return 1;
    }
}

}  // namespace torvik::test
