#pragma once

#include <cstdint>
#include <string>

#include "set_reader.h"

namespace torvik::tool {

/// Sets as lines of comma-separated values: set number, seconds, one column per channel, optionally the statuses.
/// The numbers have a decimal point in every locale and as many digits as it takes to read them back unchanged.
class CsvFormat {
  public:
    CsvFormat(std::size_t channels, bool withStatus) : channels_(channels), withStatus_(withStatus) {}

    std::string header() const;

    /// The lines of a batch; set numbers go on from the batch before.
    std::string lines(const SetBatch& batch, double seconds);

  private:
    std::size_t channels_;
    bool withStatus_;
    std::uint64_t setNumber_ = 0;
};

}  // namespace torvik::tool
