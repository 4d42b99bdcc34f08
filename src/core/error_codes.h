// The library's own error codes. Device codes (0x40..0x99) and adapter codes are passed on as they come.
#pragma once

#include <cstdint>

namespace torvik::error {

inline constexpr std::uint32_t none = 0;
inline constexpr std::uint32_t wrongFrameArguments = 48;
inline constexpr std::uint32_t answerMutexTimeout = 0xD4;
inline constexpr std::uint32_t stopTransmitting = 0xDC;
inline constexpr std::uint32_t deviceWrite = 0xDF;
inline constexpr std::uint32_t receiveLoopFault = 0xE1;
inline constexpr std::uint32_t noResponse = 0xE4;
inline constexpr std::uint32_t clearBuffer = 0xE5;
inline constexpr std::uint32_t busyTimeout = 0xEB;
inline constexpr std::uint32_t wrongBaudRate = 0xF2;
inline constexpr std::uint32_t alreadyActive = 0xF3;
inline constexpr std::uint32_t eventCreation = 0xF4;
inline constexpr std::uint32_t noActiveChannels = 0xF6;
inline constexpr std::uint32_t unknownDeviceKind = 0xF7;
inline constexpr std::uint32_t wrongIdentifiers = 0xF8;
inline constexpr std::uint32_t noValueIdentifier = 0xF9;
inline constexpr std::uint32_t outOfMemory = 0x300000F3;
inline constexpr std::uint32_t answerTimeout = 0x30000058;
inline constexpr std::uint32_t wrongAnswer = 0x30000060;
inline constexpr std::uint32_t firmwareUnsupported = 0x30000062;
inline constexpr std::uint32_t unknownValueFormat = 0x30000063;
inline constexpr std::uint32_t frequencyOutOfRange = 0x30000064;
inline constexpr std::uint32_t notStored = 0x30000065;
inline constexpr std::uint32_t parameterExceedance = 0x30000100;
inline constexpr std::uint32_t invalidDevice = 0x30000101;
inline constexpr std::uint32_t internalCallFailed = 0x30000105;
inline constexpr std::uint32_t dataBuffer = 0x30000106;
inline constexpr std::uint32_t fileContent = 0x30000108;
inline constexpr std::uint32_t threadStart = 0x30000109;
inline constexpr std::uint32_t mutexStart = 0x30000111;
inline constexpr std::uint32_t mutexTimeout = 0x30000112;
inline constexpr std::uint32_t notActive = 0x30000113;
inline constexpr std::uint32_t identifierInUse = 0x30000114;

}  // namespace torvik::error
