#include "calib/calibration_report.h"

#include <array>
#include <charconv>

#include "core/error_codes.h"

namespace torvik {

Finding unreadableFile(const std::string& path, std::uint32_t code) {
    const bool isOther = code == error::fileContent;
    return {
        .kind = FindingKind::problem,
        .file = path,
        .reason = isOther ? "a folder, a pipe or a device, not a file" : "there is no such file, or it cannot be read",
        .code = code};
}

std::string shortestText(double number) {
    std::array<char, 40> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    return {buffer.data(), result.ptr};
}

}  // namespace torvik
