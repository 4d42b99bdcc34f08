#pragma once

#include <string>
#include <vector>

#include "filters/filter_request.h"

namespace torvik::tool {

/// The design as `filter design` prints it. `source` tells where the sampling frequency comes from.
std::string designPage(const FilterDesign& design, const std::string& source);

/// What is wrong with a design although there is one, a line each.
std::vector<std::string> designWarnings(const FilterDesign& design);

}  // namespace torvik::tool
