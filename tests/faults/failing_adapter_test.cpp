// The n-th call of the adapter fails under every export, whatever call it is.
#include "TORVIK.h"
#include "can/pcan_api.h"
#include "faults/sweep_bench.h"

namespace torvik::test {
namespace {

using namespace std::chrono_literals;
using Entry = SimulatedBus::Entry;

constexpr std::size_t nowhere = static_cast<std::size_t>(-1);
constexpr auto wakeUpInterval = 200ms;  // of the receive thread

// One that leaves the receive queue as it is, and one after which the library empties it.
constexpr std::uint32_t statuses[] = {0x10000, 0x10};

// What a failed call means for an export.
struct Meaning {
    std::optional<std::uint32_t> refusal{};  // the adapter is not opened, with this code
    FaultPlan plan{.fault = Fault::none, .position = nowhere};
    std::uint32_t noted = 0;  // stored by the receive path for the device, unless the export stores something later
};

class SweptAdapter : public SweepBench {
  protected:
    static FaultPlan at(Fault fault, std::size_t position) {
        return {.fault = fault, .position = position, .delay = wakeUpInterval};
    }

    static Meaning meaningOfRead(const SimulatedBus::FailedCall& call, bool fromThenOn, std::uint32_t status,
                                 bool lastOfItsCommand) {
        if (!call.framesWaited) {
            const FaultPlan plan = at(fromThenOn ? Fault::adapterGone : Fault::none, call.answer + 1);
            return {.plan = plan, .noted = status};
        }
        if (fromThenOn) return {.plan = at(Fault::busOff, call.answer)};
        if (status == pcan::busOff) return {.plan = at(Fault::noAnswer, call.answer)};
        // The frame stays in the queue: until the next answer comes, or the receive thread wakes.
        return {.plan = at(lastOfItsCommand ? Fault::lateAnswer : Fault::none, call.answer)};
    }

    Meaning meaningOf(const SimulatedBus::FailedCall& call, bool fromThenOn, std::uint32_t status) {
        switch (call.entry) {
            case Entry::library:
                return {.refusal = pcan::unknownError};
            case Entry::initialize:
                return {.refusal = status};
            case Entry::write:
                return {.plan = at(fromThenOn ? Fault::adapterGone : Fault::failedWrite, positionOfWrite(call))};
            case Entry::read:
                return meaningOfRead(call, fromThenOn, status, call.answer + 1 == call.position);
            case Entry::setValue:
                if (call.parameter == pcan::busOffAutoReset) return {.refusal = status};
                break;
            default:
                break;
        }
        // Neither the receive event nor emptying the queues nor closing is needed for an export to succeed.
        return {.plan = at(fromThenOn ? Fault::adapterGone : Fault::none, 0)};
    }

    // The command whose frame went out last.
    std::size_t positionOfWrite(const SimulatedBus::FailedCall& call) const {
        std::size_t position = call.position - 1;
        while (!bus.positions()[position].written)
            --position;
        return position;
    }

    void expectMeaning(const Meaning& meaning, const Observation& observation) {
        if (meaning.refusal) {
            EXPECT_EQ(observation.outcome.result, row().failed);
            EXPECT_EQ(observation.code, *meaning.refusal);
            EXPECT_EQ(observation.elapsed, 0ms);
            recover();
            return;
        }
        ExpectedExchange exchange(meaning.plan);
        EXPECT_EQ(observation.outcome.result, row().story(exchange));
        const bool noted = exchange.lastError() == 0 && row().start == Start::active;
        EXPECT_EQ(observation.code, noted ? meaning.noted : exchange.lastError());
        EXPECT_EQ(observation.elapsed, exchange.elapsed());
        EXPECT_EQ(observation.sent, exchange.sent());
        recover(static_cast<std::uint32_t>(exchange.waitingAnswers() + bus.waitingFrames()));
    }

    bool meetFailing(std::uint32_t nth, bool fromThenOn, std::uint32_t status) {
        begin(row());
        bus.begin({.fault = Fault::none, .position = nowhere});
        bus.failCall(nth, fromThenOn, status);
        const Observation observation = observe(row());
        bus.failNoCall();
        bus.end();
        const auto call = bus.failedCall();
        const Meaning meaning = call ? meaningOf(*call, fromThenOn, status) : Meaning{};
        expectMeaning(meaning, observation);
        return call.has_value();
    }
};

TEST_P(SweptAdapter, SurvivesEveryFailedCall) {
    for (const std::uint32_t status : statuses) {
        SCOPED_TRACE(status);
        const std::uint32_t cases = sweep("adapter", [this, status](std::uint32_t nth, bool fromThenOn) {
            return meetFailing(nth, fromThenOn, status);
        });
        if (HasFailure()) return;
        EXPECT_EQ(cases > 0, !undisturbed.sent.empty() || row().variant == "ofAll");
    }
}

INSTANTIATE_TEST_SUITE_P(Sweep, SweptAdapter, testing::ValuesIn(faultRows()),
                         [](const auto& instance) { return nameOf(instance.param); });

}  // namespace
}  // namespace torvik::test
