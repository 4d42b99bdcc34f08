#include "proof_adapter.h"

#include <algorithm>
#include <utility>

#include "core/command.h"
#include "platform/dynamic_library.h"

namespace torvik {

namespace proof {

namespace {

constexpr std::uint32_t firstCommandId = commandIdOf(0);

// Bytes 2..7 of the answer to what activation asks; anything else is acknowledged.
std::array<std::uint8_t, 6> answerDataOf(std::uint8_t command, std::uint8_t deviceNo) {
    const std::uint32_t valueId = valueIdOf(deviceNo);
    switch (static_cast<Command>(command)) {
        case Command::canSetting:
            return {0, 0, static_cast<std::uint8_t>(valueId >> 8), static_cast<std::uint8_t>(valueId & 0xFF)};
        case Command::firmwareVersion:
            return {0, 3, 0, 0x2F};
        case Command::channelCount:
            return {0, channelCount};
        default:
            return {};
    }
}

}  // namespace

ProofAdapter& ProofAdapter::instance() {
    static ProofAdapter adapter;
    return adapter;
}

void ProofAdapter::signal() {
    signalled_.store(true);
    arrivals_.give();
}

void ProofAdapter::fail(Entry entry, std::uint32_t status, std::uint32_t times) {
    const std::scoped_lock lock(entriesMutex_);
    failures_[static_cast<std::size_t>(entry)] = {status, times};
}

std::uint32_t ProofAdapter::stopFailing(Entry entry) {
    const std::scoped_lock lock(entriesMutex_);
    return std::exchange(failures_[static_cast<std::size_t>(entry)], {}).times;
}

EntryRecord ProofAdapter::recordOf(Entry entry) const {
    const std::scoped_lock lock(entriesMutex_);
    return records_[static_cast<std::size_t>(entry)];
}

std::uint32_t ProofAdapter::enter(Entry entry) {
    std::uint32_t status = pcan::ok;
    {
        const std::scoped_lock lock(entriesMutex_);
        Failure& failure = failures_[static_cast<std::size_t>(entry)];
        if (failure.times > 0) {
            --failure.times;
            status = failure.status;
        }
    }
    count(entry, status);
    return status;
}

void ProofAdapter::count(Entry entry, std::uint32_t status) {
    const std::scoped_lock lock(entriesMutex_);
    EntryRecord& record = records_[static_cast<std::size_t>(entry)];
    ++record.calls;
    const bool later = record.callsSinceOpening++ > 0;
    const auto* const found = std::ranges::find(adapterStatuses, status);
    if (found == adapterStatuses.end()) return;
    const auto index = static_cast<std::size_t>(found - adapterStatuses.begin());
    ++record.given[index];
    if (later) ++record.givenLater[index];
}

std::uint32_t ProofAdapter::initialize(const test::AdapterInitialization&) {
    {
        const std::scoped_lock lock(entriesMutex_);
        for (EntryRecord& record : records_)
            record.callsSinceOpening = 0;
    }
    return enter(Entry::initialize);
}

std::uint32_t ProofAdapter::read(PcanMessage& message, PcanTimestamp& timestamp) {
    timestamp = {};
    const std::uint32_t status = pauses() ? pcan::queueEmpty : readNext(message);
    if (status == pcan::ok) {
        frameGiven_ = true;
        if (FrameObserver* const observer = observer_.load(std::memory_order_acquire)) observer->handedOut(message);
        framesRead_.store(framesRead_.load(std::memory_order_relaxed) + 1, std::memory_order_release);
        return status;
    }
    if (status == pcan::queueEmpty)
        emptyReads_.store(emptyReads_.load(std::memory_order_relaxed) + 1, std::memory_order_release);
    count(Entry::read, status);
    return status;
}

bool ProofAdapter::pauses() {
    if (!frameGiven_ || !singly_.load(std::memory_order_relaxed)) return false;
    frameGiven_ = false;
    arrivals_.clear();
    signal();
    return true;
}

std::uint32_t ProofAdapter::readNext(PcanMessage& message) {
    std::uint32_t status = readOnce(message);
    if (status == pcan::queueEmpty && signalled_.exchange(false)) {
        arrivals_.clear();
        // What came before the signal was cleared has none of its own any more.
        status = readOnce(message);
    }
    return status;
}

std::uint32_t ProofAdapter::readOnce(PcanMessage& message) {
    if (answersWait_.load(std::memory_order_acquire) && takeAnswer(message)) return pcan::ok;
    FrameSource* const source = source_.load(std::memory_order_acquire);
    return source == nullptr ? pcan::queueEmpty : source->next(message);
}

bool ProofAdapter::takeAnswer(PcanMessage& message) {
    const std::scoped_lock lock(answersMutex_);
    if (answers_.empty()) return false;
    message = answers_.front();
    answers_.pop_front();
    answersWait_ = !answers_.empty();
    return true;
}

void ProofAdapter::forgetAnswers() {
    const std::scoped_lock lock(answersMutex_);
    answers_.clear();
    answersWait_ = false;
}

std::uint32_t ProofAdapter::write(const PcanMessage& message) {
    if (const std::uint32_t status = enter(Entry::write); status != pcan::ok) return status;
    const auto deviceNo = static_cast<std::uint8_t>((message.id - firstCommandId) / 4);
    PcanMessage answer;
    answer.id = answerIdOf(deviceNo);
    answer.length = 8;
    answer.data = {0x46, 0};
    std::ranges::copy(answerDataOf(message.data[1], deviceNo), answer.data.begin() + 2);
    {
        const std::scoped_lock lock(answersMutex_);
        answers_.push_back(answer);
        answersWait_ = true;
    }
    signal();
    return pcan::ok;
}

std::uint32_t ProofAdapter::getValue(std::uint8_t parameter, void* value, std::uint32_t /*size*/) {
    if (const std::uint32_t status = enter(Entry::getValue); status != pcan::ok) return status;
    if (parameter != pcan::receiveEvent) return pcan::unknownError;
    *static_cast<int*>(value) = arrivals_.descriptor();
    return pcan::ok;
}

std::uint32_t ProofAdapter::setValue(const test::AdapterSetting& setting) {
    if (const std::uint32_t status = enter(Entry::setValue); status != pcan::ok) return status;
    if (setting.parameter == pcan::receiveEvent)
        arrivals_.useEvent(setting.size == sizeof(std::uint64_t) ? setting.value : 0);
    return pcan::ok;
}

std::uint32_t ProofAdapter::getErrorText(std::uint16_t language, char* text) {
    const std::uint32_t status = enter(Entry::getErrorText);
    return status != pcan::ok ? status : AdapterDefaults::getErrorText(language, text);
}

}  // namespace proof

using proof::ProofAdapter;

namespace platform {

void* loadAdapterLibrary() {
    return &ProofAdapter::instance();
}

void* findSymbol(void*, const char* name) {
    return test::AdapterEntryPoints<ProofAdapter>::find(name);
}

}  // namespace platform

}  // namespace torvik
