#include "core/activation.h"
#include "platform/thread.h"

namespace {

const std::uint64_t loadedBy = torvik::platform::processId();

// Runs when the library is unloaded and when the process ends. A forked child has none of its parent's threads.
[[gnu::destructor]] void unload() {
    if (torvik::platform::processId() == loadedBy) torvik::shutDown();
}

}  // namespace
