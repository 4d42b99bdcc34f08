// One export and how it is called with random arguments.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <tuple>
#include <utility>
#include <vector>

#include "arguments.h"

namespace torvik::proof {

// An export as the loaded library tells it.
using Address = void (*)();

struct RandomCall {
    const char* name;
    std::function<std::int32_t(Address, Arguments&, std::int32_t deviceNo)> run;
    int commands = 0;                     // most commands that it sends, one after the other
    std::chrono::milliseconds pauses{0};  // what it waits beside
    double weight = 100;                  // how often it is chosen
    bool inNormalPhases = true;

    // The most that its time-outs and pauses can take: 4000 ms for the device, 2000 ms for each answer.
    std::chrono::milliseconds mostWaits() const {
        constexpr std::chrono::milliseconds command(6000);
        return pauses + commands * command;
    }

    RandomCall& pausing(int milliseconds) {
        pauses = std::chrono::milliseconds(milliseconds);
        return *this;
    }
    RandomCall& onlyInStorms() {
        inNormalPhases = false;
        return *this;
    }
    RandomCall& weighing(double chosen) {
        weight = chosen;
        return *this;
    }
};

template <class Signature>
struct Caller;

// An export with a device number: each maker gives one of the other arguments.
template <class... Parameters>
struct Caller<std::int32_t(std::int32_t, Parameters...)> {
    template <class... Makers>
    static RandomCall make(const char* name, int commands, Makers... makers) {
        static_assert(sizeof...(Makers) == sizeof...(Parameters));
        const auto run = [=](Address address, Arguments& any, std::int32_t deviceNo) {
            const auto function = reinterpret_cast<std::int32_t (*)(std::int32_t, Parameters...)>(address);
            // In braces: made in their order, so that a seed gives the same arguments everywhere.
            const std::tuple<Parameters...> made{static_cast<Parameters>(makers(any))...};
            return std::apply([&](Parameters... arguments) { return function(deviceNo, arguments...); }, made);
        };
        return {.name = name, .run = run, .commands = commands};
    }
};

// For arguments that belong together.
template <class Function, class Body>
RandomCall callWith(const char* name, int commands, Body body) {
    const auto run = [body](Address address, Arguments& any, std::int32_t deviceNo) {
        return body(reinterpret_cast<Function*>(address), any, deviceNo);
    };
    return {.name = name, .run = run, .commands = commands};
}

// The commands of a setter that restarts the device: the setting, the reset and the stream's start or stop. Chosen
// rarely: the wait for the device would be most of the run.
template <class... Makers, class Signature>
RandomCall restarting(Caller<Signature>, const char* name, int commands, Makers... makers) {
    return Caller<Signature>::make(name, commands + 2, makers...).pausing(700).weighing(1);
}

// Makers.
inline const auto channel = [](Arguments& any) { return any.channel(); };
inline const auto byte = [](Arguments& any) { return any.byte(); };
inline const auto number = [](Arguments& any) { return any.number(); };
inline const auto real = [](Arguments& any) { return any.real(); };
template <class Value>
inline const auto one = [](Arguments& any) { return any.array<Value>(1); };
template <class Value, std::size_t count>
inline const auto many = [](Arguments& any) { return any.array<Value>(count); };
template <std::size_t count>
inline const auto reals = [](Arguments& any) { return any.reals(count); };
template <std::size_t count>
inline const auto numbers = [](Arguments& any) { return any.numbers(count); };
template <std::uint32_t longest>
inline const auto text = [](Arguments& any) { return any.text(longest); };

std::vector<RandomCall> libraryCalls();  // errors, activation, measured values, extensions
std::vector<RandomCall> settingCalls();  // identity, mode, scaling, inputs, units, rates, CAN
std::vector<RandomCall> filterCalls();
std::vector<RandomCall> calibrationCalls();

// All exports but TORVIKrelease, which the run itself calls.
std::vector<RandomCall> randomCalls();

}  // namespace torvik::proof
