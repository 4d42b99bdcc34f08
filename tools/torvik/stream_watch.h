#pragma once

#include <optional>

#include "connection.h"
#include "set_sink.h"

namespace torvik::tool {

/// Looks after a running stream: tells lost values and errors, starts a device that does not send, and ends a stream
/// that has dried up.
class StreamWatch {
  public:
    /// `timeout`: seconds without values that end the stream; 0: never.
    StreamWatch(const Connection& connection, SetSink& sink, double timeout);

    /// Called after each batch. Throws Failure.
    void check(const SetBatch& batch, double seconds);

    /// The Failure of a stream without values, with the latest error when there was one.
    [[noreturn]] void failWithoutValues(double seconds) const;

  private:
    void tellErrors(double seconds);
    void startDevice();

    const Connection& connection_;
    SetSink& sink_;
    double timeout_;
    double latestValues_ = 0.0;
    double nextLook_ = 1.0;
    bool valuesSeen_ = false;
    bool started_ = false;
    std::optional<LibraryError> latestError_;
};

}  // namespace torvik::tool
