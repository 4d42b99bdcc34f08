#include "watchdog.h"

namespace torvik::proof {

namespace {

constexpr std::int64_t million = 1'000'000;

std::int64_t now() {
    return std::chrono::nanoseconds(Watchdog::Clock::now().time_since_epoch()).count();
}

std::string describe(const char* name, std::int64_t took, std::int64_t bound) {
    return std::string(name) + ": " + std::to_string(took / million) + " ms of " + std::to_string(bound / million);
}

}  // namespace

Watchdog::Watchdog(void (*onHang)(const std::string& what)) : onHang_(onHang), thread_([this] { watch(); }) {}

Watchdog::~Watchdog() {
    ends_ = true;
    thread_.join();
}

void Watchdog::begin(std::size_t thread, const char* name, std::chrono::milliseconds bound) {
    Slot& slot = slots_[thread];
    slot.name = name;
    slot.bound = bound.count() * million;
    slot.began = now();
}

void Watchdog::end(std::size_t thread) {
    Slot& slot = slots_[thread];
    const std::int64_t took = now() - slot.began.exchange(0);
    if (took > 1000 * million) ++aboveOneSecond_;
    const double part = static_cast<double>(took) / static_cast<double>(slot.bound);
    if (part > nearestPart_) note(slot, took);
    if (took > slot.bound) ++beyondBound_;
}

void Watchdog::note(const Slot& slot, std::int64_t took) {
    const std::scoped_lock lock(nearestMutex_);
    const double part = static_cast<double>(took) / static_cast<double>(slot.bound);
    if (part <= nearestPart_) return;
    nearestPart_ = part;
    nearest_ = describe(slot.name, took, slot.bound);
}

std::string Watchdog::nearest() {
    const std::scoped_lock lock(nearestMutex_);
    return nearest_;
}

void Watchdog::watch() {
    while (!ends_) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        for (const Slot& slot : slots_) {
            const std::int64_t began = slot.began;
            const std::int64_t bound = slot.bound;
            const char* const name = slot.name;
            // Not the same call any more when it began at another time.
            if (began == 0 || now() - began <= bound + 5000 * million || slot.began != began) continue;
            onHang_(describe(name, now() - began, bound) + ", and still inside");
        }
    }
}

}  // namespace torvik::proof
