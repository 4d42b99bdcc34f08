#include "simulation.h"

#include <fmt/format.h>

#include <stdexcept>
#include <type_traits>

#include "failure.h"
#include "platform/adapter_library.h"
#include "virtual_control.h"

namespace torvik::tool {

namespace {

constexpr const char* benchVariable = "TORVIK_VIRTUAL_BENCH";

/// The virtual adapter keeps what it did not understand of the bench file as its message.
void checkUnderstood(const platform::ResidentLibrary& adapter, const std::string& benchFile) {
    const auto message = adapter.function<std::remove_reference_t<decltype(virtualMessage)>>("virtualMessage");
    if (message == nullptr || *message() == '\0') return;
    throw Failure{.exitCode = ExitCode::usage,
                  .tried = fmt::format("setting the simulated amplifiers up from '{}'", benchFile),
                  .reason = message(),
                  .advice = "correct the bench file, or use --simulate without a file"};
}

}  // namespace

void loadVirtualAdapter(const std::string& benchFile) {
    // The adapter reads the file, and nobody else: a pipe can be read only once.
    if (!benchFile.empty()) platform::setEnvironment(benchVariable, benchFile);
    const auto path = platform::executableFolder() / "virtual" / platform::adapterLibraryName();
    try {
        checkUnderstood(platform::ResidentLibrary(path), benchFile);
    } catch (const std::runtime_error& error) {
        throw Failure{.exitCode = ExitCode::noAdapter,
                      .tried = fmt::format("loading the virtual adapter '{}'", path.string()),
                      .reason = error.what(),
                      .advice = "build the target virtual_adapter, and keep its folder beside this program"};
    }
}

}  // namespace torvik::tool
