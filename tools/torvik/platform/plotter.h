#pragma once

#include <filesystem>
#include <optional>

namespace torvik::tool::platform {

/// Runs gnuplot, as the path finds it, on a file of commands with the picture's name as its argument. Both names are
/// passed as absolute paths, which gnuplot takes for neither options nor pipes. Gives its exit code; `nullopt`: there
/// is no gnuplot.
std::optional<int> runGnuplot(const std::filesystem::path& scriptFile, const std::filesystem::path& picture);

}  // namespace torvik::tool::platform
