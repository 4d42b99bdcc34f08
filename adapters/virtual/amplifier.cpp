#include "amplifier.hpp"

#include <algorithm>
#include <span>

#include "commands/command_table.hpp"

namespace virtual_adapter {
namespace {

constexpr Nanoseconds kMillisecond = 1'000'000;

}  // namespace

Amplifier::Amplifier(const AmplifierConfig& config)
    : config_(config), identifiers_{config.commandId, config.answerId, config.valueId}, streaming_(config.streaming) {
    memory_.serial = config.serial;
    useActiveCalibration();
}

void Amplifier::loadSettings(std::uint8_t set, Nanoseconds now) {
    settings_.load(set);
    values_.clearFilters();
    bringIntoForce(now);
}

void Amplifier::useActiveCalibration() {
    if (config_.calibrated) values_.setForceMatrix(ForceMatrix::of(memory_.sensor.active()));
}

void Amplifier::restart(Nanoseconds now) {
    backOnBus_ = now + config_.resetTime * kMillisecond;
    settings_.restart();
    memory_.sensor.restart();
    const auto& numbered = settings().can.numbered;
    identifiers_ = {numbered[0], numbered[1], numbered[2]};
    values_.setIdentifier(identifiers_.value);
    values_.clearErrors();
    values_.clearFilters();
    for (std::size_t channel = 0; channel < kMostChannels; ++channel)
        values_.clearExtremes(channel);
    protocolErrors_.fill(0);
    identifierSet_ = false;
    bringIntoForce(now);
    forgetUnsent();
    restartSchedule(now);
}

void Amplifier::bringIntoForce(Nanoseconds now) {
    const Settings& present = settings();
    values_.setChannels(present.can.channelCount());
    for (std::size_t channel = 0; channel < kMostChannels; ++channel)
        values_.setScaling(channel, present.scaling[channel]);
    values_.setFilters(present.filters);
    const bool samePace = present.mode.streaming() == streaming_ && present.rates.frequency == values_.frequency();
    streaming_ = present.mode.streaming();
    values_.setFrequency(present.rates.frequency);
    if (!samePace) restartSchedule(now);
}

void Amplifier::requestSet(Nanoseconds now) {
    if (requestedSets_.size() < kMostWaiting) requestedSets_.push_back(now);
    updateHead();
}

void Amplifier::dropRequestedSets() {
    requestedSets_.clear();
    updateHead();
}

bool Amplifier::answers(std::uint8_t command) const {
    const CommandRow* const row = findCommand(command, config_.firmware);
    return row == nullptr || row->answered;
}

Reply Amplifier::execute(const Frame& command, Nanoseconds now) {
    Reply reply;
    const std::uint8_t code = command.data[1];
    const auto parameters = std::span(command.data).first(command.length).subspan(2);
    const CommandRow* const row = findCommand(code, config_.firmware);
    if (row == nullptr) {
        reply.error(device_status::kUnknownCommand);
    } else if (parameters.size() != row->parameterCount || (command.data[0] & 0x0FU) != row->parameterCount) {
        reply.error(device_status::kWrongParameterNumber);
    } else {
        CommandCall call{*this, parameters, now, reply};
        row->run(call);
    }
    if (reply.status() >= device_status::kFirstError) {
        std::shift_right(protocolErrors_.begin(), protocolErrors_.end(), 1);
        protocolErrors_[0] = static_cast<std::uint32_t>(code << 8U | reply.status());
    }
    return reply;
}

void Amplifier::connect(Nanoseconds now) {
    forgetUnsent();
    restartSchedule(now);
}

void Amplifier::leaveOutMissed(Nanoseconds now) {
    if (schedule_.due() <= now) schedule_.advancePast(now);
    updateHead();
}

void Amplifier::forgetUnsent() {
    answers_.clear();
    requestedSets_.clear();
    setSize_ = setPosition_ = 0;
}

void Amplifier::hold(bool on, Nanoseconds now) {
    if (on == held_) return;
    held_ = on;
    restartSchedule(now);
}

bool Amplifier::queueAnswer(const Reply::Answer& answer, Nanoseconds ready) {
    if (answers_.size() == kMostWaiting) return false;
    const auto later = [](Nanoseconds time, const Pending& pending) { return time < pending.ready; };
    const auto place = std::upper_bound(answers_.begin(), answers_.end(), ready, later);
    answers_.insert(place, Pending{ready, {identifiers_.answer, kStandardFrame, 8, answer}});
    updateHead();
    return true;
}

Amplifier::Sent Amplifier::takeFrame(Frame& frame, Nanoseconds begun) {
    if (headIsAnswer()) {
        frame = answers_.front().frame;
        answers_.pop_front();
        updateHead();
        return Sent::answer;
    }
    if (!setBegun()) beginSet(begun);
    const bool any = setBegun();
    if (any) frame = set_[setPosition_++];
    updateHead();
    return any ? Sent::value : Sent::nothing;
}

Nanoseconds Amplifier::setTime() const {
    const Nanoseconds requested = requestedSets_.empty() ? kNever : requestedSets_.front();
    return std::min(requested, schedule_.due());
}

void Amplifier::beginSet(Nanoseconds begun) {
    setReady_ = setTime();
    if (schedule_.due() <= setReady_) {
        schedule_.advancePast(begun);
    } else {
        requestedSets_.pop_front();
    }
    setSize_ = values_.nextSet(set_);
    setPosition_ = 0;
}

void Amplifier::restartSchedule(Nanoseconds now) {
    if (streaming_ && !held_) {
        schedule_.start(std::max(now, backOnBus_), values_.frequency());
    } else {
        schedule_.stop();
    }
    updateHead();
}

void Amplifier::updateHead() {
    headTime_ = setBegun() ? setReady_ : std::min(answerTime(), setTime());
}

}  // namespace virtual_adapter
