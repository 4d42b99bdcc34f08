#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <vector>

#include "connection.h"

namespace torvik::tool {

/// Complete sets taken from the library's buffer, one value per channel each, set after set.
struct SetBatch {
    std::span<const double> values;
    std::span<const std::uint32_t> statuses;
    std::size_t sets = 0;
    std::size_t waiting = 0;  ///< sets that waited in the buffer when the batch was taken
    bool overflowed = false;  ///< the buffer was full: values are lost, and it has been emptied to start in order again
};

class SetReader {
  public:
    static constexpr std::size_t mostSets = 4096;

    SetReader(const Connection& connection, std::size_t bufferSize);

    /// Takes the sets that wait, so many at most. The batch's spans hold until the next call. Throws Failure.
    SetBatch read(std::size_t limit);

    /// The library offers no waiting for values: it is asked this often. Small buffers need it more often to stay in
    /// order.
    std::chrono::milliseconds pollInterval() const;

  private:
    const Connection& connection_;
    std::size_t bufferSize_;
    std::vector<double> values_;
    std::vector<std::uint32_t> statuses_;
};

}  // namespace torvik::tool
