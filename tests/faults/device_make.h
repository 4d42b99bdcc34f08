// What a simulated device is, as far as exports behave differently for it.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace torvik::test {

// The versions from which devices know more.
namespace firmware_with {
inline constexpr std::uint32_t reset = 0x00030009;
inline constexpr std::uint32_t channelCount = 0x0003000B;     // and the selection of a calibration to read
inline constexpr std::uint32_t allCalibrations = 0x0003002F;  // and input types
inline constexpr std::uint32_t modelName = 0x00030032;
}  // namespace firmware_with

struct DeviceMake {
    std::uint32_t protocolKind = 16;
    std::uint32_t firmware = 0x00040000;
};

// Both protocol kinds, with firmware on both sides of each threshold; the default one is left out.
inline std::vector<DeviceMake> otherMakes() {
    std::vector<DeviceMake> makes{{.protocolKind = 32}};
    for (const std::uint32_t threshold : {firmware_with::reset, firmware_with::channelCount,
                                          firmware_with::allCalibrations, firmware_with::modelName}) {
        for (const std::uint32_t firmware : {threshold - 1, threshold}) {
            makes.push_back({.protocolKind = 16, .firmware = firmware});
            makes.push_back({.protocolKind = 32, .firmware = firmware});
        }
    }
    return makes;
}

}  // namespace torvik::test
