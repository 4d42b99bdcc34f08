#include "floating_point_traps.h"

#include <fenv.h>

namespace torvik::proof {

void trapFloatingPoint() {
    feenableexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW);
}

}  // namespace torvik::proof
