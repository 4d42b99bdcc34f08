// Programs that a test starts.
#pragma once

#include <string>

namespace torvik::test {

// Runs a command line to its end. Result: the program's exit code; -1 when it could not be started or crashed.
int exitCodeOf(const std::string& commandLine);

}  // namespace torvik::test
