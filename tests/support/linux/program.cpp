#include "support/program.h"

#include <sys/wait.h>

#include <cstdlib>

namespace torvik::test {

int exitCodeOf(const std::string& commandLine) {
    const int status = std::system(commandLine.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace torvik::test
