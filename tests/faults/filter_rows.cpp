// Exports of the digital filters.
#include <climits>

#include "TORVIK.h"
#include "faults/fault_row.h"
#include "support/temporary_folder.h"

namespace torvik::test {

namespace {

using u32 = std::uint32_t;
using Answered = ExpectedExchange::Answer;

constexpr std::uint32_t noDesign = 0x30000201;
constexpr std::int32_t refusedByDevice = 255;

std::int32_t refusal(ExpectedExchange& exchange) {
    exchange.storeRefusal();
    return refusedByDevice;
}

std::int32_t readsMask(ExpectedExchange& exchange) {
    const Answered answer = exchange.exchange(0x51);
    if (answer == Answered::refused) return refusal(exchange);
    return answer == Answered::good ? 0 : -1;
}

// A mask that is refused counts as none.
std::int32_t changesMask(ExpectedExchange& exchange) {
    const Answered answer = exchange.exchange(0x51);
    if (answer == Answered::missing) return -1;
    if (answer == Answered::refused) exchange.storeRefusal();
    return exchange.acknowledge(0x52) ? 0 : -1;
}

// Of a band filter. A type that does not come is passed over, and so is the lower cut-off.
std::int32_t readsInfo(ExpectedExchange& exchange) {
    if (!exchange.ask(0x8A) || !exchange.send(0x4B)) return -1;
    const Answered type = exchange.take();
    if (type == Answered::refused) return refusal(exchange);
    if (!exchange.send(0x4D)) return -1;
    const Answered lower = exchange.take();
    if (lower == Answered::refused) return refusal(exchange);
    // The caller's variable, which then says the type, names no band.
    if (type == Answered::missing) return lower == Answered::good ? 0 : -1;
    if (!exchange.send(0x4D)) return -1;
    const Answered upper = exchange.take();
    if (upper == Answered::refused) return refusal(exchange);
    return upper == Answered::good ? 0 : -1;
}

// Coefficients that do not come are passed over; the last decides.
Story readsCoefficients(int count) {
    return [count](ExpectedExchange& exchange) {
        Answered last = Answered::missing;
        for (int i = 0; i < count; ++i) {
            if (!exchange.send(0x4F)) return -1;
            last = exchange.take();
            if (last == Answered::refused) {
                exchange.storeRefusal();
                return -1;
            }
        }
        return last == Answered::good ? 0 : -1;
    };
}

bool loads(ExpectedExchange& exchange, int cutoffs, int coefficients) {
    return exchange.acknowledge(0x4C) && acknowledgeAll(exchange, 0x4E, cutoffs) &&
           acknowledgeAll(exchange, 0x50, coefficients) && exchange.acknowledge(0x0A);
}

Story loadsFilter(int cutoffs, int coefficients) {
    return [=](ExpectedExchange& exchange) { return loads(exchange, cutoffs, coefficients) ? 0 : -1; };
}

std::int32_t designsAndLoads(ExpectedExchange& exchange) {
    if (!exchange.ask(0x8A)) return exchange.fail(expected_code::frequencyOutOfRange);
    return loads(exchange, 1, 9) ? 0 : -1;
}

std::int32_t asksForSamplingFrequency(ExpectedExchange& exchange) {
    return exchange.ask(0x8A) ? 0 : exchange.fail(expected_code::frequencyOutOfRange);
}

// What is asked for is never delivered.
std::int32_t asksInVain(ExpectedExchange& exchange) {
    return exchange.ask(0x4B) ? exchange.fail(expected_code::internalCallFailed) : -1;
}

Call readsCoefficientsOf(std::int32_t filterNo, u32 flags) {
    return fills([=](std::int32_t deviceNo, CallerMemory& memory) {
        return TORVIKgetDfilterCoeff(deviceNo, filterNo, flags, memory.numbers.data(), memory.more.data());
    });
}

Call loadsWord(std::int32_t type) {
    return [type](std::int32_t deviceNo) {
        double cutoffs[] = {0.1, 0.2};
        double coefficients[] = {0.5, 0.25, 0.125, 0.0625, 0.03125};
        return Outcome{TORVIKsetDfilterParams(deviceNo, 2, type, cutoffs, coefficients, coefficients), "", true};
    };
}

// 4th order Butterworth low pass; with a filter number above 8 it only stays with the library.
Call designs(u32 filterNo) {
    return writes(TORVIKcalcSetDfilterParams, filterNo, 0U, 0U, 2U, 4U, 100.0, 0.0);
}

void keepADesign() {
    designs(9)(1);
}

std::string responseFile() {
    return temporaryFile("response.txt");
}

Call simulates(std::int32_t mode, double fs, std::int32_t points) {
    return [=, path = responseFile()](std::int32_t deviceNo) {
        return Outcome{TORVIKsimulateDfilter(deviceNo, mode, 0.0, 1.0, fs, points, path.c_str()), "", true};
    };
}

}  // namespace

std::vector<FaultRow> filterRows() {
    constexpr std::int32_t step = 2;
    constexpr std::int32_t frequency = 1;
    return {
        {"TORVIKgetDfilterOnOff", "", reads<u32>(TORVIKgetDfilterOnOff), readsMask},
        {"TORVIKsetDfilterOnOff", "", writes(TORVIKsetDfilterOnOff, 2U, 0, 1), changesMask},
        {"TORVIKgetDfilterInfo", "", fills([](std::int32_t deviceNo, CallerMemory& memory) {
             return TORVIKgetDfilterInfo(deviceNo, 3, 0, memory.words.data(), memory.numbers.data());
         }),
         readsInfo},
        {"TORVIKgetDigiFiltType", "", reads<u32>(TORVIKgetDigiFiltType, 3U, std::int8_t{0}), asksInVain},
        {"TORVIKgetDfilterCoeff", "ofAnIir", readsCoefficientsOf(3, 0), readsCoefficients(9)},
        {"TORVIKgetDfilterCoeff", "ofAFir", readsCoefficientsOf(3, 0x80), readsCoefficients(4)},
        {"TORVIKgetDfilterCoeff", "ofNoDesign", readsCoefficientsOf(-1, 0), returns(-1, noDesign)},
        {"TORVIKgetDfilterCoeff", "ofADesign", readsCoefficientsOf(-1, 0), returns(0), {}, Start::active, keepADesign},
        {"TORVIKstoreDigitalFilter", "", writes(TORVIKstoreDigitalFilter, 1U, 2U), acknowledges(0x7E)},
        {"TORVIKsetDfilterParams", "ofABand", loadsWord(0x24), loadsFilter(2, 9)},
        {"TORVIKsetDfilterParams", "ofAFir", loadsWord(INT_MIN + 4), loadsFilter(1, 5)},
        {"TORVIKcalcSetDfilterParams", "", designs(2), designsAndLoads},
        {"TORVIKcalcSetDfilterParams", "withoutLoading", designs(9), asksForSamplingFrequency},
        {"TORVIKsimulateDfilter",
         "step",
         simulates(step, 0, 20),
         asksForSamplingFrequency,
         {},
         Start::active,
         keepADesign},
        {"TORVIKsimulateDfilter",
         "frequency",
         simulates(frequency, 0, 5),
         asksForSamplingFrequency,
         {},
         Start::active,
         keepADesign},
        {"TORVIKsimulateDfilter",
         "atAGivenFrequency",
         simulates(step, 1000, 20),
         returns(0),
         {},
         Start::active,
         keepADesign},
        {"TORVIKsimulateDfilter", "ofNoDesign", simulates(step, 1000, 20), returns(-1, noDesign)},
    };
}

}  // namespace torvik::test
