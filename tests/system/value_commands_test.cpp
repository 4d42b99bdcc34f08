#include <chrono>
#include <functional>
#include <thread>

#include "TORVIKstatistics.h"
#include "support/bench_fixture.h"

namespace {

using namespace torvik::test;
using testing::ElementsAre;

class ValueCommands : public Bench {
  protected:
    void SetUp() override {
        Bench::SetUp();
        activate();
    }
};

TEST_F(ValueCommands, GetValueSendsItsRequestAndTheSetArrives) {
    EXPECT_EQ(TORVIKgetValue(device), 0);
    EXPECT_THAT(takeWritten(), ElementsAre("100: 80 3B"));
    settle();
    std::int32_t count = 0;
    EXPECT_EQ(TORVIKreceived(device, 0, &count), 0);
    EXPECT_EQ(count, 1);
}

TEST_F(ValueCommands, GetValueReportsAFrameThatCouldNotBeWritten) {
    virtualFailCalls(VIRTUAL_WRITE, 0x80, 0, 1);
    EXPECT_EQ(TORVIKgetValue(device), -1);
    expectLastError(device, 223, "TORVIKLIB: error while writing device [223]");
}

TEST_F(ValueCommands, GetRawValueSendsTheChannelAndTakesFourBytes) {
    answerWith(0x3A, {0x00, 0xFE, 0xDC, 0xBA, 0x98});
    std::uint32_t value = 0;
    EXPECT_EQ(TORVIKgetRawValue(device, 3, &value), 0);
    EXPECT_EQ(value, 0xFEDCBA98u);
    EXPECT_THAT(takeWritten(), ElementsAre("100: 81 3A 03"));
}

TEST_F(ValueCommands, StatusBelow0x40IsASuccess) {
    answerWith(0x3A, {0x3F, 0, 0, 0, 1});
    std::uint32_t value = 0;
    EXPECT_EQ(TORVIKgetRawValue(device, 1, &value), 0);
    EXPECT_EQ(value, 1u);
}

TEST_F(ValueCommands, GetRawValueRefusesItsArguments) {
    std::uint32_t value = 77;
    for (const std::uint32_t channel : {0u, 9u, 257u}) {
        EXPECT_EQ(TORVIKgetRawValue(device, channel, &value), -1);
        expectLastError(device, 0x30000100, parameterExceedance);
    }
    EXPECT_EQ(TORVIKgetRawValue(device, 1, nullptr), -1);
    expectLastError(device, 0x30000100, parameterExceedance);
    EXPECT_EQ(value, 77u);
    expectNothingSent();
}

TEST_F(ValueCommands, ClearMaximumValuePassesItsSelectorOn) {
    EXPECT_EQ(TORVIKclearMaximumValue(device, 0), 0);
    EXPECT_EQ(TORVIKclearMaximumValue(device, 6), 0);
    EXPECT_THAT(takeWritten(), ElementsAre("100: 81 3C 00", "100: 81 3C 06"));
}

TEST_F(ValueCommands, ClearMaximumValueRefusesSelectorNine) {
    EXPECT_EQ(TORVIKclearMaximumValue(device, 9), -1);
    expectLastError(device, 0x30000100, parameterExceedance);
    expectNothingSent();
}

TEST_F(ValueCommands, StreamIsStoppedAndStarted) {
    EXPECT_EQ(TORVIKstopTX(device), 0);
    EXPECT_EQ(TORVIKstartTX(device), 0);
    EXPECT_THAT(takeWritten(), ElementsAre("100: 80 23", "100: 80 24"));
}

TEST_F(ValueCommands, ClearDeviceBufKeepsTheLibrarysBuffer) {
    virtualSendSets(amplifier, 2);
    settle();
    takeWritten();
    EXPECT_EQ(TORVIKclearDeviceBuf(device), 0);
    EXPECT_THAT(takeWritten(), ElementsAre("100: 80 25"));
    std::int32_t count = 0;
    EXPECT_EQ(TORVIKreceived(device, 0, &count), 0);
    EXPECT_EQ(count, 2);
}

struct CommandCase {
    const char* name;
    std::uint32_t command;
    std::function<std::int32_t(std::int32_t)> call;
};

std::vector<CommandCase> answeredCommands() {
    static std::uint32_t word = 0;
    static std::uint8_t bytes[6] = {};
    return {
        {"getRawValue", 0x3A, [](std::int32_t number) { return TORVIKgetRawValue(number, 1, &word); }},
        {"startTX", 0x24, TORVIKstartTX},
        {"stopTX", 0x23, TORVIKstopTX},
        {"clearDeviceBuf", 0x25, TORVIKclearDeviceBuf},
        {"clearMaximumValue", 0x3C, [](std::int32_t number) { return TORVIKclearMaximumValue(number, 1); }},
        {"getInterfaceIdent", 0x01, [](std::int32_t number) { return TORVIKgetInterfaceIdent(number, 0, &word); }},
        {"resetStatus", 0x00, TORVIKresetStatus},
        {"getLastValueError", 0x43, [](std::int32_t number) { return TORVIKgetLastValueError(number, 0, bytes); }},
        {"getLastProtocolError", 0x42,
         [](std::int32_t number) { return TORVIKgetLastProtocolError(number, 2, 0, &word); }},
    };
}

class AnsweredCommand : public ValueCommands, public testing::WithParamInterface<CommandCase> {};

TEST_P(AnsweredCommand, StoresTheDevicesStatus) {
    answerWith(GetParam().command, {0x52});
    EXPECT_EQ(GetParam().call(device), -1);
    expectLastError(device, 0x52, "VARDA Device: wrong dataparameter [82]");
}

TEST_P(AnsweredCommand, StatusSharedWithTheAdapterReadsAsTheAdapters) {
    answerWith(GetParam().command, {0x40});
    EXPECT_EQ(GetParam().call(device), -1);
    expectLastError(device, 0x40, "CAN Adapter: receive queue was read too late [64]");
}

TEST_P(AnsweredCommand, ReportsAFrameThatCouldNotBeWritten) {
    virtualFailCalls(VIRTUAL_WRITE, 0x80, 0, 1);
    EXPECT_EQ(GetParam().call(device), -1);
    expectLastError(device, 223, "TORVIKLIB: error while writing device [223]");
    EXPECT_EQ(GetParam().call(device), 0) << "the device is free again";
}

TEST_P(AnsweredCommand, LeavesTheLastErrorAloneWhenItSucceeds) {
    EXPECT_EQ(TORVIKclearMaximumValue(device, 9), -1);
    EXPECT_EQ(GetParam().call(device), 0);
    expectLastError(device, 0x30000100, parameterExceedance);
}

TEST_P(AnsweredCommand, RefusesAnInactiveDevice) {
    EXPECT_EQ(GetParam().call(2), -1);
    expectLastError(2, 0x30000113, notInitialized);
    expectNothingSent();
}

INSTANTIATE_TEST_SUITE_P(Values, AnsweredCommand, testing::ValuesIn(answeredCommands()),
                         [](const auto& instance) { return instance.param.name; });

TEST_F(ValueCommands, GetValueRefusesAnInactiveDevice) {
    EXPECT_EQ(TORVIKgetValue(2), -1);
    expectLastError(2, 0x30000113, notInitialized);
    expectNothingSent();
}

TEST_F(ValueCommands, NumbersAboveThirtyNineHaveTheirOwnResults) {
    std::uint32_t value = 0;
    for (const std::int32_t number : {40, 255}) {
        EXPECT_EQ(TORVIKstartTX(number), -1);
        EXPECT_EQ(takeLastError(number).code, 48u);
        EXPECT_EQ(TORVIKstopTX(number), 220);
        expectNoError(number);
        EXPECT_EQ(TORVIKgetValue(number), -1);
        expectLastError(number, 0x30000100, parameterExceedance);
        EXPECT_EQ(TORVIKgetRawValue(number, 1, &value), -1);
        expectLastError(number, 0x30000100, parameterExceedance);
        EXPECT_EQ(TORVIKclearDeviceBuf(number), -1);
        expectLastError(number, 0x30000100, parameterExceedance);
        EXPECT_EQ(TORVIKclearMaximumValue(number, 1), -1);
        expectLastError(number, 0x30000100, parameterExceedance);
    }
    expectNothingSent();
}

TEST_F(ValueCommands, DroppedAnswerEndsAfterTwoSecondsAndTheDeviceIsFreeAgain) {
    drop(0x3A, 1);
    std::uint32_t value = 77;
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(TORVIKgetRawValue(device, 1, &value), -1);
    const auto taken = std::chrono::steady_clock::now() - begun;
    EXPECT_GE(taken, std::chrono::milliseconds(1990));
    EXPECT_LT(taken, std::chrono::milliseconds(3500));
    EXPECT_EQ(value, 77u);
    expectLastError(device, 0x30000058, "TORVIKLIB: Command response from device timed out [805306456]");
    EXPECT_EQ(TORVIKgetRawValue(device, 1, &value), 0);
}

TEST_F(ValueCommands, DroppedAcknowledgementIsReportedAsAFailedInternalCall) {
    drop(0x23, 1);
    EXPECT_EQ(TORVIKstopTX(device), -1);
    expectLastError(device, 0x30000105, "TORVIKLIB:  internal function call failed [805306629]");
}

std::uint64_t answersStored() {
    TORVIKstatistics statistics{};
    statistics.size = sizeof statistics;
    EXPECT_EQ(TORVIKgetStatistics(device, &statistics), 0);
    return statistics.answersStored;
}

void waitForAnswers(std::uint64_t stored) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (answersStored() < stored && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(answersStored(), stored);
}

TEST_F(ValueCommands, SecondAnswerIsTakenForTheNextCommandUntilReactivation) {
    const std::uint64_t before = answersStored();
    virtualAnswerRule(amplifier, 0x3A, VIRTUAL_ANSWER_DOUBLE, 1, 0, nullptr);
    std::uint32_t first = 0;
    std::uint32_t ident = 0;
    EXPECT_EQ(TORVIKgetRawValue(device, 1, &first), 0);
    EXPECT_EQ(TORVIKgetInterfaceIdent(device, 1, &ident), 0);
    EXPECT_EQ(ident, first) << "the late answer";
    // The command's own answer may still be on its way.
    waitForAnswers(before + 3);
    TORVIKrelease(device);
    activate();
    EXPECT_EQ(TORVIKgetInterfaceIdent(device, 1, &ident), 0);
    EXPECT_EQ(ident, 1u);
}

}  // namespace
