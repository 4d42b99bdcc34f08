#include "platform/plotter.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>

namespace torvik::tool::platform {

std::optional<int> runGnuplot(const std::filesystem::path& scriptFile, const std::filesystem::path& picture) {
    std::string program = "gnuplot";
    std::string withArguments = "-c";
    std::string script = std::filesystem::absolute(scriptFile).string();
    std::string output = std::filesystem::absolute(picture).string();
    const std::array<char*, 5> arguments{program.data(), withArguments.data(), script.data(), output.data(), nullptr};
    pid_t process = 0;
    if (posix_spawnp(&process, program.c_str(), nullptr, nullptr, arguments.data(), environ) != 0) return std::nullopt;
    int status = 0;
    while (waitpid(process, &status, 0) < 0) {
        if (errno != EINTR) return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace torvik::tool::platform
