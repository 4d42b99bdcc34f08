#pragma once

#include <string>

#include "set_reader.h"

namespace torvik::tool {

/// Where streamed sets go: the CSV lines or the live table.
class SetSink {
  public:
    virtual ~SetSink() = default;

    /// Takes what was read after so many seconds of streaming; called regularly, with empty batches too.
    virtual void take(const SetBatch& batch, double seconds) = 0;

    /// Tells the user something that does not end the stream.
    virtual void notice(const std::string& text) = 0;

    /// Ends the output tidily.
    virtual void finish(double seconds) = 0;
};

}  // namespace torvik::tool
