// Bringing a device and a configuration together.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "command_line.h"
#include "configuration_file.h"
#include "connection.h"

namespace torvik::tool {

/// What the device is set to. What it refuses to tell is left out.
std::vector<ConfigurationItem> readConfiguration(Session& session, const Connection& connection, bool identifiers);

struct WriteSummary {
    std::size_t written = 0;
    std::vector<std::string> refused;  ///< each a line for the user
};

/// Writes what the device holds differently: first what restarts it, then the rest, identifiers last.
WriteSummary writeConfiguration(Session& session, const Connection& connection,
                                std::span<const ConfigurationItem> items);

/// A line for each item that the device holds differently.
std::vector<std::string> differencesOf(Session& session, const Connection& connection,
                                       std::span<const ConfigurationItem> items);

}  // namespace torvik::tool
