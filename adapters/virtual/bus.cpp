#include "bus.hpp"

#include <algorithm>

#include "baud_rates.hpp"

namespace virtual_adapter {
namespace {

constexpr Nanoseconds kMicrosecond = 1000;

bool isCommand(const Frame& frame) {
    return frame.type == kStandardFrame && frame.length >= 2 && (frame.data[0] & 0x80U) != 0;
}

Frame foreignFrame(std::uint32_t id, std::uint64_t number) {
    const std::uint8_t type = id > kHighestStandardId ? kExtendedFrame : kStandardFrame;
    Frame frame{id, type, 8, {}};
    for (unsigned i = 0; i < 8; ++i)
        frame.data[i] = static_cast<std::uint8_t>(number >> (56U - 8U * i));
    return frame;
}

}  // namespace

void Bus::setUp(const BenchConfig& bench) {
    std::vector<std::unique_ptr<Amplifier>> amplifiers;
    std::vector<std::uint32_t> commandIds;
    for (const AmplifierConfig& config : bench.amplifiers) {
        commandIds.push_back(config.commandId);
        amplifiers.push_back(std::make_unique<Amplifier>(config));
    }
    std::vector<Nanoseconds> ready(amplifiers.size() + 2, kNever);
    timing_ = bench.timing;
    amplifiers_ = std::move(amplifiers);
    commandIds_ = std::move(commandIds);
    ready_ = std::move(ready);
}

void Bus::release() {
    amplifiers_ = std::vector<std::unique_ptr<Amplifier>>();
    commandIds_ = std::vector<std::uint32_t>();
    ready_ = std::vector<Nanoseconds>();
    rules_ = AnswerRules();
}

void Bus::open(Nanoseconds now, std::uint32_t bitRate) {
    bitRate_ = bitRate;
    busFree_ = now;
    unsent_.clear();
    for (const auto& amplifier : amplifiers_)
        amplifier->connect(now);
    startForeign(now);
    updateDue();
}

void Bus::close() {
    bitRate_ = 0;
    nextDue_ = kNever;
}

void Bus::advance(Nanoseconds now, FrameReceiver& receiver) {
    if (bitRate_ == 0) return;
    for (std::uint32_t turns = 0;; ++turns) {
        const Turn turn = nextTurn();
        if (turn.begin > now) break;
        const Nanoseconds end = turn.begin + duration(turn.node);
        if (end > now) break;
        if (turns == kMostTurns) {
            leaveOutMissed(now);
            break;
        }
        takeTurn(turn, end, receiver);
    }
    findNextDue();
}

void Bus::leaveOutMissed(Nanoseconds now) {
    for (const auto& amplifier : amplifiers_)
        amplifier->leaveOutMissed(now);
    foreign_.ready = std::max(foreign_.ready, now);
    for (std::size_t node = 0; node < ready_.size(); ++node)
        refresh(node);
}

bool Bus::write(const Frame& frame, Nanoseconds now, FrameReceiver& receiver) {
    if (!timing_) {
        carryToAmplifiers(frame, now);
        advance(now, receiver);
        return true;
    }
    if (unsent_.size() == kTransmitSlots) return false;
    unsent_.push({now, frame});
    refresh(clientNode());
    findNextDue();
    return true;
}

void Bus::dropUnsent() {
    unsent_.clear();
    refresh(clientNode());
    findNextDue();
}

void Bus::setLoad(std::uint32_t percent, std::uint32_t id, Nanoseconds now) {
    if (ready_.empty()) return;
    foreign_ = {};
    foreign_.id = std::min(id, kHighestExtendedId);
    foreign_.percent = std::min(percent, 100U);
    startForeign(now);
    refresh(foreignNode());
    findNextDue();
}

void Bus::startForeign(Nanoseconds now) {
    foreign_.ready = kNever;
    if (foreign_.percent == 0 || bitRate_ == 0) return;
    const Nanoseconds time = frameDuration(frameBits(foreignFrame(foreign_.id, 0).type, 8), bitRate_);
    foreign_.period = time * 100 / foreign_.percent;
    foreign_.ready = now + foreign_.period;
}

void Bus::updateDue() {
    for (std::size_t node = 0; node < ready_.size(); ++node)
        refresh(node);
    findNextDue();
}

void Bus::sendSet(std::size_t device, Nanoseconds now, FrameReceiver& receiver) {
    ValueStream::Frames frames;
    const std::size_t count = amplifiers_[device]->values().nextSet(frames);
    for (std::size_t i = 0; i < count; ++i) {
        ++counters_.valueFramesSent;
        receiver.receive(frames[i], now);
    }
}

void Bus::refresh(std::size_t node) {
    if (node < amplifiers_.size()) {
        ready_[node] = amplifiers_[node]->headTime();
    } else if (node == foreignNode()) {
        ready_[node] = foreign_.ready;
    } else {
        ready_[node] = unsent_.empty() ? kNever : unsent_.front().time;
    }
}

void Bus::findNextDue() {
    if (bitRate_ == 0) return;
    const Turn turn = nextTurn();
    if (turn.begin == kNever) {
        nextDue_ = kNever;
        return;
    }
    nextDue_ = turn.begin + duration(turn.node);
    // What the client sends itself does not come back to it; the earliest that can follow is a frame of 8 bytes.
    const bool client = turn.node == clientNode();
    answerNext_ = client || (turn.node < amplifiers_.size() && amplifiers_[turn.node]->headIsAnswer());
    if (timing_ && client) nextDue_ += frameDuration(frameBits(kStandardFrame, 8), bitRate_);
}

std::uint32_t Bus::headId(std::size_t node) const {
    if (node < amplifiers_.size()) return amplifiers_[node]->headId();
    return node == foreignNode() ? foreign_.id : unsent_.front().frame.id;
}

Bus::Turn Bus::nextTurn() const {
    const auto first = std::ranges::min_element(ready_);
    Turn turn{static_cast<std::size_t>(first - ready_.begin()), *first};
    if (!timing_ || *first == kNever) return turn;
    turn.begin = std::max(busFree_, *first);
    for (std::size_t node = 0; node < ready_.size(); ++node) {
        if (ready_[node] <= turn.begin && headId(node) < headId(turn.node)) turn.node = node;
    }
    return turn;
}

Nanoseconds Bus::duration(std::size_t node) const {
    if (!timing_) return 0;
    if (node != clientNode())
        return frameDuration(frameBits(headId(node) > kHighestStandardId ? kExtendedFrame : 0, 8), bitRate_);
    const Frame& frame = unsent_.front().frame;
    return frameDuration(frameBits(frame.type, frame.length), bitRate_);
}

void Bus::takeTurn(const Turn& turn, Nanoseconds end, FrameReceiver& receiver) {
    if (turn.node < amplifiers_.size()) {
        sendFromAmplifier(turn, end, receiver);
    } else if (turn.node == foreignNode()) {
        busFree_ = end;
        receiver.receive(foreignFrame(foreign_.id, foreign_.sent++), end);
        foreign_.ready = std::max(foreign_.ready + foreign_.period, turn.begin);
    } else {
        busFree_ = end;
        const Frame frame = unsent_.front().frame;
        unsent_.pop();
        carryToAmplifiers(frame, end);
    }
    refresh(turn.node);
}

void Bus::sendFromAmplifier(const Turn& turn, Nanoseconds end, FrameReceiver& receiver) {
    Amplifier& amplifier = *amplifiers_[turn.node];
    do {
        Frame frame;
        const Amplifier::Sent sent = amplifier.takeFrame(frame, turn.begin);
        if (sent == Amplifier::Sent::nothing) return;
        ++(sent == Amplifier::Sent::answer ? counters_.answersSent : counters_.valueFramesSent);
        busFree_ = end;
        receiver.receive(frame, end);
    } while (!timing_ && amplifier.setBegun());
}

void Bus::carryToAmplifiers(const Frame& frame, Nanoseconds arrival) {
    if (!isCommand(frame)) return;
    for (std::size_t device = 0; device < commandIds_.size(); ++device) {
        if (commandIds_[device] == frame.id && amplifiers_[device]->onBus(arrival)) carryOut(device, frame, arrival);
    }
}

void Bus::carryOut(std::size_t device, const Frame& frame, Nanoseconds arrival) {
    ++counters_.commandsReceived;
    Amplifier& amplifier = *amplifiers_[device];
    const std::uint8_t command = frame.data[1];
    // What it has to send next may have changed even if memory runs out half way.
    const auto refreshed = [this, device, &amplifier](const void*) {
        commandIds_[device] = amplifier.commandId();
        refresh(device);
    };
    const std::unique_ptr<const void, decltype(refreshed)> atEnd(this, refreshed);
    const bool answered = amplifier.answers(command);
    auto rule = answered ? rules_.take(static_cast<std::uint32_t>(device), command) : std::nullopt;
    if (rule && rule->action == VIRTUAL_ANSWER_REPLACE) {
        queueAnswer(amplifier, rule->answer, arrival, rule);
    } else {
        const Reply reply = amplifier.execute(frame, arrival);
        bool first = true;
        for (const Reply::Answer& answer : reply.answers()) {
            if (!first) rule = rules_.take(static_cast<std::uint32_t>(device), command);
            first = false;
            queueAnswer(amplifier, answer, arrival, rule);
        }
    }
}

void Bus::queueAnswer(Amplifier& amplifier, const Reply::Answer& answer, Nanoseconds arrival,
                      const std::optional<AnswerRules::Rule>& rule) {
    const Nanoseconds ready = arrival + amplifier.config().answerTime * kMicrosecond;
    const auto queue = [&](const Reply::Answer& queued, Nanoseconds at) {
        if (!amplifier.queueAnswer(queued, at)) ++counters_.answersDropped;
    };
    if (!rule) return queue(answer, ready);
    switch (rule->action) {
        case VIRTUAL_ANSWER_DROP:
            ++counters_.answersDropped;
            break;
        case VIRTUAL_ANSWER_DELAY:
            queue(answer, arrival + rule->microseconds * kMicrosecond);
            break;
        case VIRTUAL_ANSWER_DOUBLE:
            queue(answer, ready);
            queue(answer, ready);
            break;
        default:
            queue(rule->answer, ready);
            break;
    }
}

}  // namespace virtual_adapter
