// The adapter library: its ten entry points, found at run time, and the calls the rest of the library makes of them.
#pragma once

#include <array>
#include <cstdint>

namespace torvik {

// Message and time stamp as the adapter library lays them out.
struct PcanMessage {
    std::uint32_t id = 0;
    std::uint8_t type = 0;  // 0: standard frame
    std::uint8_t length = 0;
    std::array<std::uint8_t, 8> data{};
};

struct PcanTimestamp {
    std::uint32_t milliseconds = 0;
    std::uint16_t overflows = 0;
    std::uint16_t microseconds = 0;
};

static_assert(sizeof(PcanMessage) == 16 && sizeof(PcanTimestamp) == 8);

namespace pcan {

inline constexpr std::uint32_t ok = 0;
inline constexpr std::uint32_t busLight = 0x4;
inline constexpr std::uint32_t busHeavy = 0x8;
inline constexpr std::uint32_t busOff = 0x10;
inline constexpr std::uint32_t queueEmpty = 0x20;
inline constexpr std::uint32_t queueOverrun = 0x40;
inline constexpr std::uint32_t illegalHardware = 0x1400;
inline constexpr std::uint32_t unknownError = 0x10000;

inline constexpr std::uint16_t noChannel = 0;
inline constexpr std::uint8_t receiveEvent = 0x03;
inline constexpr std::uint8_t busOffAutoReset = 0x07;
inline constexpr std::uint8_t logStatus = 0x0A;
inline constexpr std::uint8_t logConfigure = 0x0B;
inline constexpr std::uint32_t logFunctionAll = 0xFFFF;
inline constexpr std::uint32_t parameterOn = 1;

}  // namespace pcan

// Finds the entry points. Result: 0, or 0x10000 when the library or one of them is missing.
std::uint32_t loadPcanApi();
bool pcanLoaded();

// Each call behaves as if it had returned 0x10000 while the adapter is closed, the library is not loaded or the entry
// is missing; initialize and uninitialize do not ask for an open adapter.
std::uint32_t pcanInitialize(std::uint16_t channel, std::uint16_t baudCode);
std::uint32_t pcanUninitialize(std::uint16_t channel);  // the entry is forgotten afterwards
std::uint32_t pcanReset(std::uint16_t channel);
std::uint32_t pcanRead(std::uint16_t channel, PcanMessage& message, PcanTimestamp& timestamp);
std::uint32_t pcanWrite(std::uint16_t channel, PcanMessage& message);
std::uint32_t pcanGetValue(std::uint16_t channel, std::uint8_t parameter, void* value, std::uint32_t size);
std::uint32_t pcanSetValue(std::uint16_t channel, std::uint8_t parameter, void* value, std::uint32_t size);
std::uint32_t pcanSetValue(std::uint16_t channel, std::uint8_t parameter, std::uint32_t value);

// Prints the adapter library's text of a status as a debug line.
void printPcanError(std::uint32_t status);

}  // namespace torvik
