#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "connection_options.h"
#include "core/command.h"
#include "core/wire.h"
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

    /// Sends one command and returns its answer. Throws Failure.
    AnswerView ask(Command command, const Parameters& parameters, const std::string& tried) const;

    /// The same; `nullopt`: the device refused the command.
    std::optional<AnswerView> askUnlessRefused(Command command, const Parameters& parameters,
                                               const std::string& tried) const;

    /// Throws the library's last error of this device as a Failure.
    [[noreturn]] void fail(ExitCode exitCode, const std::string& tried) const;

  private:
    /// The answer stays as it was unless one came.
    std::int32_t sendCommand(Command command, const Parameters& parameters, std::array<std::uint8_t, 8>& answer) const;

    std::int32_t deviceNo_;
    std::uint32_t channelCount_ = 0;
};

}  // namespace torvik::tool
