#include "adapter.hpp"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "baud_rates.hpp"
#include "platform.hpp"

namespace virtual_adapter {
namespace {

constexpr std::array<std::uint16_t, 4> kChannels{0x51, 0x41, 0x61, 0x01};
constexpr std::size_t kErrorTextSize = 256;

bool isChannel(std::uint16_t channel) {
    return std::ranges::find(kChannels, channel) != kChannels.end();
}

bool isLanguage(std::uint16_t language) {
    constexpr std::array<std::uint16_t, 6> languages{0x00, 0x07, 0x09, 0x0A, 0x0C, 0x10};
    return std::ranges::find(languages, language) != languages.end();
}

CanTimestamp timestampOf(Nanoseconds time) {
    const std::uint64_t microseconds = time / 1000;
    const std::uint64_t milliseconds = microseconds / 1000;
    return {static_cast<std::uint32_t>(milliseconds), static_cast<std::uint16_t>(milliseconds >> 32U),
            static_cast<std::uint16_t>(microseconds % 1000)};
}

bool isValid(const CanMessage& message) {
    if (message.length > 8 || (message.type & ~(kRemoteFrame | kExtendedFrame)) != 0) return false;
    return message.id <= ((message.type & kExtendedFrame) != 0 ? kHighestExtendedId : kHighestStandardId);
}

alignas(Adapter) std::array<std::byte, sizeof(Adapter)> storage;
std::atomic<bool> made = false;

Adapter& constructedInstance() {
    return *std::launder(reinterpret_cast<Adapter*>(storage.data()));
}

}  // namespace

Adapter& Adapter::instance() {
    static Adapter* const adapter = [] {
        auto* const constructed = std::construct_at(reinterpret_cast<Adapter*>(storage.data()));
        made = true;
        callAroundFork([] { constructedInstance().beforeFork(); }, [] { constructedInstance().afterForkInParent(); },
                       [] { constructedInstance().afterForkInChild(); });
        return constructed;
    }();
    return *adapter;
}

void Adapter::shutDownInstance() {
    if (made) instance().shutDown();
}

Adapter::Adapter() noexcept : notifier_([] { instance().dueTimeReached(); }) {
    try {
        const BenchResult result = configuredBench();
        if (result.bench) {
            useBench(*result.bench);
        } else {
            refuse(result);
        }
    } catch (...) {
        refuse(outOfMemory());
    }
}

Status Adapter::forcedStatus(FailRule& rule) {
    if (rule.skip > 0) {
        --rule.skip;
        return kOk;
    }
    if (rule.count != VIRTUAL_FOR_EVER) --rule.count;
    return rule.status;
}

Status Adapter::initialize(std::uint16_t channel, std::uint16_t btr0btr1) {
    return entry(VIRTUAL_INITIALIZE, [&]() -> Status {
        if (!isChannel(channel)) return kIllegalHandle;
        const std::uint32_t bitRate = bitRateOf(btr0btr1);
        if (bitRate == 0) return kIllegalValue;
        if (channel_ != 0) return channel == channel_ ? kNotInitialised : kHardwareInUse;
        if (shutDown_) return kNotInitialised;
        if (benchRefused_) return kIllegalData;
        channel_ = channel;
        bitRateCode_ = btr0btr1;
        notifier_.channelOpened();
        bus_.open(monotonicTime(), bitRate);
        return kOk;
    });
}

Status Adapter::uninitialize(std::uint16_t channel) {
    return entry(VIRTUAL_UNINITIALIZE, [&]() -> Status {
        if (channel == 0 && channel_ == 0) return kOk;
        if (const Status status = channel == 0 ? kOk : checkOpen(channel); status != kOk) return status;
        closeChannel();
        return kOk;
    });
}

Status Adapter::reset(std::uint16_t channel) {
    return entry(VIRTUAL_RESET, [&]() -> Status {
        if (const Status status = checkOpen(channel); status != kOk) return status;
        advance();
        discardWaiting();
        bus_.dropUnsent();
        notify();
        return kOk;
    });
}

Status Adapter::status(std::uint16_t channel) {
    return entry(VIRTUAL_GET_STATUS, [&]() -> Status {
        if (const Status status = checkOpen(channel); status != kOk) return status;
        advance();
        notify();
        return overrun_ ? kReceiveQueueOverrun : kOk;
    });
}

Status Adapter::read(std::uint16_t channel, CanMessage* message, CanTimestamp* timestamp) {
    return entry(VIRTUAL_READ, [&]() -> Status {
        if (const Status status = checkOpen(channel); status != kOk) return status;
        if (message == nullptr) return kIllegalValue;
        if (paused_) return kReceiveQueueEmpty;
        if (received_.empty() || ++readsSinceLook_ >= kReadsPerLook) lookAtClock();
        if (overrun_) {
            overrun_ = false;
            return kReceiveQueueOverrun;
        }
        if (received_.empty()) return kReceiveQueueEmpty;
        const TimedFrame& waiting = received_.front();
        message->id = waiting.frame.id;
        message->type = waiting.frame.type;
        message->length = waiting.frame.length;
        std::memcpy(message->data, waiting.frame.data.data(), sizeof message->data);
        if (timestamp != nullptr) *timestamp = timestampOf(waiting.time);
        received_.pop();
        ++counters_.framesRead;
        if (received_.empty()) lookAtClock();
        return kOk;
    });
}

Status Adapter::write(std::uint16_t channel, const CanMessage* message) {
    return entry(VIRTUAL_WRITE, [&]() -> Status {
        if (const Status status = checkOpen(channel); status != kOk) return status;
        if (message == nullptr || !isValid(*message)) return kIllegalValue;
        if (parameters_.get(parameter::kListenOnly) != 0) return kIllegalOperation;
        Frame frame{message->id, message->type, message->length, {}};
        std::memcpy(frame.data.data(), message->data, message->length);
        const Nanoseconds now = monotonicTime();
        bus_.advance(now, *this);
        const bool accepted = bus_.write(frame, now, *this);
        notify();
        if (!accepted) return kTransmitQueueFull;
        ++counters_.framesWritten;
        remember(frame);
        return kOk;
    });
}

Status Adapter::filterMessages(std::uint16_t channel, std::uint32_t from, std::uint32_t to, std::uint8_t mode) {
    return entry(VIRTUAL_FILTER_MESSAGES, [&]() -> Status {
        if (const Status status = checkOpen(channel); status != kOk) return status;
        if (mode != kStandardFrame && mode != kExtendedFrame) return kIllegalValue;
        const bool extended = mode == kExtendedFrame;
        if (from > to || to > (extended ? kHighestExtendedId : kHighestStandardId)) return kIllegalValue;
        advance();
        const bool added = filter_.add(from, to, extended);
        notify();
        return added ? kOk : kNoResource;
    });
}

Status Adapter::errorText(Status status, std::uint16_t language, char* buffer) {
    return entry(VIRTUAL_GET_ERROR_TEXT, [&]() -> Status {
        const char* const text = statusText(status);
        if (buffer == nullptr || text == nullptr || !isLanguage(language)) return kIllegalValue;
        return textToBuffer(text, buffer, kErrorTextSize);
    });
}

void Adapter::afterForkInChild() {
    channel_ = 0;
    bus_.close();
    received_.clear();
    notifier_.abandon();
    lock_.unlock();
}

void Adapter::dueTimeReached() {
    const std::lock_guard guard(lock_);
    notifier_.expired();
    if (channel_ == 0) return;
    advance();
    notify();
}

void Adapter::receive(const Frame& frame, Nanoseconds time) {
    if (!filter_.accepts(frame) || parameters_.get(parameter::kReceiveStatus) == 0) return;
    if (received_.size() == kReceiveQueueLength) {
        ++counters_.framesOverrun;
        overrun_ = true;
        return;
    }
    received_.push({time, frame});
    ++counters_.framesQueued;
    arrived_ = true;
}

Status Adapter::checkOpen(std::uint16_t channel) const {
    if (channel == channel_ && channel != 0) [[likely]]
        return kOk;
    return isChannel(channel) ? kNotInitialised : kIllegalHandle;
}

Nanoseconds Adapter::monotonicTime() {
    return monotonicNow();
}

void Adapter::lookAtClock() {
    readsSinceLook_ = 0;
    Nanoseconds now = monotonicTime();
    // The client was woken for this answer a little early.
    while (notifier_.active() && now < bus_.nextDue() && now >= wakeTime())
        now = monotonicTime();
    if (now >= bus_.nextDue()) bus_.advance(now, *this);
    notify();
}

Nanoseconds Adapter::wakeTime() const {
    const Nanoseconds due = bus_.nextDue();
    return due != kNever && bus_.answerNext() ? due - ReceiveNotifier::headStart() : due;
}

void Adapter::notify() {
    if (!notifier_.active()) return;
    const bool waiting = !paused_ && (!received_.empty() || overrun_);
    notifier_.update(waiting, arrived_, paused_ ? kNever : wakeTime());
    arrived_ = false;
}

void Adapter::closeChannel() {
    advance();
    discardWaiting();
    bus_.close();
    notifier_.channelClosed();
    filter_.set(Filter::State::open);
    parameters_.reset();
    channel_ = 0;
}

void Adapter::discardWaiting() {
    counters_.framesDiscarded += received_.size();
    received_.clear();
    overrun_ = false;
}

void Adapter::remember(const Frame& frame) {
    if (written_.size() == kHistoryLength) written_.pop();
    written_.push(frame);
}

void Adapter::shutDown() {
    {
        const std::lock_guard guard(lock_);
        if (channel_ != 0) closeChannel();
        shutDown_ = true;
        bus_.release();
        bench_ = BenchConfig();
        filter_ = Filter();
        message_ = {};
    }
    notifier_.release();
}

}  // namespace virtual_adapter
