// Frames handed out by the adapter = stored in value sets + put into answer rings + dropped for a named reason.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "api/TORVIKstatistics.h"

namespace torvik::proof {

// The counts since an earlier reading.
class FrameLaw {
  public:
    // Counts from here on; nothing may be under way.
    FrameLaw();

    // The counts of a device (0: all) since then.
    TORVIKstatistics since(std::uint8_t deviceNo) const;

    // What breaks the law, once nothing is under way any more; empty: nothing.
    std::vector<std::string> broken() const;

  private:
    std::vector<TORVIKstatistics> before_;
    std::uint64_t handedOutBefore_;
};

}  // namespace torvik::proof
