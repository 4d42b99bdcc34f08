#pragma once

#include <optional>
#include <string>

namespace torvik::tool::platform {

/// Runs gnuplot, as the path finds it, on a file of commands. Gives its exit code; nothing when there is no gnuplot.
std::optional<int> runGnuplot(const std::string& scriptFile);

}  // namespace torvik::tool::platform
