#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "command_line.h"
#include "connection.h"

namespace torvik::tool {

struct ProgressState {
    std::uint64_t answers = 0;   ///< of the device, so far
    std::uint64_t expected = 0;  ///< about so many in all
    double elapsed = 0;          ///< s
    bool complete = false;
};

/// One line with a bar, which is full only when the call is complete, whatever was expected.
std::string progressLine(std::string_view what, const ProgressState& state);

/// Runs calls that take long and shows a bar meanwhile, where messages go to a terminal; elsewhere it shows nothing.
class Progress {
  public:
    Progress(Session& session, const Connection& connection) : session_(session), connection_(connection) {}

    /// Runs the call, which takes about so many answers of the device, on a thread of its own, and gives its result. An
    /// end that is requested meanwhile waits for it.
    std::int32_t run(std::string_view what, std::size_t expected, const std::function<std::int32_t()>& call);

    /// What the last run took, in s.
    double seconds() const { return seconds_; }

  private:
    Session& session_;
    const Connection& connection_;
    double seconds_ = 0;
};

}  // namespace torvik::tool
