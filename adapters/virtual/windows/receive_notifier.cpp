#include "receive_notifier.hpp"

#include "lock.hpp"
#include "platform.hpp"

namespace virtual_adapter {
namespace {

struct CloseHandleOf {
    using pointer = HANDLE;
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using OwnedHandle = std::unique_ptr<void, CloseHandleOf>;

struct EndWait {
    using pointer = PTP_WAIT;
    void operator()(PTP_WAIT wait) const {
        // A callback that has begun is waited for; it needs nothing but the adapter's lock, so that this is safe while
        // the library is being unloaded, too.
        SetThreadpoolWait(wait, nullptr, nullptr);
        WaitForThreadpoolWaitCallbacks(wait, TRUE);
        CloseThreadpoolWait(wait);
    }
};
using OwnedWait = std::unique_ptr<TP_WAIT, EndWait>;

HANDLE makeTimer() {
    constexpr DWORD highResolution = 0x2;
    HANDLE timer = CreateWaitableTimerExW(nullptr, nullptr, highResolution, TIMER_ALL_ACCESS);
    // Systems before Windows 10 1803 know the ordinary timer only.
    if (timer == nullptr) timer = CreateWaitableTimerExW(nullptr, nullptr, 0, TIMER_ALL_ACCESS);
    return timer;
}

HANDLE handleOf(std::uint64_t value) {
    // Handles are numbers that travel through parameters of 4 or 8 bytes.
    return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(value));  // NOLINT(performance-no-int-to-ptr)
}

}  // namespace

// A waitable timer whose expiry is waited for by the system's thread pool: a timer of the pool itself would be as
// coarse as the clock tick, and a thread of ours could not be ended while the library is being unloaded.
struct ReceiveNotifier::System {
    explicit System(ReceiveNotifier* notifier) : wait(CreateThreadpoolWait(&System::timerExpired, notifier, nullptr)) {}

    static void CALLBACK timerExpired(PTP_CALLBACK_INSTANCE, void* notifier, PTP_WAIT, TP_WAIT_RESULT) {
        static_cast<ReceiveNotifier*>(notifier)->dueTimeReached_();
    }

    // A timer that expires no later is left alone: its expiry leads here again. Setting one costs the system several
    // calls, too many for each look at the clock of a client that reads a full queue.
    void arm(Nanoseconds due) {
        if (due == kNever && armed != kNever) {
            armed = kNever;
            CancelWaitableTimer(timer.get());
        }
        if (armed <= due) return;
        armed = due;
        const Nanoseconds now = monotonicNow();
        LARGE_INTEGER relative{};
        relative.QuadPart = due > now ? -static_cast<LONGLONG>((due - now + 99) / 100) : -1;
        SetWaitableTimer(timer.get(), &relative, 0, nullptr, nullptr, FALSE);
        SetThreadpoolWait(wait.get(), timer.get(), nullptr);
    }

    std::uint64_t event = 0;
    Nanoseconds armed = kNever;
    OwnedHandle timer{makeTimer()};
    OwnedWait wait;
};

ReceiveNotifier::ReceiveNotifier(void (*dueTimeReached)()) : dueTimeReached_(dueTimeReached) {}
ReceiveNotifier::~ReceiveNotifier() = default;

Status ReceiveNotifier::get(std::uint64_t& value) {
    value = active_ ? system_->event : 0;
    return kOk;
}

Status ReceiveNotifier::set(std::uint64_t value) {
    if (value == 0) {
        if (active_) system_->arm(kNever);
        active_ = false;
        return kOk;
    }
    if (!system_) {
        auto system = std::make_unique<System>(this);
        if (!system->timer || !system->wait) return kNoResource;
        system_ = std::move(system);
    }
    system_->event = value;
    active_ = true;
    return kOk;
}

// The due frame is fetched before the client is woken.
Nanoseconds ReceiveNotifier::headStart() {
    return 0;
}

void ReceiveNotifier::update(bool waiting, bool arrived, Nanoseconds wakeTime) {
    if (waiting && arrived) SetEvent(handleOf(system_->event));
    system_->arm(wakeTime);
}

void ReceiveNotifier::expired() {
    if (system_) system_->armed = kNever;
}

void ReceiveNotifier::channelOpened() {}

void ReceiveNotifier::channelClosed() {
    if (!active_) return;
    SetEvent(handleOf(system_->event));
    system_->arm(kNever);
    active_ = false;
}

void ReceiveNotifier::abandon() {}

void ReceiveNotifier::release() {
    active_ = false;
    system_.reset();
}

}  // namespace virtual_adapter
