#include "witness.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <span>

#include "api/TORVIK.h"
#include "core/device_table.h"
#include "platform/sync.h"

namespace {

using namespace torvik;

struct Witnessed {
    std::atomic<int> releases = 0;  // under way
    std::atomic<bool> met = false;
};

constinit std::array<Witnessed, deviceLimit> witnessed;
constinit std::atomic<std::uint64_t> waitsCutShort = 0;

// The record that the wait is inside of: each has a mutex of its own to wait with.
void witnessEndOfWait(const platform::Mutex& mutex) {
    for (std::size_t deviceNo = 0; deviceNo < deviceLimit; ++deviceNo) {
        const DeviceRecord& record = deviceTable()[deviceNo];
        if (&record.busyLock != &mutex) continue;
        if (!record.gate.closing() || !record.active || witnessed[deviceNo].releases == 0) return;
        ++waitsCutShort;
        witnessed[deviceNo].met = true;
    }
}

class WitnessClock final : public platform::Clock {
  public:
    platform::TimePoint now() override { return platform::systemNow(); }

    bool waitUntil(platform::Condition& condition, platform::Mutex& mutex, platform::TimePoint deadline) override
        REQUIRES(mutex) {
        const platform::TimePoint before = now();
        if (before >= deadline) return false;
        condition.waitFor(mutex, deadline - before);
        witnessEndOfWait(mutex);
        return now() < deadline;
    }
};

constinit WitnessClock witnessClock;

// The devices that TORVIKrelease takes down.
std::span<Witnessed> releasedBy(std::int32_t deviceNo) {
    if (deviceNo == 0) return witnessed;
    const bool one = deviceNo >= 1 && deviceNo < static_cast<std::int32_t>(deviceLimit);
    return one ? std::span(witnessed).subspan(static_cast<std::size_t>(deviceNo), 1) : std::span<Witnessed>();
}

}  // namespace

void chaosWitness() {
    platform::setClock(&witnessClock);
}

std::int32_t chaosRelease(std::int32_t deviceNo, bool* met) {
    if (met == nullptr) return -2;
    for (Witnessed& device : releasedBy(deviceNo))
        ++device.releases;
    const std::int32_t result = TORVIKrelease(deviceNo);
    *met = false;
    for (Witnessed& device : releasedBy(deviceNo)) {
        --device.releases;
        // Taken by one release only, however many there are at the same time.
        if (device.met.exchange(false)) *met = true;
    }
    return result;
}

std::uint64_t chaosWaitsCutShort() {
    return waitsCutShort;
}
