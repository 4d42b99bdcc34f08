#include <algorithm>
#include <cstdio>
#include <span>
#include <utility>

#include "adapter.hpp"
#include "baud_rates.hpp"
#include "platform.hpp"

// What the control functions do.
namespace virtual_adapter {

BenchResult Adapter::configuredBench() {
    const auto path = environmentVariable("TORVIK_VIRTUAL_BENCH");
    return path && !path->empty() ? readBenchFile(*path) : BenchResult{defaultBench(), {}};
}

void Adapter::setMessage(std::string_view message) {
    message_ = {};
    std::ranges::copy(message.substr(0, message_.size() - 1), message_.begin());
}

void Adapter::refuse(const BenchResult& result) {
    benchRefused_ = true;
    setMessage(result.message);
    static_cast<void>(std::fprintf(stderr, "virtual adapter: %s; CAN_Initialize fails\n", message()));
}

bool Adapter::resetAll() {
    // Reading may take its time: not under the lock.
    const BenchResult result = configuredBench();
    const std::lock_guard guard(lock_);
    if (shutDown_) return false;
    if (channel_ != 0) closeChannel();
    failRules_ = {};
    bus_.answerRules().clear();
    bus_.setLoad(0, 0, 0);
    written_.clear();
    paused_ = false;
    useBench(result.bench ? *result.bench : bench_);
    counters_ = {};
    benchRefused_ = false;
    setMessage({});
    if (!result.bench) refuse(result);
    return result.bench.has_value();
}

bool Adapter::configure(const BenchResult& result) {
    const std::lock_guard guard(lock_);
    setMessage(result.message);
    if (!result.bench || shutDown_) return false;
    if (channel_ != 0) advance();
    useBench(*result.bench);
    benchRefused_ = false;
    notify();
    return true;
}

void Adapter::useBench(const BenchConfig& bench) {
    // Whoever runs out of memory here leaves everything as it was.
    BenchConfig copy = bench;
    bus_.setUp(copy);
    bench_ = std::move(copy);
    if (channel_ != 0) bus_.open(monotonicTime(), bitRateOf(bitRateCode_));
}

std::uint32_t Adapter::push(const VirtualFrame* frames, std::uint32_t count) {
    const std::lock_guard guard(lock_);
    if (channel_ == 0 || frames == nullptr) return 0;
    const Nanoseconds now = monotonicTime();
    bus_.advance(now, *this);
    const std::uint64_t before = counters_.framesQueued;
    for (const VirtualFrame& pushed : std::span(frames, count)) {
        Frame frame{pushed.id, pushed.type, pushed.length, {}};
        std::ranges::copy(pushed.data, frame.data.begin());
        receive(frame, now);
    }
    notify();
    return static_cast<std::uint32_t>(counters_.framesQueued - before);
}

void Adapter::failCalls(std::uint32_t entry, Status status, std::uint32_t skip, std::uint32_t count) {
    const std::lock_guard guard(lock_);
    if (entry < failRules_.size()) failRules_[entry] = {status, skip, count};
}

void Adapter::addAnswerRule(const AnswerRules::Rule& rule) {
    const std::lock_guard guard(lock_);
    if (rule.times != 0) bus_.answerRules().add(rule);
}

void Adapter::clearAnswerRules() {
    const std::lock_guard guard(lock_);
    bus_.answerRules().clear();
}

Amplifier* Adapter::findAmplifier(std::uint32_t device, std::uint32_t channel) {
    if (device >= bus_.amplifierCount()) return nullptr;
    Amplifier& amplifier = bus_.amplifier(device);
    return channel < amplifier.values().channels() ? &amplifier : nullptr;
}

void Adapter::holdStream(std::uint32_t device, bool hold) {
    const std::lock_guard guard(lock_);
    Amplifier* const amplifier = findAmplifier(device, 0);
    if (amplifier == nullptr) return;
    const Nanoseconds now = monotonicTime();
    if (channel_ != 0) bus_.advance(now, *this);
    amplifier->hold(hold, now);
    bus_.updateDue();
    notify();
}

std::uint32_t Adapter::sendSets(std::uint32_t device, std::uint32_t sets) {
    const std::lock_guard guard(lock_);
    if (channel_ == 0 || findAmplifier(device, 0) == nullptr) return 0;
    const Nanoseconds now = monotonicTime();
    bus_.advance(now, *this);
    const std::uint64_t before = counters_.framesQueued;
    for (std::uint32_t i = 0; i < std::min(sets, kMostSetsPerCall); ++i)
        bus_.sendSet(device, now, *this);
    notify();
    return static_cast<std::uint32_t>(counters_.framesQueued - before);
}

void Adapter::skipFrame(std::uint32_t device, std::uint32_t channel, std::uint32_t times) {
    const std::lock_guard guard(lock_);
    if (channel_ != 0) advance();
    if (Amplifier* const amplifier = findAmplifier(device, channel)) amplifier->values().skip(channel, times);
    notify();
}

void Adapter::repeatFrame(std::uint32_t device, std::uint32_t channel, std::uint32_t times) {
    const std::lock_guard guard(lock_);
    if (channel_ != 0) advance();
    if (Amplifier* const amplifier = findAmplifier(device, channel)) amplifier->values().repeat(channel, times);
    notify();
}

void Adapter::setBusLoad(std::uint32_t percent, std::uint32_t id) {
    const std::lock_guard guard(lock_);
    const Nanoseconds now = monotonicTime();
    if (channel_ != 0) bus_.advance(now, *this);
    bus_.setLoad(percent, id, now);
    notify();
}

void Adapter::pause(bool on) {
    const std::lock_guard guard(lock_);
    if (channel_ != 0) advance();
    paused_ = on;
    arrived_ = true;
    notify();
}

std::uint32_t Adapter::queued() {
    const std::lock_guard guard(lock_);
    if (channel_ != 0) advance();
    notify();
    return static_cast<std::uint32_t>(received_.size());
}

VirtualCounters Adapter::counters() {
    const std::lock_guard guard(lock_);
    if (channel_ != 0) advance();
    notify();
    return counters_;
}

std::uint32_t Adapter::takeWritten(VirtualFrame* frames, std::uint32_t capacity) {
    const std::lock_guard guard(lock_);
    if (frames == nullptr) return 0;
    const auto count = static_cast<std::uint32_t>(std::min<std::size_t>(capacity, written_.size()));
    for (VirtualFrame& taken : std::span(frames, count)) {
        const Frame& frame = written_.front();
        taken.id = frame.id;
        taken.type = frame.type;
        taken.length = frame.length;
        std::ranges::copy(frame.data, taken.data);
        written_.pop();
    }
    return count;
}

bool Adapter::valueOf(std::uint32_t device, std::uint32_t channel, std::uint64_t set, double& value) {
    const std::lock_guard guard(lock_);
    const Amplifier* const amplifier = findAmplifier(device, channel);
    if (amplifier == nullptr) return false;
    value = amplifier->values().valueAt(channel, set).number;
    return true;
}

}  // namespace virtual_adapter
