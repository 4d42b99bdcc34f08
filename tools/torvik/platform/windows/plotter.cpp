#include "platform/plotter.h"

#include <process.h>

namespace torvik::tool::platform {

std::optional<int> runGnuplot(const std::string& scriptFile) {
    // The system joins arguments with blanks: one that has blanks of its own needs quotes.
    const std::string quotedFile = '"' + scriptFile + '"';
    const auto result = _spawnlp(_P_WAIT, "gnuplot", "gnuplot", quotedFile.c_str(), nullptr);
    if (result == -1) return std::nullopt;
    return static_cast<int>(result);
}

}  // namespace torvik::tool::platform
