#include "proof_adapter.h"

#include <algorithm>

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

std::uint32_t ProofAdapter::read(PcanMessage& message, PcanTimestamp& timestamp) {
    timestamp = {};
    std::uint32_t status = readOnce(message);
    if (status == pcan::queueEmpty && signalled_.exchange(false)) {
        arrivals_.clear();
        // What came before the signal was cleared has none of its own any more.
        status = readOnce(message);
    }
    if (status == pcan::ok) {
        framesRead_.store(framesRead_.load(std::memory_order_relaxed) + 1, std::memory_order_release);
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
    if (const std::uint32_t status = takeStatus(Entry::write); status != pcan::ok) return status;
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
    if (const std::uint32_t status = takeStatus(Entry::getValue); status != pcan::ok) return status;
    if (parameter != pcan::receiveEvent) return pcan::unknownError;
    *static_cast<int*>(value) = arrivals_.descriptor();
    return pcan::ok;
}

std::uint32_t ProofAdapter::setValue(const test::AdapterSetting& setting) {
    if (const std::uint32_t status = takeStatus(Entry::setValue); status != pcan::ok) return status;
    if (setting.parameter == pcan::receiveEvent)
        arrivals_.useEvent(setting.size == sizeof(std::uint64_t) ? setting.value : 0);
    return pcan::ok;
}

std::uint32_t ProofAdapter::getErrorText(std::uint16_t language, char* text) {
    const std::uint32_t status = takeStatus(Entry::getErrorText);
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
