#include "adapter.hpp"

// The library is being unloaded or the process ends; the other threads may still be running.
[[gnu::destructor]] static void giveEverythingBack() {
    virtual_adapter::Adapter::shutDownInstance();
}
