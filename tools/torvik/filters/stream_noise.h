#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "command_line.h"
#include "connection.h"

namespace torvik::tool {

/// The standard deviation of each channel over so many seconds of the stream, without the first `left` sets. Throws
/// Failure when no values come, Interrupted when the end is requested.
std::vector<double> measureNoise(Session& session, const Connection& connection, std::size_t bufferSize, double seconds,
                                 std::size_t left);

/// Channel by channel before and after, and by how much it dropped.
std::string noiseTable(const std::vector<double>& before, const std::vector<double>& after);

}  // namespace torvik::tool
