#pragma once

#include <span>
#include <string>

#include "parameters/device_parameters.h"

namespace torvik::tool {

/// Everything that was read, grouped, for people: channels in columns, units behind the values.
std::string showPage(std::span<const ParameterReading> readings, std::uint32_t channels);

/// The same for programs: an object for each group, in it one for each parameter.
std::string showJson(std::span<const ParameterReading> readings);

}  // namespace torvik::tool
