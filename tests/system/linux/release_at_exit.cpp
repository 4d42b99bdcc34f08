#include "../release_at_exit.h"

#include <cstdlib>

[[gnu::destructor]] static void releaseAtExit() {
    if (!torvik::test::releaseIsQuick()) std::_Exit(torvik::test::releaseWasSlow);
}
