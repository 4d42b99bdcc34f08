#include <algorithm>

#include "guarded.hpp"
#include "virtual_control.h"

using virtual_adapter::Adapter;
using virtual_adapter::AnswerRules;
using virtual_adapter::guarded;

namespace {

constexpr std::uint32_t kNoFrames = 0;

template <class Call>
int32_t succeeds(Call call) noexcept {
    return guarded<std::int32_t>(-1, [&](Adapter& adapter) { return call(adapter) ? 0 : -1; });
}

template <class Call>
void carriedOut(Call call) noexcept {
    static_cast<void>(succeeds([&](Adapter& adapter) {
        call(adapter);
        return true;
    }));
}

}  // namespace

int32_t virtualReset(void) noexcept {
    return succeeds([](Adapter& adapter) { return adapter.resetAll(); });
}

int32_t virtualConfigure(const char* toml) noexcept {
    return succeeds([&](Adapter& adapter) {
        return adapter.configure(virtual_adapter::parseBench(toml == nullptr ? "" : toml, "bench"));
    });
}

int32_t virtualConfigureFile(const char* path) noexcept {
    return succeeds([&](Adapter& adapter) {
        return adapter.configure(virtual_adapter::readBenchFile(path == nullptr ? "" : path));
    });
}

const char* virtualMessage(void) noexcept {
    return guarded("", [](Adapter& adapter) { return adapter.message(); });
}

uint32_t virtualPushFrames(const VirtualFrame* frames, uint32_t count) noexcept {
    return guarded(kNoFrames, [&](Adapter& adapter) { return adapter.push(frames, count); });
}

void virtualFailCalls(uint32_t entry, uint32_t status, uint32_t skip, uint32_t count) noexcept {
    carriedOut([&](Adapter& adapter) { adapter.failCalls(entry, status, skip, count); });
}

void virtualAnswerRule(uint32_t device, uint32_t command, uint32_t action, uint32_t times, uint32_t microseconds,
                       const uint8_t* answer) noexcept {
    AnswerRules::Rule rule{device, command, action, times, microseconds, {}};
    if (answer != nullptr) std::copy_n(answer, rule.answer.size(), rule.answer.begin());
    carriedOut([&](Adapter& adapter) { adapter.addAnswerRule(rule); });
}

void virtualClearAnswerRules(void) noexcept {
    carriedOut([](Adapter& adapter) { adapter.clearAnswerRules(); });
}

void virtualHoldStream(uint32_t device, uint32_t hold) noexcept {
    carriedOut([&](Adapter& adapter) { adapter.holdStream(device, hold != 0); });
}

uint32_t virtualSendSets(uint32_t device, uint32_t sets) noexcept {
    return guarded(kNoFrames, [&](Adapter& adapter) { return adapter.sendSets(device, sets); });
}

void virtualSkipFrame(uint32_t device, uint32_t channel, uint32_t times) noexcept {
    carriedOut([&](Adapter& adapter) { adapter.skipFrame(device, channel, times); });
}

void virtualRepeatFrame(uint32_t device, uint32_t channel, uint32_t times) noexcept {
    carriedOut([&](Adapter& adapter) { adapter.repeatFrame(device, channel, times); });
}

void virtualBusLoad(uint32_t percent, uint32_t id) noexcept {
    carriedOut([&](Adapter& adapter) { adapter.setBusLoad(percent, id); });
}

void virtualPause(uint32_t pause) noexcept {
    carriedOut([&](Adapter& adapter) { adapter.pause(pause != 0); });
}

uint32_t virtualQueued(void) noexcept {
    return guarded(kNoFrames, [](Adapter& adapter) { return adapter.queued(); });
}

void virtualGetCounters(VirtualCounters* counters) noexcept {
    if (counters == nullptr) return;
    carriedOut([&](Adapter& adapter) { *counters = adapter.counters(); });
}

uint32_t virtualTakeWritten(VirtualFrame* frames, uint32_t capacity) noexcept {
    return guarded(kNoFrames, [&](Adapter& adapter) { return adapter.takeWritten(frames, capacity); });
}

int32_t virtualValue(uint32_t device, uint32_t channel, uint64_t set, double* value) noexcept {
    return succeeds(
        [&](Adapter& adapter) { return value != nullptr && adapter.valueOf(device, channel, set, *value); });
}
