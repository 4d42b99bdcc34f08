#pragma once

#include <string>

#include "filters/filter_request.h"

namespace torvik::tool {

enum class PictureFormat : std::uint8_t { png, svg };

/// The commands and data from which gnuplot draws step and frequency response, ideal and device, into the file that is
/// its first argument, or to standard output. They contain no file name: as an argument, it cannot become a command.
std::string plotScript(const FilterDesign& design, PictureFormat format);

}  // namespace torvik::tool
