// Loads a design into a device so that no other filter than the one asked for ever runs or is stored.
#pragma once

#include "connection.h"
#include "filters/filter_image.h"
#include "filters/filter_request.h"

namespace torvik::tool {

class FilterLoading {
  public:
    /// Lets the library check the design and reads the filter that it will replace. Throws Failure; the device is
    /// unchanged then.
    FilterLoading(const Connection& connection, const FilterDesign& design, std::uint32_t number);

    /// Writes the design as the filter, which has to be off, and reads it back. Stores nothing. When the device refuses
    /// it or holds something else, the former filter is written back, the differences go to standard error, and Failure
    /// is thrown.
    void write() const;

  private:
    const Connection& connection_;
    std::uint32_t number_;
    std::uint32_t protocolKind_;
    FilterImage image_;
    FilterImage former_;
};

}  // namespace torvik::tool
