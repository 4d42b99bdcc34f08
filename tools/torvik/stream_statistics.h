#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "command_line.h"
#include "connection.h"

namespace torvik::tool {

struct ChannelStatistics {
    double mean = 0;
    double deviation = 0;  ///< standard deviation
};

/// Each channel over so many seconds of the stream, without the first `left` sets. Throws Failure when no values come,
/// which names `what` as tried, and Interrupted when the end is requested.
std::vector<ChannelStatistics> measureStream(Session& session, const Connection& connection, std::size_t bufferSize,
                                             double seconds, std::size_t left, const std::string& what);

}  // namespace torvik::tool
