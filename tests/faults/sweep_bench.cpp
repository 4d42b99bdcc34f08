#include "faults/sweep_bench.h"

#include <iostream>
#include <map>

#include "TORVIK.h"
#include "faults/system_holdings.h"

namespace torvik::test {

namespace {

constexpr std::uint32_t threadStart = 0x30000109;

std::map<std::string, std::uint64_t>& caseCounts() {
    static std::map<std::string, std::uint64_t> counts;
    return counts;
}

class CountsPrinted final : public testing::Environment {
  public:
    void TearDown() override {
        std::uint64_t all = 0;
        std::cout << "sweep: ";
        for (const auto& [service, count] : caseCounts()) {
            std::cout << service << " " << count << ", ";
            all += count;
        }
        std::cout << all << " cases of a failing service\n";
    }
};
const testing::Environment* const environment = testing::AddGlobalTestEnvironment(new CountsPrinted);

}  // namespace

void countCase(const std::string& service) {
    ++caseCounts()[service];
}

Holdings Holdings::now() {
    Holdings holdings;
    holdings.blocks = liveBlocks();
    holdings.handles = systemHandles();
    holdings.threads = runningThreads();
    return holdings;
}

bool Holdings::within(const Holdings& before) const {
    return blocks == before.blocks && handles <= before.handles && threads <= before.threads;
}

void PrintTo(const Holdings& holdings, std::ostream* out) {
    *out << holdings.blocks << " blocks, " << holdings.handles << " handles, " << holdings.threads << " threads";
}

// A thread that has been joined can be seen for a moment longer.
void SweepBench::expectClosed() const {
    const platform::TimePoint limit = platform::systemNow() + std::chrono::seconds(2);
    Holdings holdings = Holdings::now();
    while (!holdings.within(closed_) && platform::systemNow() < limit) {
        std::this_thread::yield();
        holdings = Holdings::now();
    }
    EXPECT_TRUE(holdings.within(closed_))
        << testing::PrintToString(holdings) << "; before " << testing::PrintToString(closed_);
}

void SweepBench::SetUp() {
    static const std::int64_t threadsInTheBeginning = Holdings::now().threads;
    FaultBench::SetUp();
    const FaultPlan none{.fault = Fault::none, .position = static_cast<std::size_t>(-1)};
    for (int i = 0; i < 2; ++i) {
        undisturbed = meet(row(), none);
        expectRecovery(!row().endsInactive, 0);
    }
    TORVIKrelease(0);
    closed_ = Holdings::now();
    closed_.threads = threadsInTheBeginning;
    activateAll();
}

void SweepBench::activateAll() {
    for (std::int32_t deviceNo = 1; deviceNo <= static_cast<std::int32_t>(simulatedDevices); ++deviceNo)
        activate(deviceNo);
}

SweptOutcome SweepBench::meetFailing(Service service, std::uint32_t nth, bool fromThenOn, int systemError) {
    SweptOutcome outcome;
    begin(row());
    bus.begin({.fault = Fault::none, .position = static_cast<std::size_t>(-1)});
    {
        const FailingService failing(service, nth, fromThenOn, systemError);
        outcome.observation = observe(row());
        outcome.struck = FailingService::struck();
        outcome.what = FailingService::what();
    }
    bus.end();
    outcome.codeOfNobody = takeCode(0);
    return outcome;
}

void SweepBench::expectUndisturbed(const SweptOutcome& outcome) {
    EXPECT_EQ(outcome.observation.outcome.result, undisturbed.outcome.result) << outcome.what;
    EXPECT_EQ(outcome.observation.code, undisturbed.code) << outcome.what;
    EXPECT_TRUE(outcome.observation.outcome.output == undisturbed.outcome.output) << outcome.what;
    EXPECT_EQ(outcome.observation.sent, undisturbed.sent) << outcome.what;
    expectRecovery(!row().endsInactive, 0);
}

void SweepBench::expectFailure(const SweptOutcome& outcome, std::uint32_t code) {
    EXPECT_EQ(outcome.observation.outcome.result, row().failed) << outcome.what;
    EXPECT_EQ(outcome.observation.code, code) << outcome.what;
    EXPECT_EQ(outcome.observation.elapsed.count(), 0) << outcome.what;
    recover();
}

void SweepBench::expectThreadFailure(const SweptOutcome& outcome) {
    EXPECT_EQ(outcome.codeOfNobody, threadStart) << outcome.what;
    expectFailure(outcome, 0);
}

void SweepBench::recover(std::uint32_t strays) {
    if (opensAdapter() && !record().active) TORVIKrelease(0);
    expectRecovery(row().start == Start::active ? !row().endsInactive : record().active.load(), strays);
}

}  // namespace torvik::test
