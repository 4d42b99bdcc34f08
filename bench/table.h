// The one table of ratios.
#pragma once

#include "measurements.h"

namespace torvik::bench {

struct Verdict {
    bool allMeasured = true;
    bool allMet = true;
};

// Prints a line for every goal: what is judged (the median of all rounds, of a count the largest), the range of the
// middle half, the goal, and whether it is met.
Verdict printTable(const Measurements& measurements);

// Prints the median time of one iteration of each benchmark, to look into a ratio.
void printTimes(const Measurements& measurements);

}  // namespace torvik::bench
