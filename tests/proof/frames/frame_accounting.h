// The frame-accounting invariant: frames handed out by the adapter = stored in value sets + put into answer rings +
// dropped for a named reason.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/expected_counts.h"

namespace torvik::proof {

// The counts since an earlier reading.
class FrameAccounting {
  public:
    // Counts from here on; nothing may be under way.
    FrameAccounting();

    // The counts of a device (0: all) since then.
    TORVIKstatistics since(std::uint8_t deviceNo) const;

    // What violates the invariant, once nothing is under way any more; empty: nothing.
    std::vector<std::string> violations() const;

    // What a device's counts should be and are not.
    std::vector<std::string> differences(std::uint8_t deviceNo, const TORVIKstatistics& expected) const;

  private:
    std::vector<TORVIKstatistics> before_;
    std::uint64_t handedOutBefore_;
};

}  // namespace torvik::proof
