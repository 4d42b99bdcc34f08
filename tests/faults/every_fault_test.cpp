// Every export meets every fault at every frame of its exchange, and does what the rules say each time: result, code,
// time, frames, no lock left behind, nothing noticed by other devices.
//
// The order of the cases, the delays and the device's codes come from the seed.
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <random>
#include <set>
#include <sstream>

#include "faults/fault_bench.h"
#include "support/seed.h"

namespace torvik::test {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t adapterStatuses[] = {0x1,    0x2,    0x4,     0x8,     0x10,    0x20,      0x40,     0x80,
                                             0x100,  0x200,  0x400,   0x800,   0x1400,  0x1800,    0x1C00,   0x2000,
                                             0x4000, 0x8000, 0x10000, 0x20000, 0x40000, 0x4000000, 0x8000000};
constexpr std::uint32_t busOffStatus = 0x10;
constexpr std::uint32_t goneStatuses[] = {0x1400, 0x200, 0x4000000};
constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

struct Figures {
    std::uint64_t cases = 0;
    std::uint64_t positions = 0;
    std::set<std::string> exports;
    std::set<std::pair<std::uint32_t, std::uint32_t>> makes;  // protocol kind and firmware, beside the default one
    std::chrono::milliseconds longest{0};
};
Figures figures;

class FiguresPrinted final : public testing::Environment {
  public:
    void TearDown() override {
        std::cout << "every fault: " << figures.cases << " cases, " << figures.exports.size() << " exports, "
                  << figures.positions << " frame positions, " << figures.makes.size()
                  << " other makes of device, longest call " << figures.longest.count()
                  << " ms of simulated time, seed " << seed() << "\n";
    }
};
const testing::Environment* const environment = testing::AddGlobalTestEnvironment(new FiguresPrinted);

std::string describe(const FaultPlan& plan) {
    static constexpr const char* names[] = {"none",
                                            "no answer",
                                            "silent device",
                                            "late answer",
                                            "doubled answer",
                                            "shifted answers",
                                            "misdirected answer",
                                            "foreign answer",
                                            "error status",
                                            "failed write",
                                            "bus off",
                                            "adapter gone",
                                            "release"};
    std::ostringstream text;
    text << names[static_cast<std::size_t>(plan.fault)] << " at position " << plan.position << ", delay "
         << plan.delay.count() << " ms, device status 0x" << std::hex << +plan.deviceStatus << ", adapter status 0x"
         << plan.adapterStatus << (plan.releaseAll ? ", of all" : "") << std::dec << "; " << replay();
    return text.str();
}

class Random {
  public:
    explicit Random(const std::string& name) : engine_(static_cast<std::uint32_t>(seed() ^ hashOf(name))) {}

    std::uint32_t between(std::uint32_t first, std::uint32_t last) {
        return first + static_cast<std::uint32_t>(engine_() % (last - first + 1));
    }
    std::chrono::milliseconds delay(std::uint32_t first, std::uint32_t last) {
        return std::chrono::milliseconds(between(first, last));
    }
    template <class Values>
    auto oneOf(const Values& values) {
        return values[between(0, static_cast<std::uint32_t>(std::size(values)) - 1)];
    }
    void shuffle(std::vector<FaultPlan>& plans) { std::shuffle(plans.begin(), plans.end(), engine_); }

  private:
    // The same on every platform.
    static std::uint64_t hashOf(const std::string& name) {
        std::uint64_t hash = 14695981039346656037U;
        for (const char character : name)
            hash = (hash ^ static_cast<unsigned char>(character)) * 1099511628211U;
        return hash;
    }

    std::mt19937 engine_;
};

std::vector<FaultPlan> plansOfAnAnswer(std::size_t k, Random& random) {
    const auto status = static_cast<std::uint8_t>(random.between(0x41, 0xFE));
    return {
        {.fault = Fault::noAnswer, .position = k},
        {.fault = Fault::silentDevice, .position = k},
        {.fault = Fault::lateAnswer, .position = k, .delay = random.delay(1, 1999)},
        {.fault = Fault::lateAnswer, .position = k, .delay = random.delay(2001, 4500)},
        {.fault = Fault::doubledAnswer, .position = k},
        {.fault = Fault::misdirectedAnswer, .position = k},
        {.fault = Fault::foreignAnswer, .position = k},
        {.fault = Fault::errorStatus, .position = k, .deviceStatus = smallestRefusal},
        {.fault = Fault::errorStatus, .position = k, .deviceStatus = 0xFF},
        {.fault = Fault::errorStatus, .position = k, .deviceStatus = status},
    };
}

std::vector<FaultPlan> plansOf(const std::vector<SimulatedBus::Position>& positions, Random& random) {
    std::vector<FaultPlan> plans;
    for (std::size_t k = 0; k < positions.size(); ++k) {
        if (positions[k].answered) {
            const std::vector<FaultPlan> ofAnswer = plansOfAnAnswer(k, random);
            plans.insert(plans.end(), ofAnswer.begin(), ofAnswer.end());
        }
        if (positions[k].written) {
            for (const std::uint32_t status : adapterStatuses)
                plans.push_back({.fault = Fault::failedWrite, .position = k, .adapterStatus = status});
        }
        plans.push_back({.fault = Fault::busOff, .position = k, .adapterStatus = busOffStatus});
        plans.push_back({.fault = Fault::adapterGone, .position = k, .adapterStatus = random.oneOf(goneStatuses)});
        for (const bool all : {false, true})
            plans.push_back(
                {.fault = Fault::release, .position = k, .delay = random.delay(1, 1999), .releaseAll = all});
    }
    random.shuffle(plans);
    return plans;
}

class FaultedExport : public FaultBench, public testing::WithParamInterface<FaultRow> {
  protected:
    // Undisturbed, the export succeeds as its story says, in no time.
    Observation expectUndisturbed() {
        const FaultPlan none{.fault = Fault::none, .position = nowhere};
        const Observation observation = meet(row(), none);
        ExpectedExchange exchange(none, make);
        EXPECT_EQ(observation.outcome.result, row().story(exchange));
        EXPECT_EQ(observation.code, exchange.lastError());
        EXPECT_EQ(observation.sent, exchange.sent());
        EXPECT_EQ(observation.elapsed, exchange.elapsed());
        EXPECT_EQ(exchange.waitingAnswers(), 0U);
        expectRecovery(!row().endsInactive, 0);
        return observation;
    }

    void expectOutcome(const FaultPlan& plan, const Observation& undisturbed) {
        const Observation observation = meet(row(), plan);
        const bool onlyAnswerOfTheFirst = bus.positions().size() < 2 || bus.positions()[1].written;
        ExpectedExchange exchange(plan, make);
        const std::int32_t result = row().story(exchange);
        std::uint32_t code = exchange.lastError();
        const bool failed = result == row().failed;
        if (exchange.cutShort() && failed) code = expected_code::notActive;
        if (exchange.cutShort() && !failed && plan.releaseAll) code = 0;  // the record has been zeroed
        EXPECT_EQ(observation.outcome.result, result);
        EXPECT_EQ(observation.code, code);
        EXPECT_EQ(observation.elapsed, exchange.elapsed());
        EXPECT_EQ(observation.sent, exchange.sent());
        if (failed && plan.position == 0 && onlyAnswerOfTheFirst && undisturbed.outcome.result != row().failed) {
            const bool delivered = row().deliversRefusal && plan.fault == Fault::errorStatus;
            EXPECT_EQ(observation.outcome.unchanged, !delivered);
        }
        if (!failed && !exchange.dataLost()) {
            EXPECT_TRUE(observation.outcome.output == undisturbed.outcome.output);
        }
        const bool active = !exchange.cutShort() && (row().start == Start::active || !failed);
        if (active && exchange.streaming()) {
            EXPECT_EQ(observation.streaming, *exchange.streaming());
        }
        if (plan.fault == Fault::misdirectedAnswer && deviceRecord(misdirectedTo).active) {
            EXPECT_EQ(deviceRecord(misdirectedTo).answerCount, 1U);
            expectStrayIsTaken(misdirectedTo);
        }
        const std::size_t strays = exchange.waitingAnswers() + (exchange.lateAnswerOutstanding() ? 1 : 0);
        expectRecovery(active, static_cast<std::uint32_t>(strays));
        count(observation);
    }

    // From a doubled answer on, every command takes the answer of the one before; one is left in the end.
    void expectShift(const FaultPlan& plan, const Observation& undisturbed, bool atTheEnd) {
        FaultPlan shift = plan;
        shift.fault = Fault::shiftedAnswers;
        const Observation shifted = meet(row(), shift);
        const std::uint32_t left = shifted.waitingAnswers;
        const bool active = record().active;
        expectRecovery(active, left);
        const Observation observation = meet(row(), plan);
        EXPECT_EQ(observation.outcome.result, shifted.outcome.result);
        EXPECT_EQ(observation.code, shifted.code);
        EXPECT_EQ(observation.sent, shifted.sent);
        EXPECT_EQ(observation.elapsed, shifted.elapsed);
        EXPECT_TRUE(observation.outcome.output == shifted.outcome.output);
        if (atTheEnd) {
            EXPECT_EQ(observation.outcome.result, undisturbed.outcome.result);
            EXPECT_TRUE(observation.outcome.output == undisturbed.outcome.output);
            EXPECT_EQ(observation.code, undisturbed.code);
        }
        expectRecovery(active, active ? left + 1 : 0);
        count(observation);
    }

    // Every fault, or one in so many, at every frame. Result: the number of frame positions.
    std::size_t meetEveryFault(Random& random, std::uint32_t oneIn) {
        const Observation undisturbed = expectUndisturbed();
        const std::vector<SimulatedBus::Position> positions = bus.positions();
        for (const FaultPlan& plan : plansOf(positions, random)) {
            if (random.between(1, oneIn) != 1) continue;
            SCOPED_TRACE(describe(plan));
            if (plan.fault == Fault::doubledAnswer) {
                expectShift(plan, undisturbed, plan.position + 1 == positions.size());
            } else {
                expectOutcome(plan, undisturbed);
            }
            if (HasFailure()) break;
        }
        return positions.size();
    }

    static void count(const Observation& observation) {
        ++figures.cases;
        figures.longest = std::max(figures.longest, observation.elapsed);
    }

    static const FaultRow& row() { return GetParam(); }
};

TEST_P(FaultedExport, DoesWhatTheRulesSayAtEveryFrame) {
    Random random(nameOf(row()));
    const std::size_t positions = meetEveryFault(random, 1);
    figures.positions += positions;
    figures.exports.insert(row().exportName);
}

// One other make of device, and some of the faults; TORVIK_FAULT_MAKES=all: every make, and every fault.
TEST_P(FaultedExport, OnOtherDevices_DoesWhatTheRulesSay) {
    constexpr std::uint32_t sample = 4;
    Random random(nameOf(row()) + " on other devices");
    std::vector<DeviceMake> makes = otherMakes();
    const bool all = std::getenv("TORVIK_FAULT_MAKES") != nullptr;
    if (!all) makes = {random.oneOf(makes)};
    for (const DeviceMake& other : makes) {
        std::ostringstream text;
        text << "protocol kind " << other.protocolKind << ", firmware 0x" << std::hex << other.firmware;
        SCOPED_TRACE(text.str());
        use(other);
        meetEveryFault(random, all ? 1 : sample);
        if (HasFailure()) return;
        figures.makes.emplace(other.protocolKind, other.firmware);
    }
}

// Those that send nothing do not need a bus.
TEST_P(FaultedExport, DoesNotNoticeABrokenAdapterBeforeItsFirstFrame) {
    const Observation undisturbed = expectUndisturbed();
    if (!bus.positions().empty()) return;
    for (const std::uint32_t status : adapterStatuses) {
        SCOPED_TRACE(status);
        begin(row());
        bus.begin({.fault = Fault::adapterGone, .position = nowhere, .adapterStatus = status});
        bus.breakDown();
        const Observation observation = observe(row());
        bus.end();
        EXPECT_EQ(observation.outcome.result, undisturbed.outcome.result);
        EXPECT_TRUE(observation.outcome.output == undisturbed.outcome.output);
        EXPECT_EQ(observation.code, undisturbed.code);
        EXPECT_EQ(observation.elapsed, 0ms);
        expectRecovery(!row().endsInactive, 0);
        count(observation);
    }
}

INSTANTIATE_TEST_SUITE_P(Faults, FaultedExport, testing::ValuesIn(faultRows()),
                         [](const auto& instance) { return nameOf(instance.param); });

TEST(FaultRows, NameEveryExport) {
    std::set<std::string> named;
    for (const FaultRow& row : faultRows())
        named.insert(row.exportName);
    std::set<std::string> exported;
    std::ifstream list(TORVIK_EXPORT_LIST);
    for (std::string word; list >> word;) {
        if (word.starts_with("TORVIK")) exported.insert(word);
    }
    EXPECT_EQ(exported.size(), 104U);  // with the extensions
    EXPECT_EQ(named, exported);
}

}  // namespace
}  // namespace torvik::test
