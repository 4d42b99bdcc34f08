// The form of a configuration file: what a user sets on a device, as TOML.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "parameters/parameter.h"

namespace torvik::tool {

struct ConfigurationItem {
    const Parameter* parameter;
    Place place;
    Value value;
};

/// Parameters of the device itself stand in [device], those of channels in [channel.N], others in a table of their
/// own name with the places as keys.
std::string configurationText(std::span<const ConfigurationItem> items);

/// Whether a file with this item could be loaded: devices may hold numbers that nothing can be set to, such as NaN.
bool canBeLoaded(const ConfigurationItem& item);

/// The items in the order in which they are to be written. Throws Failure with the line of a mistake.
std::vector<ConfigurationItem> parseConfiguration(std::string_view text, const std::string& fileName);

/// The same from a file, which is read once: a pipe will do. Throws Failure with the cause, too, when it cannot be read
/// or is larger than 1 MiB.
std::vector<ConfigurationItem> readConfiguration(const std::string& fileName);

}  // namespace torvik::tool
