#include "params/calibration_values.h"

#include <algorithm>
#include <span>

namespace torvik {

namespace {

struct FormatRow {
    std::uint32_t first;
    std::uint32_t last;
    CalibrationFormat format;
};

constexpr FormatRow rowsOf16[] = {
    {0, 5, CalibrationFormat::floating},   {8, 13, CalibrationFormat::integer},   {16, 16, CalibrationFormat::floating},
    {24, 24, CalibrationFormat::integer},  {32, 37, CalibrationFormat::floating}, {40, 45, CalibrationFormat::integer},
    {48, 48, CalibrationFormat::floating},
};

constexpr FormatRow rowsOf32[] = {
    {0, 7, CalibrationFormat::floating},
    {8, 15, CalibrationFormat::integer},
    {16, 23, CalibrationFormat::floating},
    {24, 31, CalibrationFormat::integer},
};

}  // namespace

CalibrationFormat calibrationFormat(std::uint32_t protocolKind, std::uint32_t index) {
    if (protocolKind != 16 && protocolKind != 32) return CalibrationFormat::unknownProtocol;
    const auto rows = protocolKind == 16 ? std::span<const FormatRow>(rowsOf16) : std::span<const FormatRow>(rowsOf32);
    const auto found =
        std::ranges::find_if(rows, [index](const FormatRow& row) { return index >= row.first && index <= row.last; });
    return found == rows.end() ? CalibrationFormat::none : found->format;
}

}  // namespace torvik
