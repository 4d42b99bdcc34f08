#include "witness.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <optional>
#include <span>

#include "api/TORVIK.h"
#include "core/device_table.h"
#include "platform/sync.h"

namespace {

using namespace torvik;

using platform::Condition;
using platform::Duration;
using platform::TimePoint;

// What callers are told; the library's own constants would excuse whatever it makes of them.
constexpr std::chrono::milliseconds documentedAnswerLimit(2000);
constexpr std::chrono::milliseconds documentedBusyLimit(4000);

struct Witnessed {
    std::atomic<int> releases = 0;  // under way
    std::atomic<bool> met = false;
    // Of the waits for answers that did not come: all their time, and since when one goes on.
    std::atomic<std::int64_t> silence = 0;
    std::atomic<std::int64_t> waitsSince = 0;
};

constinit std::array<Witnessed, deviceLimit> witnessed;
constinit std::atomic<std::uint64_t> waitsCutShort = 0;
constinit std::atomic<void (*)(std::int64_t)> excuseWait = nullptr;
constinit std::atomic<void (*)(std::int64_t)> noteAnswer = nullptr;

void witnessEndOfWait(const DeviceRecord& record, Witnessed& device) {
    if (!record.gate.closing() || !record.active || device.releases == 0) return;
    ++waitsCutShort;
    device.met = true;
}

// One part of a wait inside a record; what it is for tells its condition.
class WitnessedWait {
  public:
    WitnessedWait(const DeviceRecord& record, Witnessed& device, const Condition& condition, TimePoint deadline,
                  TimePoint begun)
        : record_(record), device_(device), condition_(condition), deadline_(deadline), begun_(begun) {
        silenceBefore_ = device.silence;
        if (&condition == &record.answerArrived)
            device.waitsSince = (deadline - documentedAnswerLimit).time_since_epoch().count();
    }

    void end(TimePoint now) {
        const Duration waited = std::min(now, deadline_) - begun_;
        if (&condition_ == &record_.pauseCutShort) return excuse(waited);
        if (&condition_ == &record_.answerArrived) return endOfAnswer(now, waited);
        // The device is busy for others, who may wait for answers.
        if (now >= deadline_) return excuse(std::min<Duration>(waited, documentedBusyLimit));
        Duration silence(device_.silence - silenceBefore_);
        if (const std::int64_t since = device_.waitsSince; since != 0 && record_.answerCount == 0)
            silence += now - TimePoint(Duration(since));
        excuse(std::clamp(silence, Duration(0), waited));
    }

  private:
    static void excuse(Duration duration) { excuseWait.load()(duration.count()); }

    void endOfAnswer(TimePoint now, Duration waited) {
        if (record_.answerCount > 0) {
            device_.waitsSince = 0;
            return noteAnswer.load()((now - (deadline_ - documentedAnswerLimit)).count());
        }
        // Woken for nothing: the wait goes on.
        if (now < deadline_ && !record_.gate.closing()) return;
        device_.silence += (std::min(now, deadline_) - (deadline_ - documentedAnswerLimit)).count();
        device_.waitsSince = 0;
        excuse(std::min<Duration>(waited, documentedAnswerLimit));
    }

    const DeviceRecord& record_;
    Witnessed& device_;
    const Condition& condition_;
    TimePoint deadline_;
    TimePoint begun_;
    std::int64_t silenceBefore_ = 0;
};

// The record that the wait is inside of: each has a mutex of its own to wait with.
std::optional<std::size_t> deviceOf(const platform::Mutex& mutex) {
    for (std::size_t deviceNo = 0; deviceNo < deviceLimit; ++deviceNo) {
        if (&deviceTable()[deviceNo].busyLock == &mutex) return deviceNo;
    }
    return std::nullopt;
}

class WitnessClock final : public platform::Clock {
  public:
    TimePoint now() override { return platform::systemNow(); }

    bool waitUntil(Condition& condition, platform::Mutex& mutex, TimePoint deadline) override REQUIRES(mutex) {
        const TimePoint before = now();
        if (before >= deadline) return false;
        const auto deviceNo = deviceOf(mutex);
        if (!deviceNo) {
            condition.waitFor(mutex, deadline - before);
            return now() < deadline;
        }
        const DeviceRecord& record = deviceTable()[*deviceNo];
        Witnessed& device = witnessed[*deviceNo];
        WitnessedWait wait(record, device, condition, deadline, before);
        condition.waitFor(mutex, deadline - before);
        const TimePoint after = now();
        wait.end(after);
        witnessEndOfWait(record, device);
        return after < deadline;
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

void chaosWitness(void (*excuse)(std::int64_t), void (*answered)(std::int64_t)) {
    excuseWait = excuse;
    noteAnswer = answered;
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
