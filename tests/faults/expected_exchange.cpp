#include "faults/expected_exchange.h"

#include <algorithm>

namespace torvik::test {

namespace {

using namespace std::chrono_literals;

constexpr auto answerLimit = 2000ms;
constexpr auto restartTime = 700ms;

constexpr std::uint8_t startTransmitting = 0x24;
constexpr std::uint8_t stopTransmitting = 0x23;
constexpr std::uint8_t resetDevice = 0x78;

}  // namespace

bool ExpectedExchange::failsToWrite(std::size_t position) const {
    if (silent_) return true;
    return (plan_.fault == Fault::failedWrite || plan_.fault == Fault::adapterGone) && position == plan_.position;
}

bool ExpectedExchange::send(std::uint8_t command) {
    const std::size_t answers = answersOf(command);
    if (cut_ && answers > 0) {
        store(expected_code::notActive);
        return false;
    }
    const std::size_t position = position_;
    position_ += std::max<std::size_t>(answers, 1);
    const bool failed = failsToWrite(position);
    if (plan_.fault == Fault::adapterGone && position >= plan_.position) silent_ = true;
    if (failed) {
        store(expected_code::deviceWrite);
        return false;
    }
    sent_.push_back(command);
    // The other answers overtake it.
    if (plan_.fault == Fault::lateAnswer && answers > 1) dataLost_ = true;
    for (std::size_t i = 0; i < answers; ++i)
        deliver(position + i);
    if (answers == 0 && position == plan_.position) {
        if (plan_.fault == Fault::release) releaseAt_ = now_ + plan_.delay;
        if (plan_.fault == Fault::busOff) silent_ = true;
    }
    return true;
}

void ExpectedExchange::deliver(std::size_t position) {
    if (silent_) return;
    if (plan_.fault == Fault::silentDevice && position >= plan_.position) return;
    if (position != plan_.position) {
        ring_.push_back(0);
        return;
    }
    switch (plan_.fault) {
        case Fault::noAnswer:
        case Fault::misdirectedAnswer:
            break;
        case Fault::busOff:
        case Fault::adapterGone:
            silent_ = true;
            break;
        case Fault::release:
            releaseAt_ = now_ + plan_.delay;
            break;
        case Fault::lateAnswer:
            lateAt_ = now_ + plan_.delay;
            break;
        case Fault::doubledAnswer:
            ring_.insert(ring_.end(), 2, 0);
            break;
        case Fault::errorStatus:
            ring_.push_back(plan_.deviceStatus);
            break;
        default:
            ring_.push_back(0);
            break;
    }
}

// Whatever is due before `until` happens.
void ExpectedExchange::advance(std::chrono::milliseconds until) {
    if (lateAt_ && *lateAt_ < until) {
        now_ = *lateAt_;
        lateAt_.reset();
        ring_.push_back(0);
    } else if (releaseAt_ && *releaseAt_ < until) {
        now_ = *releaseAt_;
        releaseAt_.reset();
        cut_ = true;
    } else {
        now_ = until;
    }
}

ExpectedExchange::Answer ExpectedExchange::take() {
    const auto deadline = now_ + answerLimit;
    while (ring_.empty()) {
        if (cut_ || now_ == deadline) {
            store(cut_ ? expected_code::notActive : expected_code::answerTimeout);
            dataLost_ = true;
            return Answer::missing;
        }
        advance(deadline);
    }
    const std::uint8_t status = ring_.front();
    ring_.pop_front();
    if (status < smallestRefusal) return Answer::good;
    refusal_ = status;
    dataLost_ = true;
    return Answer::refused;
}

bool ExpectedExchange::askNext() {
    const Answer answer = take();
    if (answer == Answer::refused) storeRefusal();
    return answer == Answer::good;
}

bool ExpectedExchange::ask(std::uint8_t command) {
    if (send(command)) return askNext();
    dataLost_ = true;
    return false;
}

bool ExpectedExchange::takeAcknowledgement() {
    const bool before = dataLost_;
    const Answer answer = take();
    dataLost_ = before;
    if (answer == Answer::missing) store(expected_code::internalCallFailed);
    if (answer == Answer::refused) storeRefusal();
    return answer == Answer::good;
}

bool ExpectedExchange::acknowledge(std::uint8_t command) {
    if (!send(command) || !takeAcknowledgement()) return false;
    if (command == startTransmitting) streaming_ = true;
    if (command == stopTransmitting) streaming_ = false;
    return true;
}

bool ExpectedExchange::pause(std::chrono::milliseconds duration) {
    const auto end = now_ + duration;
    while (!cut_ && now_ < end)
        advance(end);
    return !cut_;
}

std::int32_t ExpectedExchange::restart() {
    if (!knows(firmware_with::reset)) return fail(expected_code::firmwareUnsupported);
    if (!send(resetDevice)) return -1;
    if (!pause(restartTime)) return -1;
    // Whether the stream comes back is not reported.
    acknowledge(startTransmitting);
    return 0;
}

}  // namespace torvik::test
