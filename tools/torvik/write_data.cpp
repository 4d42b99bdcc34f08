#include "command_line.h"
#include "failure.h"
#include "printable_text.h"

namespace torvik::tool {

void writeData(Session& session, std::string_view lines) {
    writeBytes(session, printableLines(lines));
}

void writeBytes(Session& session, std::string_view bytes) {
    switch (session.output.write(bytes)) {
        case platform::WriteResult::complete:
            return;
        case platform::WriteResult::closed:
            throw OutputClosed{};
        case platform::WriteResult::interrupted:
            throw Interrupted{};
        case platform::WriteResult::failed:
            break;
    }
    throw Failure{.exitCode = ExitCode::outputFailed,
                  .tried = "writing to standard output",
                  .advice = "check the disk that the output goes to for free space"};
}

}  // namespace torvik::tool
