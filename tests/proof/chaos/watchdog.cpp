#include "watchdog.h"

namespace torvik::proof {

namespace {

constexpr std::int64_t million = 1'000'000;
constexpr std::int64_t bound = 1000 * million;  // beside the documented waits

std::int64_t now() {
    return std::chrono::nanoseconds(Watchdog::Clock::now().time_since_epoch()).count();
}

std::string describe(const char* name, std::int64_t own, std::int64_t waits) {
    return std::string(name) + ": " + std::to_string(own / million) + " ms beside " + std::to_string(waits / million) +
           " ms of documented waits";
}

}  // namespace

thread_local Watchdog::Slot* Watchdog::current = nullptr;
std::atomic<std::int64_t> Watchdog::answers = 0;
std::atomic<std::int64_t> Watchdog::timeOfAnswers = 0;

Watchdog::Watchdog(void (*onHang)(const std::string& what)) : onHang_(onHang), thread_([this] { watch(); }) {}

Watchdog::~Watchdog() {
    ends_ = true;
    thread_.join();
}

void Watchdog::begin(std::size_t thread, const char* name, std::chrono::milliseconds mostWaits) {
    Slot& slot = slots_[thread];
    slot.name = name;
    slot.mostWaits = mostWaits.count() * million;
    slot.excused = 0;
    slot.answers = 0;
    current = &slot;
    slot.began = now();
}

void Watchdog::end(std::size_t thread) {
    Slot& slot = slots_[thread];
    const std::int64_t took = now() - slot.began.exchange(0);
    current = nullptr;
    const std::int64_t own = took - slot.waits();
    if (took > bound) ++aboveOneSecond_;
    if (own > longestOwn_) note(slot, own);
    if (own <= boundOf(slot)) return;
    ++beyondBound_;
    const std::scoped_lock lock(longestMutex_);
    if (tooLong_.size() < 10) tooLong_.push_back(describe(slot.name, own, slot.waits()));
}

void Watchdog::excuse(std::int64_t nanoseconds) {
    if (current != nullptr) current->excused += nanoseconds;
}

void Watchdog::noteAnswer(std::int64_t nanoseconds) {
    ++answers;
    timeOfAnswers += nanoseconds;
    if (current != nullptr) ++current->answers;
}

std::chrono::microseconds Watchdog::meanAnswer() const {
    return std::chrono::microseconds(timeOfAnswers / std::max<std::int64_t>(answers, 1) / 1000);
}

// The time in which a command is answered is the machine's, as long as it is much the same for all.
std::int64_t Watchdog::boundOf(const Slot& slot) const {
    constexpr std::int64_t timesTheMean = 4;
    return bound + slot.answers * timesTheMean * std::chrono::nanoseconds(meanAnswer()).count();
}

std::vector<std::string> Watchdog::tooLong() {
    const std::scoped_lock lock(longestMutex_);
    return tooLong_;
}

void Watchdog::note(const Slot& slot, std::int64_t own) {
    const std::scoped_lock lock(longestMutex_);
    if (own <= longestOwn_) return;
    longestOwn_ = own;
    longest_ = describe(slot.name, own, slot.waits());
}

std::string Watchdog::longest() {
    const std::scoped_lock lock(longestMutex_);
    return longest_;
}

void Watchdog::watch() {
    // The longest wait that has not ended yet and will be excused, and some patience.
    constexpr std::int64_t hang = 4000 * million + 5000 * million;
    while (!ends_) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        for (const Slot& slot : slots_) {
            const std::int64_t began = slot.began;
            const std::int64_t own = now() - began - slot.waits();
            const char* const name = slot.name;
            // Not the same call any more when it began at another time.
            if (began == 0 || own <= hang + boundOf(slot) || slot.began != began) continue;
            onHang_(describe(name, own, slot.waits()) + ", and still inside");
        }
    }
}

}  // namespace torvik::proof
