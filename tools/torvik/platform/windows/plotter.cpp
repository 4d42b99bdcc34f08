#include "platform/plotter.h"

#include <process.h>

#include <string>

namespace torvik::tool::platform {

namespace {

/// The system joins arguments with blanks: one that has blanks of its own needs quotes. No file name contains a quote.
std::string argumentOf(const std::filesystem::path& file) {
    return '"' + std::filesystem::absolute(file).string() + '"';
}

}  // namespace

std::optional<int> runGnuplot(const std::filesystem::path& scriptFile, const std::filesystem::path& picture) {
    const std::string script = argumentOf(scriptFile);
    const std::string output = argumentOf(picture);
    const auto result = _spawnlp(_P_WAIT, "gnuplot", "gnuplot", "-c", script.c_str(), output.c_str(), nullptr);
    if (result == -1) return std::nullopt;
    return static_cast<int>(result);
}

}  // namespace torvik::tool::platform
