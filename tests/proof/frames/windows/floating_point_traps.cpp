#include "floating_point_traps.h"

#include <float.h>

namespace torvik::proof {

void trapFloatingPoint() {
    _controlfp(~static_cast<unsigned>(_EM_INVALID | _EM_ZERODIVIDE | _EM_OVERFLOW), _MCW_EM);
}

}  // namespace torvik::proof
