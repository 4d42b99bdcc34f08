#include "calib/calibration_limits.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <system_error>

#include "calib/calibration_format.h"
#include "params/device_numbers.h"

namespace torvik {

std::optional<std::uint32_t> parseSerialText(const char* text) {
    constexpr std::size_t longestPrefix = 255;
    std::size_t skipped = 0;
    for (; *text != '\0' && (*text < '0' || *text > '9'); ++text) {
        if (++skipped == longestPrefix) return 0;
    }
    std::uint64_t serial = 0;
    const auto result = std::from_chars(text, text + std::strlen(text), serial);
    if (result.ec == std::errc::result_out_of_range || serial > highestSerialNumber) return std::nullopt;
    return static_cast<std::uint32_t>(serial);
}

bool isTooSmallForScale(double scale) {
    return isNan(scale) || std::abs(scale) < static_cast<double>(std::numeric_limits<float>::min());
}

}  // namespace torvik
