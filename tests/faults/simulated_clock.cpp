#include "faults/simulated_clock.h"

#include <algorithm>

#include "faults/failing_services.h"

namespace torvik::test {

namespace {
thread_local bool simulated = false;
constexpr std::chrono::milliseconds slice(1);
}  // namespace

SimulatedClock::SimulatedClock() : now_(platform::systemNow()) {
    platform::setClock(this);
}

SimulatedClock::~SimulatedClock() {
    platform::setClock(nullptr);
}

bool SimulatedClock::waitUntil(platform::Condition& condition, platform::Mutex& mutex, platform::TimePoint deadline) {
    if (!simulated) {
        condition.waitFor(mutex, slice);
        return true;
    }
    const ServicesUntouched untouched;
    if (events_.empty() || events_.begin()->first >= deadline) {
        now_ = std::max(now_.load(), deadline);
        return false;
    }
    mutex.unlock();
    runFirst();
    mutex.lock();
    return now_.load() < deadline;
}

void SimulatedClock::schedule(std::chrono::milliseconds delay, std::function<void()> action) {
    events_.emplace(now_.load() + delay, std::move(action));
}

void SimulatedClock::letPass(std::chrono::milliseconds duration) {
    const platform::TimePoint end = now_.load() + duration;
    while (!events_.empty() && events_.begin()->first <= end)
        runFirst();
    now_ = end;
}

void SimulatedClock::runFirst() {
    auto first = events_.extract(events_.begin());
    now_ = std::max(now_.load(), first.key());
    first.mapped()();
}

std::chrono::milliseconds SimulatedClock::since(platform::TimePoint begin) const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(now_.load() - begin);
}

SimulatedCall::SimulatedCall() {
    simulated = true;
}

SimulatedCall::~SimulatedCall() {
    simulated = false;
}

}  // namespace torvik::test
