#include <algorithm>

#include "adapter.hpp"
#include "virtual_control.h"

using virtual_adapter::Adapter;
using virtual_adapter::AnswerRules;

namespace {

// No exception leaves the library.
template <class Call>
int32_t succeeds(Call call) noexcept {
    try {
        return call(Adapter::instance()) ? 0 : -1;
    } catch (...) {
        return -1;
    }
}

}  // namespace

int32_t virtualReset(void) {
    return succeeds([](Adapter& adapter) { return adapter.resetAll(); });
}

int32_t virtualConfigure(const char* toml) {
    return succeeds([&](Adapter& adapter) {
        return adapter.configure(virtual_adapter::parseBench(toml == nullptr ? "" : toml, "bench"));
    });
}

int32_t virtualConfigureFile(const char* path) {
    return succeeds([&](Adapter& adapter) {
        return adapter.configure(virtual_adapter::readBenchFile(path == nullptr ? "" : path));
    });
}

const char* virtualMessage(void) {
    return Adapter::instance().message();
}

uint32_t virtualPushFrames(const VirtualFrame* frames, uint32_t count) {
    return Adapter::instance().push(frames, count);
}

void virtualFailCalls(uint32_t entry, uint32_t status, uint32_t skip, uint32_t count) {
    Adapter::instance().failCalls(entry, status, skip, count);
}

void virtualAnswerRule(uint32_t device, uint32_t command, uint32_t action, uint32_t times, uint32_t microseconds,
                       const uint8_t* answer) {
    AnswerRules::Rule rule{device, command, action, times, microseconds, {}};
    if (answer != nullptr) std::copy_n(answer, rule.answer.size(), rule.answer.begin());
    static_cast<void>(succeeds([&](Adapter& adapter) {
        adapter.addAnswerRule(rule);
        return true;
    }));
}

void virtualClearAnswerRules(void) {
    Adapter::instance().clearAnswerRules();
}

void virtualHoldStream(uint32_t device, uint32_t hold) {
    Adapter::instance().holdStream(device, hold != 0);
}

uint32_t virtualSendSets(uint32_t device, uint32_t sets) {
    return Adapter::instance().sendSets(device, sets);
}

void virtualSkipFrame(uint32_t device, uint32_t channel, uint32_t times) {
    Adapter::instance().skipFrame(device, channel, times);
}

void virtualRepeatFrame(uint32_t device, uint32_t channel, uint32_t times) {
    Adapter::instance().repeatFrame(device, channel, times);
}

void virtualBusLoad(uint32_t percent, uint32_t id) {
    Adapter::instance().setBusLoad(percent, id);
}

void virtualPause(uint32_t pause) {
    Adapter::instance().pause(pause != 0);
}

uint32_t virtualQueued(void) {
    return Adapter::instance().queued();
}

void virtualGetCounters(VirtualCounters* counters) {
    if (counters != nullptr) *counters = Adapter::instance().counters();
}

uint32_t virtualTakeWritten(VirtualFrame* frames, uint32_t capacity) {
    return Adapter::instance().takeWritten(frames, capacity);
}

int32_t virtualValue(uint32_t device, uint32_t channel, uint64_t set, double* value) {
    return value != nullptr && Adapter::instance().valueOf(device, channel, set, *value) ? 0 : -1;
}
