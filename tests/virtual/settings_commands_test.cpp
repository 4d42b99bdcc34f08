#include "answers.hpp"

namespace virtual_test {
namespace {

using SettingsCommands = QuickAmplifier;
using SlowReset = QuietAdapter;

// The number of value frames of one set.
std::size_t framesOfASet() {
    virtualSendSets(0, 1);
    return drain().size();
}

void setUnit(std::uint8_t unit) {
    ASSERT_EQ(ask({0x10, 1, unit}), kAcknowledged);
}

std::uint8_t unit() {
    return ask({0x0F, 1}).value_or(Data{}).at(2);
}

TEST_F(SettingsCommands, ModeWordIsReadBack) {
    configure("mode = 0x80\n");
    EXPECT_EQ(ask({0x26}), toldNumber(0x86));
    EXPECT_EQ(askWithNumber({0x27}, 0x12345673), kAcknowledged);
    EXPECT_EQ(ask({0x26}), toldNumber(0x12345673));
    restart();
    EXPECT_EQ(ask({0x26}), toldNumber(0x12345673));
}

TEST_F(SettingsCommands, ModeWordHoldsTheNumberOfChannels) {
    EXPECT_EQ(askWithNumber({0x27}, 3), kAcknowledged);
    EXPECT_EQ(framesOfASet(), 3U);
    EXPECT_EQ(askWithNumber({0x27}, 0), kAcknowledged);
    EXPECT_EQ(framesOfASet(), 8U);
}

TEST_F(SettingsCommands, TransmitModeIsReadBack) {
    EXPECT_EQ(ask({0x81, 1, 0x12, 0x34}), kAcknowledged);
    EXPECT_EQ(ask({0x80, 1}), told({0x12, 0x34}));
    EXPECT_EQ(ask({0x81, 2, 0, 0}), refusal(kWrongIndex));
}

TEST_F(SettingsCommands, TransmitModeStartsAndStopsTheStream) {
    configure("frequency = 1000\n");
    EXPECT_EQ(ask({0x81, 0, 0, 0}), kAcknowledged);
    EXPECT_TRUE(eventually([] { return virtualQueued() >= 12; }));
    CanMessage stop = commandFrame({0x81, 0, 0, 1});
    ASSERT_EQ(CAN_Write(kUsb, &stop), kOk);
    EXPECT_EQ(dataOf(drain().back()), kAcknowledged);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(virtualQueued(), 0U);
}

TEST_F(SettingsCommands, StoredSetIsLoaded) {
    setUnit(9);
    EXPECT_EQ(ask({0x0A, 2}), kAcknowledged);
    setUnit(10);
    EXPECT_EQ(ask({0x0A, 7}), kAcknowledged);
    EXPECT_EQ(ask({0x09, 2}), kAcknowledged);
    EXPECT_EQ(unit(), 9);
    EXPECT_EQ(ask({0x09, 7}), kAcknowledged);
    EXPECT_EQ(unit(), 10);
}

TEST_F(SettingsCommands, LoadedSetOutlastsAReset) {
    setUnit(9);
    EXPECT_EQ(ask({0x0A, 2}), kAcknowledged);
    setUnit(10);
    EXPECT_EQ(ask({0x09, 2}), kAcknowledged);
    restart();
    EXPECT_EQ(unit(), 9);
}

TEST_F(SettingsCommands, FactorySetOutlastsAResetOnlyWhenStoredAsTheStartUpSet) {
    setUnit(9);
    EXPECT_EQ(ask({0x0A, 0}), kAcknowledged);
    EXPECT_EQ(ask({0x09, 1}), kAcknowledged);
    EXPECT_EQ(unit(), 0);
    restart();
    EXPECT_EQ(unit(), 9);
    EXPECT_EQ(ask({0x09, 1}), kAcknowledged);
    EXPECT_EQ(ask({0x0A, 0}), kAcknowledged);
    restart();
    EXPECT_EQ(unit(), 0);
}

TEST_F(SettingsCommands, FactorySetCannotBeOverwritten) {
    setUnit(9);
    EXPECT_EQ(ask({0x0A, 1}), refusal(kWrongData));
    EXPECT_EQ(ask({0x09, 1}), kAcknowledged);
    EXPECT_EQ(unit(), 0);
}

TEST_F(SettingsCommands, ThereAreEightSets) {
    EXPECT_EQ(ask({0x0A, 8}), refusal(kWrongIndex));
    EXPECT_EQ(ask({0x09, 8}), refusal(kWrongIndex));
}

TEST_F(SettingsCommands, LoadedSetActsOnTheStream) {
    EXPECT_EQ(ask({0x4A, 0, 0, 2}), kAcknowledged);
    EXPECT_EQ(framesOfASet(), 2U);
    EXPECT_EQ(ask({0x09, 1}), kAcknowledged);
    EXPECT_EQ(framesOfASet(), 6U);
}

TEST_F(SettingsCommands, ResetForgetsWhatWasNotStored) {
    setUnit(9);
    restart();
    EXPECT_EQ(unit(), 0);
    setUnit(9);
    EXPECT_EQ(ask({0x0A, 0}), kAcknowledged);
    setUnit(10);
    restart();
    EXPECT_EQ(unit(), 9);
}

TEST_F(SettingsCommands, ResetRestoresTheStoredTransmitMode) {
    configure("frequency = 1000\n");
    EXPECT_EQ(ask({0x24}), kAcknowledged);
    restart();
    drain();
    EXPECT_EQ(ask({0x80, 0}), told({0, 1}));
}

TEST_F(SettingsCommands, ResetClearsTheProtocolErrors) {
    ask({0xFE});
    restart();
    EXPECT_EQ(ask({0x42, 0}), toldNumber(0));
}

TEST_F(SettingsCommands, ResetDropsAnswersThatWereNotSentYet) {
    virtualAnswerRule(0, 0x2B, VIRTUAL_ANSWER_DELAY, 1, 100'000, nullptr);
    EXPECT_FALSE(ask({0x2B}));
    restart();
    std::this_thread::sleep_for(std::chrono::milliseconds(101));
    EXPECT_EQ(virtualQueued(), 0U);
    EXPECT_EQ(ask({0x2B}), toldNumber(0x00040000));
}

TEST_F(SlowReset, ResetTakesTheAmplifierOffTheBusForAMoment) {
    const std::uint64_t before = counters().commandsReceived;
    const auto start = std::chrono::steady_clock::now();
    restart();
    EXPECT_FALSE(ask({0x2B}));
    EXPECT_EQ(counters().commandsReceived, before + 1) << "the reset itself";
    EXPECT_TRUE(eventually([] { return ask({0x2B}) == toldNumber(0x00040000); }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
}

TEST_F(SlowReset, StreamComesBackAfterTheReset) {
    virtualHoldStream(0, 0);
    ASSERT_TRUE(eventually([] { return virtualQueued() >= 6; }));
    const auto start = std::chrono::steady_clock::now();
    restart();
    drain();
    EXPECT_TRUE(eventually([] { return virtualQueued() >= 6; }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
}

TEST_F(SettingsCommands, BlockingIsAcknowledged) {
    EXPECT_EQ(askWithNumber({0x92}, 0x12345678), kAcknowledged);
}

}  // namespace
}  // namespace virtual_test
