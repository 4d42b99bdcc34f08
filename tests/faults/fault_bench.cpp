#include "faults/fault_bench.h"

#include <array>

#include "TORVIK.h"

namespace torvik::test {

namespace {

using namespace std::chrono_literals;

// Longer than anything that is scheduled.
constexpr auto longTime = 10s;

std::uint32_t wordOf(const Bytes& answer) {
    return std::uint32_t{answer[2]} << 24 | std::uint32_t{answer[3]} << 16 | std::uint32_t{answer[4]} << 8 | answer[5];
}

// The call that anybody can make at any time.
std::int32_t askIdent(std::int32_t deviceNo, std::uint32_t& ident) {
    const SimulatedCall simulated;
    return TORVIKgetInterfaceIdent(deviceNo, 1, &ident);
}

}  // namespace

std::uint32_t takeCode(std::int32_t deviceNo) {
    std::array<char, 128> text{};
    std::uint32_t code = 0;
    EXPECT_EQ(TORVIKgetLastErrorText(deviceNo, text.data(), &code), 0);
    return code;
}

std::string nameOf(const FaultRow& row) {
    return row.exportName + (row.variant.empty() ? "" : "_" + row.variant);
}

void PrintTo(const FaultRow& row, std::ostream* out) {
    *out << nameOf(row);
}

void FaultBench::SetUp() {
    bus.restore(clock);
    use({});
}

void FaultBench::use(const DeviceMake& newMake) {
    TORVIKrelease(0);
    make = newMake;
    bus.setFirmware(make.firmware);
    for (std::int32_t deviceNo = 1; deviceNo <= static_cast<std::int32_t>(simulatedDevices); ++deviceNo)
        activate(deviceNo);
}

void FaultBench::TearDown() {
    if (releasing_.joinable()) releasing_.join();
    TORVIKrelease(0);
}

void FaultBench::activate(std::int32_t deviceNo) {
    const SimulatedCall simulated;
    const std::uint32_t kindFlag =
        make.protocolKind == 16 ? TORVIK_FLAG_PROTOCOL_KIND_16 : TORVIK_FLAG_PROTOCOL_KIND_32;
    std::uint32_t count = 0;
    EXPECT_EQ(TORVIKactivateExtended(deviceNo, TORVIK_ADAPTER_USB, 1000000, 16, &count, commandIdOf(deviceNo),
                                     answerIdOf(deviceNo), kindFlag),
              0)
        << std::hex << takeCode(deviceNo);
    EXPECT_EQ(count, 6U);
}

void FaultBench::begin(const FaultRow& row) {
    if (row.start == Start::adapterClosed) TORVIKrelease(0);
    if (row.start == Start::inactive) TORVIKrelease(faultyDevice);
    if (row.prepare) {
        const SimulatedCall simulated;
        row.prepare();
    }
    bus.script(row.answers);
    record().transmitting = row.start == Start::active;
    record().activeChannels = 6;
    for (std::int32_t deviceNo = 0; deviceNo <= static_cast<std::int32_t>(simulatedDevices); ++deviceNo)
        takeCode(deviceNo);
}

void FaultBench::releaseMeanwhile(bool all) {
    releasing_ = std::thread([all] { TORVIKrelease(all ? 0 : faultyDevice); });
    while (!record().gate.closing())
        std::this_thread::yield();
}

Observation FaultBench::observe(const FaultRow& row) {
    Observation observation;
    const platform::TimePoint begun = clock.now();
    if (row.endsInactive) {
        observation.outcome = row.call(faultyDevice);
    } else {
        const SimulatedCall simulated;
        observation.outcome = row.call(faultyDevice);
    }
    observation.elapsed = clock.since(begun);
    if (releasing_.joinable()) releasing_.join();
    observation.code = takeCode(faultyDevice);
    observation.sent = bus.sent();
    observation.waitingAnswers = record().answerCount;
    observation.streaming = record().transmitting;
    return observation;
}

Observation FaultBench::meet(const FaultRow& row, const FaultPlan& plan) {
    begin(row);
    bus.begin(plan, [this, plan] { releaseMeanwhile(plan.releaseAll); });
    const Observation observation = observe(row);
    bus.end();
    return observation;
}

void FaultBench::expectRight(std::int32_t deviceNo) {
    const platform::TimePoint begun = clock.now();
    std::uint32_t ident = 0;
    EXPECT_EQ(askIdent(deviceNo, ident), 0) << "device " << deviceNo << ", code 0x" << std::hex << takeCode(deviceNo);
    EXPECT_EQ(ident, identOf(deviceNo)) << "device " << deviceNo;
    EXPECT_EQ(clock.since(begun), 0ms) << "device " << deviceNo;
    EXPECT_EQ(deviceRecord(static_cast<std::uint8_t>(deviceNo)).answerCount, 0U) << "device " << deviceNo;
}

void FaultBench::expectStrayIsTaken(std::int32_t deviceNo) {
    const platform::TimePoint begun = clock.now();
    const Bytes stray = deviceNo == faultyDevice ? bus.lastAnswer() : bus.misdirectedAnswer();
    std::uint32_t ident = 0;
    const std::int32_t result = askIdent(deviceNo, ident);
    if (stray[1] < smallestRefusal) {
        EXPECT_EQ(result, 0);
        EXPECT_EQ(ident, wordOf(stray));
    } else {
        EXPECT_EQ(result, -1);
        EXPECT_EQ(takeCode(deviceNo), stray[1]);
    }
    EXPECT_EQ(clock.since(begun), 0ms);
    EXPECT_EQ(deviceRecord(static_cast<std::uint8_t>(deviceNo)).answerCount, 1U) << "its own answer";
    TORVIKrelease(deviceNo);
    activate(deviceNo);
}

void FaultBench::expectRecovery(bool active, std::uint32_t strays) {
    clock.letPass(longTime);
    clock.forgetEvents();
    EXPECT_EQ(record().active, active);
    EXPECT_FALSE(record().busy);
    EXPECT_FALSE(record().keepLock);
    if (active) {
        EXPECT_EQ(record().answerCount, strays);
        if (strays == 1) expectStrayIsTaken(faultyDevice);
        if (strays > 1) {
            TORVIKrelease(faultyDevice);
            activate(faultyDevice);
        }
    } else {
        std::uint32_t ident = 0;
        EXPECT_EQ(askIdent(faultyDevice, ident), -1);
        EXPECT_EQ(takeCode(faultyDevice), expected_code::notActive);
    }
    for (std::int32_t deviceNo = 1; deviceNo <= static_cast<std::int32_t>(simulatedDevices); ++deviceNo) {
        if (!deviceRecord(static_cast<std::uint8_t>(deviceNo)).active) activate(deviceNo);
        expectRight(deviceNo);
    }
    // The locks of the values and of the filter designers.
    const SimulatedCall simulated;
    double value = 1;
    EXPECT_EQ(TORVIKread(healthyDevice, 1, &value), 0);
    EXPECT_EQ(TORVIKgetDfilterCoeff(healthyDevice, -1, 1, &value, nullptr), -1);
}

}  // namespace torvik::test
