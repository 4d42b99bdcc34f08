// What the library under test shows of its inside. The library is built of the same objects as TORVIK, with the witness
// beside them; these functions are exported with the others.
//
// A meeting is proved as follows. Every wait of a call inside a device's record (for the device to be free, for its
// answer, for its restart) goes through the library's clock, which the witness stands in for. When a wait ends and
// finds the gate of its record closed, the record active, and a release of that device under way, then this call is
// inside a record that is being released: the release cannot free anything before this call has left. The release that
// began while that was so has met it.
//
// The same clock sees what a call really waits for: an answer that does not come, a device that is busy with a command
// that is not answered, a pause. Only that time may make a call longer than a second.
#pragma once

#include <cstdint>

extern "C" {

// Sets the clock in; to be called once after the library is loaded. `excuse` is called, on the waiting thread, with the
// nanoseconds of each wait that is documented, `answered` with those of each wait for an answer that has come.
void chaosWitness(void (*excuse)(std::int64_t nanoseconds), void (*answered)(std::int64_t nanoseconds));

// TORVIKrelease. `met`: the release has met a call; null is refused with -2.
std::int32_t chaosRelease(std::int32_t deviceNo, bool* met);

// Waits of calls that ended because of a release, since loading. At most two for each call.
std::uint64_t chaosWaitsCutShort();
}
