#include "support/test_clock.h"

#include <algorithm>
#include <thread>

namespace torvik::test {

namespace {
constexpr std::chrono::milliseconds slice(1);
constexpr std::chrono::seconds clockPatience(10);
}  // namespace

TestClock::TestClock() : start_(platform::systemNow()), now_(start_) {
    platform::setClock(this);
}

TestClock::~TestClock() {
    platform::setClock(nullptr);
}

platform::TimePoint TestClock::now() {
    const std::scoped_lock lock(mutex_);
    return now_;
}

bool TestClock::waitUntil(platform::Condition& condition, platform::Mutex& mutex, platform::TimePoint deadline) {
    {
        const std::scoped_lock lock(mutex_);
        if (now_ >= deadline) return false;
        deadlines_.insert(deadline);
    }
    condition.waitFor(mutex, slice);
    const std::scoped_lock lock(mutex_);
    deadlines_.erase(deadlines_.find(deadline));
    return now_ < deadline;
}

void TestClock::advance(platform::Duration duration) {
    const std::scoped_lock lock(mutex_);
    now_ += duration;
}

void TestClock::advanceToEarliestDeadline() {
    const std::scoped_lock lock(mutex_);
    if (!deadlines_.empty()) now_ = std::max(now_, *deadlines_.begin());
}

std::optional<platform::Duration> TestClock::untilEarliestDeadline() {
    const std::scoped_lock lock(mutex_);
    if (deadlines_.empty()) return std::nullopt;
    return *deadlines_.begin() - now_;
}

bool TestClock::untilWaiting(std::size_t waiting) {
    const platform::TimePoint limit = platform::systemNow() + clockPatience;
    while (platform::systemNow() < limit) {
        {
            const std::scoped_lock lock(mutex_);
            if (deadlines_.size() >= waiting) return true;
        }
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    return false;
}

std::chrono::milliseconds TestClock::elapsed() {
    const std::scoped_lock lock(mutex_);
    return std::chrono::duration_cast<std::chrono::milliseconds>(now_ - start_);
}

}  // namespace torvik::test
