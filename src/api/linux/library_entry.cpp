#include "core/activation.h"

// Runs when the library is unloaded and when the process ends.
[[gnu::destructor]] static void unload() {
    torvik::shutDown();
}
