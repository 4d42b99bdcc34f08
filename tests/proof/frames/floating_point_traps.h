// Floating-point exceptions as a host may have unmasked them.
#pragma once

namespace torvik::proof {

// From now on an invalid operation, a division by zero or an overflow ends the program; Linux: in the threads that are
// started later, too.
void trapFloatingPoint();

}  // namespace torvik::proof
