#pragma once

#include <cstdint>
#include <string>

#include "connection_options.h"
#include "failure.h"

namespace torvik::tool {

/// An activated device. It is released, and the adapter closed, when the object goes.
class Connection {
  public:
    /// Loads the virtual adapter when it is asked for, and activates the device. Throws Failure.
    explicit Connection(const ConnectionOptions& options);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    std::int32_t deviceNo() const { return deviceNo_; }
    std::uint32_t channelCount() const { return channelCount_; }

    /// Throws the library's last error of this device as a Failure.
    [[noreturn]] void fail(ExitCode exitCode, const std::string& tried) const;

  private:
    std::int32_t deviceNo_;
    std::uint32_t channelCount_ = 0;
};

}  // namespace torvik::tool
