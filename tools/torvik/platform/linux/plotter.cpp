#include "platform/plotter.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace torvik::tool::platform {

std::optional<int> runGnuplot(const std::string& scriptFile) {
    std::string program = "gnuplot";
    // A name that begins with a dash would be an option.
    std::string file = scriptFile.starts_with('-') ? "./" + scriptFile : scriptFile;
    const std::array<char*, 3> arguments{program.data(), file.data(), nullptr};
    pid_t process = 0;
    if (posix_spawnp(&process, program.c_str(), nullptr, nullptr, arguments.data(), environ) != 0) return std::nullopt;
    int status = 0;
    while (waitpid(process, &status, 0) < 0) {
        if (errno != EINTR) return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace torvik::tool::platform
