#pragma once

#include <cstdint>
#include <string>

#include "TORVIKstatistics.h"
#include "connection.h"

namespace torvik::tool {

/// What the library counted as lost while a stream ran.
struct Losses {
    std::uint64_t valuesUnread = 0;      ///< overwritten or thrown away in the library's buffer
    std::uint64_t valuesStale = 0;       ///< of the set before, delivered again
    std::uint64_t setsMissing = 0;       ///< by their numbers
    std::uint64_t sequenceJumps = 0;     ///< of these numbers, those included that tell no count of missing sets
    std::uint64_t setsUnfinished = 0;    ///< begun, but not complete
    std::uint64_t framesOutsideSet = 0;  ///< the first frame of their set is missing
    std::uint64_t framesNotRouted = 0;   ///< could not be given to a device in time
    std::uint64_t queueOverruns = 0;     ///< of the adapter
    std::uint64_t busLight = 0;          ///< the adapter reported it; the library then empties the adapter's queue
    std::uint64_t busHeavy = 0;          ///< the same
    std::uint64_t busOff = 0;            ///< the same
    std::uint64_t readsFailed = 0;       ///< the adapter reported anything else in place of a frame

    bool any() const;
    bool operator==(const Losses&) const = default;
};

/// One line for each kind of loss below the number of sets written, or one that says that nothing was lost.
std::string describe(const Losses& losses, std::uint64_t setsWritten);

/// Takes the library's counts at the beginning of a stream and compares them later.
class LossCounter {
  public:
    /// `newestOnly`: a buffer of one value, which is overwritten all the time and meant to be.
    LossCounter(const Connection& connection, bool newestOnly);

    /// To be called when the first sets have come: the rest of a set that had begun before the stream is not lost.
    void streamBegan();

    Losses losses() const;

  private:
    std::int32_t deviceNo_;
    std::uint32_t channels_;
    bool newestOnly_;
    TORVIKstatistics before_;
};

}  // namespace torvik::tool
