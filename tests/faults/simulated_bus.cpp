#include "faults/simulated_bus.h"

#include <algorithm>
#include <cstring>

#include "can/receive_thread.h"
#include "faults/failing_services.h"
#include "platform/dynamic_library.h"
#include "support/adapter_entry_points.h"

namespace torvik {

namespace test {

namespace {

using namespace std::chrono_literals;

// As long as the receive thread sleeps when nothing wakes it.
constexpr auto wakeUpInterval = 200ms;

constexpr std::uint8_t answerHeader = 0x46;
constexpr std::uint32_t unknownAnswerId = 0x7F1;
constexpr std::uint32_t serialNumber = 12345;
constexpr std::uint32_t floatOne = 0x3F800000;
constexpr std::uint32_t floatThousand = 0x447A0000;
constexpr std::uint32_t floatTenth = 0x3DCCCCCD;

thread_local bool pumping = false;

constexpr std::uint8_t highByte(std::uint16_t number) {
    return static_cast<std::uint8_t>(number >> 8);
}

constexpr std::uint8_t lowByte(std::uint16_t number) {
    return static_cast<std::uint8_t>(number);
}

Bytes answer(std::initializer_list<std::uint8_t> data) {
    Bytes bytes{answerHeader, 0};
    std::ranges::copy(data, bytes.begin() + 2);
    return bytes;
}

Bytes word(std::uint32_t number) {
    const auto byte = [number](int place) { return static_cast<std::uint8_t>(number >> (8 * place)); };
    return answer({byte(3), byte(2), byte(1), byte(0)});
}

std::uint32_t calibrationElement(std::uint8_t arrayCode) {
    return (arrayCode & 0x7F) == 0 ? serialNumber : floatOne;
}

// What a device says of itself; acknowledgements for everything else.
std::vector<Bytes> ownAnswers(std::int32_t deviceNo, const PcanMessage& message, std::uint32_t firmware) {
    switch (message.data[1]) {
        case 0x01:
            return {word(identOf(deviceNo))};
        case 0x11:
            return {answer({1, 'd', 'a', 'N', 'm'}), answer({2, 0, 0, 0, 0})};
        case 0x1B:
            return {answer({1, 'S', 'I', 'X', '-'}), answer({2, '2', '0', '0', 'N'}), answer({3, '-', '5', 'N', 'm'}),
                    answer({4, 0, 0, 0, 0})};
        case 0x26:
            return {word(0x00000106)};  // 6 channels
        case 0x2B:
            return {word(firmware)};
        case 0x47:
            return {word(calibrationElement(message.data[2]))};
        case 0x49:
            return {answer({0, 6})};
        case 0x4B:
            return {answer({0x24})};
        case 0x4D:
            return {word(floatTenth)};
        case 0x4F:
            return {word(0x00800000U + message.data[3])};
        case 0x51:
            return {word(0x00000102)};
        case 0x54:
            return {answer({'A', 'B', 0})};
        case 0x8A:
            return {word(floatThousand)};
        case 0x8C:
            return {word(valueIdOf(deviceNo))};
        default:
            return std::vector<Bytes>(answersOf(message.data[1]), word(0));
    }
}

}  // namespace

SimulatedBus& SimulatedBus::instance() {
    static SimulatedBus bus;
    return bus;
}

void SimulatedBus::restore(SimulatedClock& clock) {
    end();
    failNoCall();
    clock_ = &clock;
    script_.clear();
    positions_.clear();
    sent_.clear();
    onReceiveThread_ = false;
    framesRead_ = 0;
    const std::scoped_lock lock(queueMutex_);
    queue_.clear();
}

void SimulatedBus::readOnReceiveThread() {
    testThread_ = std::this_thread::get_id();
    onReceiveThread_ = true;
}

void SimulatedBus::sendSet(std::int32_t deviceNo, std::uint16_t sequence, std::int16_t first) {
    constexpr std::uint8_t int16Type = 0x10;
    for (std::uint8_t channel = 0; channel < 6; ++channel) {
        const auto value = static_cast<std::uint16_t>(first + channel);
        put(valueIdOf(deviceNo),
            {channel, int16Type, highByte(sequence), lowByte(sequence), highByte(value), lowByte(value)});
    }
}

std::uint64_t SimulatedBus::framesRead() {
    const std::scoped_lock lock(queueMutex_);
    return framesRead_;
}

void SimulatedBus::script(std::span<const Answer> answers) {
    script_.assign(answers.begin(), answers.end());
}

void SimulatedBus::begin(const FaultPlan& plan, std::function<void()> release) {
    plan_ = plan;
    release_ = std::move(release);
    inExchange_ = true;
    brokenDown_ = false;
    position_ = 0;
    delivering_ = 0;
    positions_.clear();
    sent_.clear();
}

void SimulatedBus::end() {
    plan_ = {};
    inExchange_ = false;
    brokenDown_ = false;
}

void SimulatedBus::queueForeignAnswer() {
    put(unknownAnswerId, answer({9, 9, 9, 9}));
}

void SimulatedBus::pump() {
    if (onReceiveThread_) return;
    pumping = true;
    drainReceiveQueue();
    pumping = false;
}

void SimulatedBus::failCall(std::uint32_t nth, bool fromThenOn, std::uint32_t status) {
    callsUntilFailure_ = nth;
    fromThenOn_ = fromThenOn;
    failing_ = false;
    failureStatus_ = status;
    failedCall_.reset();
}

std::size_t SimulatedBus::waitingFrames() {
    const std::scoped_lock lock(queueMutex_);
    return queue_.size();
}

void SimulatedBus::failNoCall() {
    callsUntilFailure_ = 0;
    failing_ = false;
}

std::uint32_t SimulatedBus::call(Entry entry, std::uint8_t parameter) {
    const std::scoped_lock lock(queueMutex_);
    if (onReceiveThread_ && std::this_thread::get_id() == testThread_) return pcan::ok;
    if (failing_) return failureStatus_;
    if (callsUntilFailure_ == 0 || --callsUntilFailure_ > 0) return pcan::ok;
    failing_ = fromThenOn_;
    failedCall_ = FailedCall{entry, position_, delivering_, parameter, !queue_.empty()};
    return failureStatus_;
}

// The adapter's signal: a descriptor that the library asks for, or an event that it brings.
std::uint32_t SimulatedBus::getValue(std::uint8_t parameter, void* value) {
    if (onReceiveThread_ && parameter == pcan::receiveEvent) {
        const int descriptor = signal_.descriptor();
        std::memcpy(value, &descriptor, sizeof descriptor);
    }
    return call(Entry::getValue, parameter);
}

std::uint32_t SimulatedBus::setValue(std::uint8_t parameter, std::uint64_t value) {
    const std::uint32_t status = call(Entry::setValue, parameter);
    if (onReceiveThread_ && parameter == pcan::receiveEvent && status == pcan::ok) signal_.useEvent(value);
    return status;
}

std::uint32_t SimulatedBus::reset() {
    const std::uint32_t status = call(Entry::reset);
    if (status != pcan::ok) return status;
    const std::scoped_lock lock(queueMutex_);
    queue_.clear();
    return pcan::ok;
}

std::uint32_t SimulatedBus::read(PcanMessage& message) {
    // The library's own receive thread finds nothing: what it would do is done on the thread of the call.
    if (!pumping && !onReceiveThread_) return pcan::queueEmpty;
    if (brokenDown_) return plan_.adapterStatus;
    if (const std::uint32_t status = call(Entry::read); status != pcan::ok) {
        if (!onReceiveThread_) clock_->schedule(wakeUpInterval, [this] { pump(); });
        return status;
    }
    const std::scoped_lock lock(queueMutex_);
    if (queue_.empty()) {
        signal_.clear();
        return pcan::queueEmpty;
    }
    ++framesRead_;
    message.id = queue_.front().identifier;
    message.length = 8;
    message.data = queue_.front().data;
    queue_.pop_front();
    return pcan::ok;
}

std::uint32_t SimulatedBus::write(const PcanMessage& message) {
    const auto deviceNo = static_cast<std::int32_t>(message.id / 0x100);
    if (deviceNo == 1 && inExchange_) return writeToFirst(message);
    for (const Bytes& data : answersTo(deviceNo, message))
        put(answerIdOf(deviceNo), data);
    pump();
    return pcan::ok;
}

std::vector<Bytes> SimulatedBus::answersTo(std::int32_t deviceNo, const PcanMessage& message) {
    std::vector<Bytes> answers = ownAnswers(deviceNo, message, firmware_);
    if (deviceNo != 1) return answers;
    for (Bytes& data : answers) {
        if (const auto scripted = takeScripted(message.data[1])) data = *scripted;
    }
    return answers;
}

std::optional<Bytes> SimulatedBus::takeScripted(std::uint8_t command) {
    const auto found = std::ranges::find(script_, command, &Answer::command);
    if (found == script_.end()) return std::nullopt;
    Bytes bytes{answerHeader};
    std::ranges::copy(found->statusAndData, bytes.begin() + 1);
    script_.erase(found);
    return bytes;
}

std::uint32_t SimulatedBus::writeToFirst(const PcanMessage& message) {
    const std::vector<Bytes> answers = answersTo(1, message);
    const std::size_t first = position_;
    position_ += std::max<std::size_t>(answers.size(), 1);
    positions_.resize(position_);
    positions_[first].written = true;
    for (std::size_t i = 0; i < answers.size(); ++i)
        positions_[first + i].answered = true;
    if (const std::uint32_t status = call(Entry::write); status != pcan::ok) return status;
    const bool here = first == plan_.position;
    if (plan_.fault == Fault::adapterGone && here) breakDown();
    if (brokenDown_ || (plan_.fault == Fault::failedWrite && here)) return plan_.adapterStatus;
    sent_.push_back(message.data[1]);
    for (std::size_t i = 0; i < answers.size(); ++i)
        deliver(first + i, answers[i]);
    if (answers.empty() && here) {
        if (plan_.fault == Fault::release) scheduleRelease();
        if (plan_.fault == Fault::busOff) breakDown();
    }
    return pcan::ok;
}

void SimulatedBus::deliver(std::size_t position, const Bytes& data) {
    delivering_ = position;
    if (brokenDown_ || (plan_.fault == Fault::silentDevice && position >= plan_.position)) return;
    if (plan_.fault == Fault::shiftedAnswers && position >= plan_.position) {
        if (position == plan_.position) shifted_ = data;
        put(answerIdOf(1), shifted_);
        shifted_ = data;
    } else if (position == plan_.position) {
        deliverFaulty(data);
    } else {
        put(answerIdOf(1), data);
    }
    pump();
}

void SimulatedBus::deliverFaulty(const Bytes& data) {
    switch (plan_.fault) {
        case Fault::noAnswer:
            break;
        case Fault::release:
            scheduleRelease();
            break;
        case Fault::lateAnswer:
            clock_->schedule(plan_.delay, [this, data] {
                put(answerIdOf(1), data);
                pump();
            });
            break;
        case Fault::doubledAnswer:
            put(answerIdOf(1), data);
            put(answerIdOf(1), data);
            break;
        case Fault::misdirectedAnswer:
            misdirectedAnswer_ = data;
            put(answerIdOf(simulatedDevices), data);
            break;
        case Fault::foreignAnswer:
            queueForeignAnswer();
            put(answerIdOf(1), data);
            break;
        case Fault::errorStatus: {
            Bytes refusal = data;
            refusal[1] = plan_.deviceStatus;
            put(answerIdOf(1), refusal);
            break;
        }
        case Fault::busOff:
        case Fault::adapterGone:
            breakDown();
            break;
        default:
            put(answerIdOf(1), data);
            break;
    }
}

void SimulatedBus::scheduleRelease() {
    clock_->schedule(plan_.delay, [this] {
        if (inExchange_) release_();
    });
}

void SimulatedBus::put(std::uint32_t identifier, const Bytes& data) {
    if (identifier == answerIdOf(1)) lastAnswer_ = data;
    const std::scoped_lock lock(queueMutex_);
    queue_.push_back({identifier, data});
    if (onReceiveThread_) signal_.give();
}

void SimulatedBus::breakDown() {
    brokenDown_ = true;
    pump();
    scheduleWakeUps();
}

void SimulatedBus::scheduleWakeUps() {
    clock_->schedule(wakeUpInterval, [this] {
        if (!brokenDown_) return;
        pump();
        scheduleWakeUps();
    });
}

}  // namespace test

namespace {

using test::ServicesUntouched;
using test::SimulatedBus;

// One call of an entry point: what the bus does meanwhile is the test's own.
class BusCall : public test::AdapterDefaults {
  public:
    static BusCall instance() { return {}; }

    std::uint32_t initialize(const test::AdapterInitialization&) { return bus_.call(Entry::initialize); }
    std::uint32_t uninitialize(std::uint16_t) { return bus_.call(Entry::uninitialize); }
    std::uint32_t reset() { return bus_.reset(); }
    std::uint32_t read(PcanMessage& message, PcanTimestamp&) { return bus_.read(message); }
    std::uint32_t write(const PcanMessage& message) { return bus_.write(message); }
    std::uint32_t getValue(std::uint8_t parameter, void* value, std::uint32_t size) {
        AdapterDefaults::getValue(parameter, value, size);
        return bus_.getValue(parameter, value);
    }
    std::uint32_t setValue(const test::AdapterSetting& setting) {
        return bus_.setValue(setting.parameter, setting.value);
    }

  private:
    using Entry = SimulatedBus::Entry;

    ServicesUntouched untouched_;
    SimulatedBus& bus_ = SimulatedBus::instance();
};

}  // namespace

namespace platform {

void* loadAdapterLibrary() {
    const ServicesUntouched untouched;
    return SimulatedBus::instance().findsLibrary() ? &SimulatedBus::instance() : nullptr;
}

void* findSymbol(void*, const char* name) {
    const ServicesUntouched untouched;
    return SimulatedBus::instance().findsLibrary() ? test::AdapterEntryPoints<BusCall>::find(name) : nullptr;
}

}  // namespace platform

}  // namespace torvik
