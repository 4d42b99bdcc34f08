#pragma once

#include <string>

#include "filters/filter_request.h"

namespace torvik::tool {

enum class PictureFormat : std::uint8_t { png, svg };

/// The commands and data from which gnuplot draws step and frequency response into a file, ideal and device.
std::string plotScript(const FilterDesign& design, PictureFormat format, const std::string& pictureFile);

}  // namespace torvik::tool
