#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "bench.hpp"
#include "calibration_memory.hpp"

namespace virtual_adapter {

// What belongs to the device itself: in no settings set, and kept by a reset.
struct DeviceMemory {
    static constexpr std::size_t kCalibrationValues = 49;
    static constexpr std::size_t kUserTexts = 2;

    std::uint32_t serial = 0;
    std::uint32_t hardware = 0x00010002;
    std::uint32_t softwareConfiguration = 0x00000011;
    std::array<float, 2> hours{1250.5F, 1250.5F};  // 0: operation, can be written; 1: production
    std::array<std::array<std::uint32_t, kMostChannels>, kCalibrationValues> calibration{};  // floats as their bits
    std::array<std::array<std::uint8_t, 8>, kUserTexts> userTexts{};
    CalibrationMemory sensor;  // what a reset keeps are its slots and which of them is active
};

// The memory of the sensor on a channel, byte by byte; 0 is the amplifier's own. Nothing writes to it, so what it
// contains is worked out.
struct TedsMemory {
    static constexpr std::size_t kSelectors = 9;
    static constexpr std::size_t kBytes = 256;

    [[nodiscard]] static constexpr std::uint8_t byteAt(std::size_t selector, std::size_t address) {
        return static_cast<std::uint8_t>(selector * 16 + address);
    }
};

}  // namespace virtual_adapter
