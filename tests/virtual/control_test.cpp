#include "open_adapter.hpp"

namespace virtual_test {
namespace {

using Control = QuietAdapter;
using ControlOfStreams = OpenAdapter;

constexpr std::uint8_t kFirmware = 0x2B;
constexpr std::array<std::uint8_t, 8> kReplacement{0x41, 0x52, 1, 2, 3, 4, 5, 6};

void answerRule(std::uint32_t command, std::uint32_t action, std::uint32_t times, std::uint32_t microseconds = 0) {
    virtualAnswerRule(0, command, action, times, microseconds, kReplacement.data());
}

void writeCommand(std::initializer_list<std::uint8_t> codeAndParameters) {
    CanMessage command = commandFrame(codeAndParameters);
    ASSERT_EQ(CAN_Write(kUsb, &command), kOk);
}

void expectBalance() {
    const VirtualCounters now = counters();
    EXPECT_EQ(now.framesQueued, now.framesRead + now.framesDiscarded + virtualQueued());
}

TEST_F(Control, DroppedAnswerIsCountedAndItsCommandCarriedOut) {
    answerRule(0x23, VIRTUAL_ANSWER_DROP, 1);
    writeCommand({0x23});
    EXPECT_EQ(virtualQueued(), 0U);
    EXPECT_EQ(counters().answersDropped, 1U);
    EXPECT_EQ(counters().answersSent, 0U);
    EXPECT_EQ(ask({0x80, 0}).value()[3], 1) << "the stream was stopped nevertheless";
}

TEST_F(Control, DelayedAnswerComesAtItsTime) {
    answerRule(kFirmware, VIRTUAL_ANSWER_DELAY, 1, 20'000);
    const auto start = std::chrono::steady_clock::now();
    writeCommand({kFirmware});
    ASSERT_TRUE(eventually([] { return virtualQueued() == 1; }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
}

TEST_F(Control, LaterAnswerOvertakesADelayedOne) {
    answerRule(kFirmware, VIRTUAL_ANSWER_DELAY, 1, 100'000);
    writeCommand({kFirmware});
    EXPECT_EQ(ask({0x8C, 2}).value()[5], 0x02);
    ASSERT_TRUE(eventually([] { return virtualQueued() == 1; }));
    EXPECT_EQ(readFrame().value().data[3], 0x04);
}

TEST_F(Control, DoubledAnswerComesTwice) {
    answerRule(kFirmware, VIRTUAL_ANSWER_DOUBLE, 1);
    writeCommand({kFirmware});
    const auto frames = drain();
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(dataOf(frames[0]), dataOf(frames[1]));
    EXPECT_EQ(counters().answersSent, 2U);
}

TEST_F(Control, ReplacedAnswerLeavesTheCommandUndone) {
    answerRule(0x23, VIRTUAL_ANSWER_REPLACE, 1);
    EXPECT_EQ(ask({0x23}), kReplacement);
    EXPECT_EQ(ask({0x80, 0}).value()[3], 0) << "the stream still runs";
}

TEST_F(Control, RulesAreTriedInTheirOrderAndUsedUp) {
    answerRule(kFirmware, VIRTUAL_ANSWER_REPLACE, 2);
    answerRule(VIRTUAL_ANY_COMMAND, VIRTUAL_ANSWER_DROP, 1);
    EXPECT_EQ(ask({kFirmware}), kReplacement);
    EXPECT_EQ(ask({0x26}), std::nullopt);
    EXPECT_EQ(ask({kFirmware}), kReplacement);
    EXPECT_NE(ask({kFirmware}), kReplacement);
}

TEST_F(Control, RuleForEverHoldsUntilRulesAreCleared) {
    answerRule(kFirmware, VIRTUAL_ANSWER_DROP, VIRTUAL_FOR_EVER);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(ask({kFirmware}), std::nullopt);
    virtualClearAnswerRules();
    EXPECT_TRUE(ask({kFirmware}));
}

TEST_F(Control, RuleOfAnotherDeviceIsLeftAlone) {
    virtualAnswerRule(1, kFirmware, VIRTUAL_ANSWER_DROP, 1, 0, nullptr);
    EXPECT_TRUE(ask({kFirmware}));
}

TEST_F(Control, EveryEntryPointFailsAsTold) {
    for (std::uint32_t entry = 0; entry < VIRTUAL_ENTRY_COUNT; ++entry)
        virtualFailCalls(entry, 0x10 + entry, 0, 1);
    CanMessage message = commandFrame({kFirmware});
    std::uint32_t value = 1;
    char text[256];
    EXPECT_EQ(CAN_Initialize(kUsb, kMegabit, 0, 0, 0), 0x10U + VIRTUAL_INITIALIZE);
    EXPECT_EQ(CAN_Uninitialize(kUsb), 0x10U + VIRTUAL_UNINITIALIZE);
    EXPECT_EQ(CAN_Reset(kUsb), 0x10U + VIRTUAL_RESET);
    EXPECT_EQ(CAN_GetStatus(kUsb), 0x10U + VIRTUAL_GET_STATUS);
    EXPECT_EQ(CAN_Read(kUsb, &message, nullptr), 0x10U + VIRTUAL_READ);
    EXPECT_EQ(CAN_Write(kUsb, &message), 0x10U + VIRTUAL_WRITE);
    EXPECT_EQ(CAN_FilterMessages(kUsb, 0, 1, 0), 0x10U + VIRTUAL_FILTER_MESSAGES);
    EXPECT_EQ(CAN_GetValue(kUsb, 0x07, &value, 4), 0x10U + VIRTUAL_GET_VALUE);
    EXPECT_EQ(CAN_SetValue(kUsb, 0x07, &value, 4), 0x10U + VIRTUAL_SET_VALUE);
    EXPECT_EQ(CAN_GetErrorText(0, 0, text), 0x10U + VIRTUAL_GET_ERROR_TEXT);
    EXPECT_EQ(CAN_GetStatus(kUsb), kOk) << "each rule was for one call";
    EXPECT_EQ(counters().framesWritten, 0U) << "a refused write does nothing";
}

TEST_F(Control, FailureSkipsSoManyCallsAndEnds) {
    virtualFailCalls(VIRTUAL_GET_STATUS, 0x8, 2, 3);
    std::vector<std::uint32_t> statuses;
    for (int i = 0; i < 6; ++i)
        statuses.push_back(CAN_GetStatus(kUsb));
    EXPECT_EQ(statuses, (std::vector<std::uint32_t>{0, 0, 8, 8, 8, 0}));
}

TEST_F(Control, FailureForEverEndsWithCountZero) {
    virtualFailCalls(VIRTUAL_GET_STATUS, 0x8, 0, VIRTUAL_FOR_EVER);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(CAN_GetStatus(kUsb), 8U);
    virtualFailCalls(VIRTUAL_GET_STATUS, 0x8, 0, 0);
    EXPECT_EQ(CAN_GetStatus(kUsb), kOk);
}

TEST_F(Control, CallsAreCountedWhetherTheyFailOrNot) {
    const VirtualCounters before = counters();
    virtualFailCalls(VIRTUAL_READ, 0x8, 0, 1);
    readFrame();
    readFrame();
    EXPECT_EQ(counters().calls[VIRTUAL_READ] - before.calls[VIRTUAL_READ], 2U);
}

TEST_F(Control, SetsAreSentWhetherTheStreamRunsOrNot) {
    EXPECT_EQ(virtualSendSets(0, 3), 18U);
    const auto frames = drain();
    ASSERT_EQ(frames.size(), 18U);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        EXPECT_EQ(frames[i].id, kValueId);
        EXPECT_EQ(frames[i].data[0], i % 6);
        EXPECT_EQ(frames[i].data[3], i / 6);
    }
    EXPECT_EQ(virtualSendSets(7, 1), 0U) << "there is no such device";
}

TEST_F(Control, SkippedFrameIsMissingOnce) {
    virtualSkipFrame(0, 2, 1);
    EXPECT_EQ(virtualSendSets(0, 2), 11U);
    const auto frames = drain();
    EXPECT_EQ(frames[1].data[0], 1);
    EXPECT_EQ(frames[2].data[0], 3);
    EXPECT_EQ(counters().valueFramesSent, 11U);
}

TEST_F(Control, RepeatedFrameComesTwice) {
    virtualRepeatFrame(0, 5, 1);
    EXPECT_EQ(virtualSendSets(0, 2), 13U);
    const auto frames = drain();
    EXPECT_EQ(dataOf(frames[5]), dataOf(frames[6]));
    EXPECT_EQ(frames[5].data[0], 5);
}

TEST_F(Control, WholeSetsCanBeSkipped) {
    ASSERT_EQ(virtualConfigure("[[amplifier]]\nchannels = 1\nfrequency = 200\n"), 0);
    virtualSkipFrame(0, 0, 3);
    ASSERT_TRUE(eventually([] { return virtualQueued() >= 1; }));
    EXPECT_EQ(readFrame().value().data[3], 3) << "the first three sets were left out";
}

TEST_F(ControlOfStreams, HeldStreamIsSilentAndKeepsTheDevicesState) {
    virtualHoldStream(0, 1);
    CAN_Reset(kUsb);
    EXPECT_EQ(ask({0x80, 0}).value()[3], 0) << "the device still takes its stream for running";
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(virtualQueued(), 0U);
    virtualHoldStream(0, 0);
    EXPECT_TRUE(eventually([] { return virtualQueued() >= 6; }));
}

TEST_F(ControlOfStreams, PausedQueueGoesOnCollecting) {
    virtualPause(1);
    ASSERT_TRUE(eventually([] { return virtualQueued() >= 12; }));
    EXPECT_FALSE(readFrame());
    virtualPause(0);
    EXPECT_TRUE(readFrame());
}

TEST_F(ControlOfStreams, BusLoadFillsItsShareOfTheBus) {
    virtualHoldStream(0, 1);
    CAN_Reset(kUsb);
    const auto start = std::chrono::steady_clock::now();
    virtualBusLoad(50, 0x7E0);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    const std::uint32_t waiting = virtualQueued();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    virtualBusLoad(0, 0);
    // Half of a megabit, 123 bits a frame.
    EXPECT_GE(waiting, 400U);
    EXPECT_LE(waiting, time.count() * 500'000 / 123 + 1);
    EXPECT_EQ(readFrame().value().id, 0x7E0U);
    CAN_Reset(kUsb);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_EQ(virtualQueued(), 0U);
}

TEST_F(Control, FullQueueLosesWhatComesAndSaysSoOnce) {
    const std::vector<VirtualFrame> frames(kReceiveQueueLength + 10, frameOf(0x123));
    EXPECT_EQ(virtualPushFrames(frames.data(), static_cast<std::uint32_t>(frames.size())), kReceiveQueueLength);
    EXPECT_EQ(counters().framesOverrun, 10U);
    EXPECT_EQ(CAN_GetStatus(kUsb), kOverrun);
    CanMessage message{};
    EXPECT_EQ(CAN_Read(kUsb, &message, nullptr), kOverrun);
    EXPECT_EQ(drain().size(), kReceiveQueueLength);
    EXPECT_EQ(CAN_GetStatus(kUsb), kOk);
    expectBalance();
}

TEST_F(Control, ResetAfterAnOverrunDiscardsTheQueue) {
    const std::vector<VirtualFrame> frames(kReceiveQueueLength + 1, frameOf(0x123));
    virtualPushFrames(frames.data(), static_cast<std::uint32_t>(frames.size()));
    EXPECT_EQ(CAN_Reset(kUsb), kOk);
    EXPECT_EQ(CAN_GetStatus(kUsb), kOk);
    EXPECT_FALSE(readFrame());
    EXPECT_EQ(counters().framesDiscarded, kReceiveQueueLength);
    expectBalance();
}

TEST_F(ControlOfStreams, StreamThatNobodyReadsOverrunsTheQueueAndIsCounted) {
    ASSERT_EQ(virtualConfigure("[[amplifier]]\nfrequency = 100000\n"), 0);
    ASSERT_TRUE(eventually([] { return counters().framesOverrun > 1000; }));
    EXPECT_EQ(virtualQueued(), kReceiveQueueLength);
    const VirtualCounters now = counters();
    EXPECT_EQ(now.valueFramesSent, now.framesQueued + now.framesOverrun);
}

TEST_F(ControlOfStreams, CountersBalanceAfterEverything) {
    for (int round = 0; round < 20; ++round) {
        writeCommand({kFirmware});
        virtualSendSets(0, 5);
        for (int i = 0; i < 20; ++i)
            readFrame();
        if (round % 5 == 0) CAN_Reset(kUsb);
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
        if (round == 10) {
            CAN_Uninitialize(kUsb);
            CAN_Initialize(kUsb, kMegabit, 0, 0, 0);
        }
    }
    virtualHoldStream(0, 1);
    expectBalance();
    const VirtualCounters now = counters();
    EXPECT_EQ(now.framesQueued, now.answersSent + now.valueFramesSent);
    EXPECT_EQ(now.answersSent, 20U);
    EXPECT_EQ(now.commandsReceived, 20U);
    EXPECT_EQ(now.framesWritten, 20U);
}

TEST_F(Control, WrittenFramesAreHandedOutOldestFirst) {
    writeCommand({kFirmware});
    writeCommand({0x8C, 2});
    VirtualFrame written[3];
    ASSERT_EQ(virtualTakeWritten(written, 1), 1U);
    EXPECT_EQ(written[0].data[1], kFirmware);
    EXPECT_EQ(written[0].length, 2);
    ASSERT_EQ(virtualTakeWritten(written, 3), 1U);
    EXPECT_EQ(written[0].id, kCommandId);
    EXPECT_EQ(written[0].length, 3);
    EXPECT_EQ(written[0].data[2], 2);
}

TEST_F(Control, HistoryKeepsTheLatestFrames) {
    constexpr std::uint32_t kept = 65'536;
    for (std::uint32_t i = 0; i < kept + 5; ++i) {
        CanMessage message{0x700, 0, 4, {}};
        for (unsigned byte = 0; byte < 4; ++byte)
            message.data[byte] = static_cast<std::uint8_t>(i >> (8 * byte));
        ASSERT_EQ(CAN_Write(kUsb, &message), kOk);
    }
    std::vector<VirtualFrame> written(kept + 5);
    ASSERT_EQ(virtualTakeWritten(written.data(), kept + 5), kept);
    EXPECT_EQ(written[0].data[0], 5);
}

TEST_F(Control, NothingIsPushedIntoAClosedChannel) {
    CAN_Uninitialize(kUsb);
    const VirtualFrame frame = frameOf(0x123);
    EXPECT_EQ(virtualPushFrames(&frame, 1), 0U);
    EXPECT_EQ(virtualSendSets(0, 1), 0U);
}

TEST_F(Control, ResetBringsEverythingBack) {
    answerRule(VIRTUAL_ANY_COMMAND, VIRTUAL_ANSWER_DROP, VIRTUAL_FOR_EVER);
    virtualFailCalls(VIRTUAL_INITIALIZE, 0x8, 0, VIRTUAL_FOR_EVER);
    writeCommand({0x23});
    virtualPause(1);
    virtualBusLoad(100, 0x7FF);
    ASSERT_EQ(virtualReset(), 0);
    const VirtualCounters now = counters();
    EXPECT_EQ(now.framesWritten + now.framesQueued + now.framesDiscarded + now.calls[VIRTUAL_WRITE], 0U);
    VirtualFrame written{};
    EXPECT_EQ(virtualTakeWritten(&written, 1), 0U);
    ASSERT_EQ(CAN_Initialize(kUsb, kMegabit, 0, 0, 0), kOk);
    ASSERT_TRUE(eventually([] { return virtualQueued() >= 6; })) << "the amplifier streams again";
    EXPECT_EQ(readFrame().value().id, kValueId);
}

TEST_F(ControlOfStreams, CommandsOfSeveralThreadsAreAllAnswered) {
    constexpr int threads = 4;
    constexpr int commands = 2000;
    std::vector<std::thread> writers;
    for (int i = 0; i < threads; ++i) {
        writers.emplace_back([] {
            for (int n = 0; n < commands; ++n) {
                CanMessage command = commandFrame({kFirmware});
                CAN_Write(kUsb, &command);
            }
        });
    }
    int answers = 0;
    const bool all = eventually([&] {
        for (const CanMessage& frame : drain())
            answers += frame.id == kAnswerId ? 1 : 0;
        return answers == threads * commands;
    });
    for (std::thread& writer : writers)
        writer.join();
    EXPECT_TRUE(all) << answers;
    expectBalance();
}

}  // namespace
}  // namespace virtual_test
