#include "receive_notifier.hpp"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <array>

namespace virtual_adapter {
namespace {

class Descriptor {
  public:
    explicit Descriptor(int value) : value_(value) {}
    ~Descriptor() {
        if (value_ >= 0) close(value_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    [[nodiscard]] int get() const { return value_; }
    [[nodiscard]] bool valid() const { return value_ >= 0; }

  private:
    int value_;
};

bool watch(const Descriptor& set, const Descriptor& member) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = member.get();
    return epoll_ctl(set.get(), EPOLL_CTL_ADD, member.get(), &event) == 0;
}

}  // namespace

// The client waits on `both`: the event says that frames are waiting, the timer that one is due. So the kernel wakes
// the client at the due time itself, without a thread of ours between.
struct ReceiveNotifier::System {
    Descriptor both{epoll_create1(EPOLL_CLOEXEC)};
    Descriptor event{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    Descriptor timer{timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)};
    bool signalled = false;
    Nanoseconds armed = kNever;

    [[nodiscard]] bool valid() const {
        return both.valid() && event.valid() && timer.valid() && watch(both, event) && watch(both, timer);
    }

    void signal(bool on) {
        if (on == signalled) return;
        // Neither call can fail: the counter is 0 or 1.
        eventfd_t count = 0;
        static_cast<void>(on ? eventfd_write(event.get(), 1) : eventfd_read(event.get(), &count));
        signalled = on;
    }

    void arm(Nanoseconds due) {
        if (due == armed) return;
        constexpr Nanoseconds second = 1'000'000'000;
        itimerspec time{};
        if (due != kNever) {
            time.it_value.tv_sec = static_cast<time_t>(due / second);
            time.it_value.tv_nsec = static_cast<long>(due % second);
        }
        timerfd_settime(timer.get(), TFD_TIMER_ABSTIME, &time, nullptr);
        armed = due;
    }
};

ReceiveNotifier::ReceiveNotifier(void (*dueTimeReached)()) : dueTimeReached_(dueTimeReached) {}
ReceiveNotifier::~ReceiveNotifier() = default;

Status ReceiveNotifier::get(std::uint64_t& value) {
    if (!system_) {
        auto system = std::make_unique<System>();
        if (!system->valid()) return kNoResource;
        system_ = std::move(system);
    }
    active_ = true;
    value = static_cast<std::uint64_t>(system_->both.get());
    return kOk;
}

// The descriptor belongs to the adapter: there is nothing to register or to take back.
Status ReceiveNotifier::set(std::uint64_t /*value*/) {
    return kOk;
}

Nanoseconds ReceiveNotifier::headStart() {
    return 50'000;
}

void ReceiveNotifier::update(bool waiting, bool /*arrived*/, Nanoseconds wakeTime) {
    system_->signal(waiting);
    if (!waiting) system_->arm(wakeTime);
}

// The kernel's timer tells the client itself.
void ReceiveNotifier::expired() {}

void ReceiveNotifier::channelOpened() {
    if (!system_) return;
    system_->signal(false);
    system_->arm(kNever);
}

// The descriptor stays open, so that nobody waits on one that has been given to somebody else meanwhile.
void ReceiveNotifier::channelClosed() {
    if (system_) system_->signal(true);
    active_ = false;
}

// Nothing is signalled: the counters behind the descriptors are the parent's, too.
void ReceiveNotifier::abandon() {
    active_ = false;
    system_.reset();
}

void ReceiveNotifier::release() {
    active_ = false;
    system_.reset();
}

}  // namespace virtual_adapter
