#include "calib/calibration_report.h"

#include <array>
#include <charconv>

namespace torvik {

Finding unreadableFile(const std::string& path, std::uint32_t code) {
    return {
        .kind = FindingKind::problem, .file = path, .reason = "the file is not there or cannot be read", .code = code};
}

std::string shortestText(double number) {
    std::array<char, 40> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    return {buffer.data(), result.ptr};
}

}  // namespace torvik
