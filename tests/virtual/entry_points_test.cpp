#include <cstring>
#include <string>
#include <utility>

#include "open_adapter.hpp"

namespace virtual_test {
namespace {

using EntryPointsClosed = ClosedAdapter;
using EntryPoints = QuietAdapter;

TEST(Layout, MessageAndTimestampHaveTheAdaptersSizes) {
    EXPECT_EQ(sizeof(CanMessage), 16U);
    EXPECT_EQ(offsetof(CanMessage, data), 6U);
    EXPECT_EQ(sizeof(CanTimestamp), 8U);
    EXPECT_EQ(offsetof(CanTimestamp, microseconds), 6U);
}

TEST_F(EntryPointsClosed, EveryKnownChannelCanBeInitialised) {
    for (const std::uint16_t channel : std::initializer_list<std::uint16_t>{0x51, 0x41, 0x61, 0x01}) {
        EXPECT_EQ(CAN_Initialize(channel, kMegabit, 0, 0, 0), kOk) << channel;
        EXPECT_EQ(CAN_Uninitialize(channel), kOk) << channel;
    }
}

TEST_F(EntryPointsClosed, UnknownChannelsAreRefused) {
    for (const std::uint16_t channel : std::initializer_list<std::uint16_t>{0x00, 0x02, 0x50, 0x52, 0xFFFF}) {
        EXPECT_EQ(CAN_Initialize(channel, kMegabit, 0, 0, 0), kIllegalHandle) << channel;
    }
}

TEST_F(EntryPointsClosed, EveryKnownBaudCodeOpensTheChannel) {
    const std::pair<std::uint16_t, std::uint32_t> rates[] = {
        {0x0014, 1000000}, {0x0016, 800000}, {0x001C, 500000}, {0x011C, 250000}, {0x031C, 125000}, {0x432F, 100000},
        {0xC34E, 95000},   {0x852B, 83000},  {0x472F, 50000},  {0x1414, 47000},  {0x8B2F, 33000},  {0x4F2F, 25000},
        {0x532F, 20000},   {0x5F2F, 12500},  {0x672F, 10000},  {0x7F7F, 5000}};
    for (const auto& [code, bitRate] : rates) {
        ASSERT_EQ(CAN_Initialize(kUsb, code, 0, 0, 0), kOk) << code;
        std::uint32_t value = 0;
        EXPECT_EQ(CAN_GetValue(kUsb, 0x18, &value, 4), kOk);
        EXPECT_EQ(value, code);
        EXPECT_EQ(CAN_GetValue(kUsb, 0x1A, &value, 4), kOk);
        EXPECT_EQ(value, bitRate);
        CAN_Uninitialize(kUsb);
    }
}

TEST_F(EntryPointsClosed, UnknownBaudCodesAreRefused) {
    for (const std::uint16_t code : std::initializer_list<std::uint16_t>{0x0000, 0x0015, 0x1400, 0xFFFF}) {
        EXPECT_EQ(CAN_Initialize(kUsb, code, 0, 0, 0), kIllegalValue) << code;
    }
}

TEST_F(EntryPointsClosed, CallsBeforeInitialisingAreRefused) {
    CanMessage message = commandFrame({0x2B});
    std::uint32_t value = 0;
    EXPECT_EQ(CAN_Uninitialize(kUsb), kNotInitialised);
    EXPECT_EQ(CAN_Reset(kUsb), kNotInitialised);
    EXPECT_EQ(CAN_GetStatus(kUsb), kNotInitialised);
    EXPECT_EQ(CAN_Read(kUsb, &message, nullptr), kNotInitialised);
    EXPECT_EQ(CAN_Write(kUsb, &message), kNotInitialised);
    EXPECT_EQ(CAN_FilterMessages(kUsb, 0, 1, 0), kNotInitialised);
    EXPECT_EQ(CAN_GetValue(kUsb, 0x07, &value, 4), kNotInitialised);
    EXPECT_EQ(CAN_SetValue(kUsb, 0x07, &value, 4), kNotInitialised);
}

TEST_F(EntryPoints, CallsOnAnUnknownChannelAreRefused) {
    CanMessage message = commandFrame({0x2B});
    std::uint32_t value = 0;
    EXPECT_EQ(CAN_Uninitialize(0x52), kIllegalHandle);
    EXPECT_EQ(CAN_Reset(0x52), kIllegalHandle);
    EXPECT_EQ(CAN_GetStatus(0), kIllegalHandle);
    EXPECT_EQ(CAN_Read(0, &message, nullptr), kIllegalHandle);
    EXPECT_EQ(CAN_Write(0x52, &message), kIllegalHandle);
    EXPECT_EQ(CAN_FilterMessages(0x52, 0, 1, 0), kIllegalHandle);
    EXPECT_EQ(CAN_GetValue(0x52, 0x07, &value, 4), kIllegalHandle);
    EXPECT_EQ(CAN_SetValue(0, 0x07, &value, 4), kIllegalHandle);
}

TEST_F(EntryPoints, SecondInitialisingIsRefused) {
    EXPECT_EQ(CAN_Initialize(kUsb, kMegabit, 0, 0, 0), kNotInitialised);
    EXPECT_EQ(CAN_Initialize(0x41, kMegabit, 0, 0, 0), kInUse);
    EXPECT_EQ(CAN_GetStatus(kUsb), kOk);
}

TEST_F(EntryPoints, ChannelZeroUninitialisesWhateverIsOpen) {
    EXPECT_EQ(CAN_Uninitialize(0), kOk);
    EXPECT_EQ(CAN_GetStatus(kUsb), kNotInitialised);
    EXPECT_EQ(CAN_Uninitialize(0), kOk);
}

TEST_F(EntryPoints, ReadGivesThePushedFrameAsItIs) {
    const VirtualFrame pushed{0x123, 0, 255, {1, 2, 3, 4, 5, 6, 7, 8}};
    ASSERT_EQ(virtualPushFrames(&pushed, 1), 1U);
    CanMessage message{};
    ASSERT_EQ(CAN_Read(kUsb, &message, nullptr), kOk);
    EXPECT_EQ(message.id, 0x123U);
    EXPECT_EQ(message.type, 0);
    EXPECT_EQ(message.length, 255);
    EXPECT_EQ(dataOf(message), (Data{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(CAN_Read(kUsb, &message, nullptr), kEmpty);
}

TEST_F(EntryPoints, TimestampsFollowTheMonotonicClock) {
    const VirtualFrame pushed = frameOf(0x123);
    CanMessage message{};
    CanTimestamp first{};
    CanTimestamp second{};
    virtualPushFrames(&pushed, 1);
    ASSERT_EQ(CAN_Read(kUsb, &message, &first), kOk);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    virtualPushFrames(&pushed, 1);
    ASSERT_EQ(CAN_Read(kUsb, &message, &second), kOk);
    EXPECT_GE(second.milliseconds - first.milliseconds, 19U);
    EXPECT_LT(first.microseconds, 1000);
    EXPECT_EQ(first.overflow, 0);
}

TEST_F(EntryPoints, ReadRefusesANullMessageAndKeepsTheFrame) {
    const VirtualFrame pushed = frameOf(0x123);
    virtualPushFrames(&pushed, 1);
    EXPECT_EQ(CAN_Read(kUsb, nullptr, nullptr), kIllegalValue);
    EXPECT_EQ(virtualQueued(), 1U);
}

TEST_F(EntryPoints, WriteRefusesWhatIsNoDataFrame) {
    EXPECT_EQ(CAN_Write(kUsb, nullptr), kIllegalValue);
    CanMessage tooLong{0x100, 0, 9, {}};
    EXPECT_EQ(CAN_Write(kUsb, &tooLong), kIllegalValue);
    CanMessage noStandardId{0x800, 0, 8, {}};
    EXPECT_EQ(CAN_Write(kUsb, &noStandardId), kIllegalValue);
    CanMessage unknownType{0x100, 4, 8, {}};
    EXPECT_EQ(CAN_Write(kUsb, &unknownType), kIllegalValue);
    EXPECT_EQ(counters().framesWritten, 0U);
}

TEST_F(EntryPoints, FramesToNobodyAreAcceptedSilently) {
    CanMessage toNobody = commandFrame({0x2B}, 0x555);
    EXPECT_EQ(CAN_Write(kUsb, &toNobody), kOk);
    CanMessage extended = commandFrame({0x2B});
    extended.type = 2;
    EXPECT_EQ(CAN_Write(kUsb, &extended), kOk);
    EXPECT_EQ(virtualQueued(), 0U);
    EXPECT_EQ(counters().framesWritten, 2U);
    EXPECT_EQ(counters().commandsReceived, 0U);
}

TEST_F(EntryPoints, ListenOnlyForbidsWriting) {
    std::uint32_t on = 1;
    ASSERT_EQ(CAN_SetValue(kUsb, 0x08, &on, 4), kOk);
    CanMessage message = commandFrame({0x2B});
    EXPECT_EQ(CAN_Write(kUsb, &message), 0x8000000U);
}

TEST_F(EntryPoints, ResetEmptiesTheQueue) {
    const VirtualFrame pushed = frameOf(0x123);
    virtualPushFrames(&pushed, 1);
    EXPECT_EQ(CAN_Reset(kUsb), kOk);
    EXPECT_FALSE(readFrame());
}

TEST_F(EntryPoints, FilterLetsOnlyItsRangesThrough) {
    ASSERT_EQ(CAN_FilterMessages(kUsb, 0x100, 0x10F, 0), kOk);
    ASSERT_EQ(CAN_FilterMessages(kUsb, 0x200, 0x200, 0), kOk);
    const VirtualFrame frames[] = {frameOf(0x0FF), frameOf(0x100), frameOf(0x10F), frameOf(0x110), frameOf(0x200)};
    EXPECT_EQ(virtualPushFrames(frames, 5), 3U);
    std::uint32_t state = 0;
    ASSERT_EQ(CAN_GetValue(kUsb, 0x04, &state, 4), kOk);
    EXPECT_EQ(state, 2U);
    std::uint32_t open = 1;
    ASSERT_EQ(CAN_SetValue(kUsb, 0x04, &open, 4), kOk);
    EXPECT_EQ(virtualPushFrames(frames, 5), 5U);
}

TEST_F(EntryPoints, FilterRefusesRangesThatAreNone) {
    EXPECT_EQ(CAN_FilterMessages(kUsb, 2, 1, 0), kIllegalValue);
    EXPECT_EQ(CAN_FilterMessages(kUsb, 0, 0x800, 0), kIllegalValue);
    EXPECT_EQ(CAN_FilterMessages(kUsb, 0, 0x800, 2), kOk);
    EXPECT_EQ(CAN_FilterMessages(kUsb, 0, 1, 1), kIllegalValue);
}

TEST_F(EntryPoints, NumbersTravelInBuffersOfFourAndEightBytes) {
    std::uint64_t wide = 1;
    EXPECT_EQ(CAN_SetValue(kUsb, 0x07, &wide, 8), kOk);
    std::uint32_t narrow = 77;
    EXPECT_EQ(CAN_GetValue(kUsb, 0x07, &narrow, 4), kOk);
    EXPECT_EQ(narrow, 1U);
    narrow = 0;
    EXPECT_EQ(CAN_SetValue(kUsb, 0x07, &narrow, 4), kOk);
    wide = ~std::uint64_t{0};
    EXPECT_EQ(CAN_GetValue(kUsb, 0x07, &wide, 8), kOk);
    EXPECT_EQ(wide, 0U);
}

TEST_F(EntryPoints, OtherBufferSizesAndNullBuffersAreRefused) {
    std::uint64_t value = 0;
    for (const std::uint32_t length : {0U, 1U, 2U, 3U, 5U, 7U, 9U}) {
        EXPECT_EQ(CAN_SetValue(kUsb, 0x07, &value, length), kIllegalValue) << length;
        EXPECT_EQ(CAN_GetValue(kUsb, 0x07, &value, length), kIllegalValue) << length;
    }
    EXPECT_EQ(CAN_SetValue(kUsb, 0x07, nullptr, 4), kIllegalValue);
    EXPECT_EQ(CAN_GetValue(kUsb, 0x07, nullptr, 4), kIllegalValue);
}

TEST_F(EntryPoints, ValuesOutOfRangeAndUnknownParametersAreRefused) {
    std::uint32_t two = 2;
    EXPECT_EQ(CAN_SetValue(kUsb, 0x07, &two, 4), kIllegalValue);
    EXPECT_EQ(CAN_SetValue(kUsb, 0x77, &two, 4), kIllegalParameter);
    EXPECT_EQ(CAN_GetValue(kUsb, 0x77, &two, 4), kIllegalParameter);
    EXPECT_EQ(CAN_SetValue(kUsb, 0x18, &two, 4), kIllegalParameter);
}

TEST_F(EntryPointsClosed, LogParametersBelongToChannelZero) {
    std::uint32_t all = 0xFFFF;
    std::uint32_t on = 1;
    EXPECT_EQ(CAN_SetValue(0, 0x0B, &all, 4), kOk);
    EXPECT_EQ(CAN_SetValue(0, 0x0A, &on, 4), kOk);
    std::uint32_t value = 0;
    EXPECT_EQ(CAN_GetValue(0, 0x0B, &value, 4), kOk);
    EXPECT_EQ(value, 0xFFFFU);
    EXPECT_EQ(CAN_SetValue(kUsb, 0x0A, &on, 4), kIllegalHandle);
}

TEST_F(EntryPointsClosed, VersionIsGivenAsText) {
    char text[256] = {};
    EXPECT_EQ(CAN_GetValue(0, 0x05, text, sizeof text), kOk);
    EXPECT_STREQ(text, "4.8.0.0");
    EXPECT_EQ(CAN_GetValue(0, 0x05, text, 7), kIllegalValue);
}

TEST_F(EntryPointsClosed, ConditionTellsWhetherAChannelIsInUse) {
    std::uint32_t condition = 0;
    EXPECT_EQ(CAN_GetValue(kUsb, 0x0D, &condition, 4), kOk);
    EXPECT_EQ(condition, 1U);
    CAN_Initialize(kUsb, kMegabit, 0, 0, 0);
    EXPECT_EQ(CAN_GetValue(kUsb, 0x0D, &condition, 4), kOk);
    EXPECT_EQ(condition, 2U);
}

TEST_F(EntryPointsClosed, EveryStatusHasATextOfItsOwn) {
    std::vector<std::string> texts;
    for (const std::uint32_t status :
         {0x0U,    0x1U,    0x2U,    0x4U,     0x8U,     0x10U,    0x20U,      0x40U,
          0x80U,   0x100U,  0x200U,  0x400U,   0x800U,   0x1400U,  0x1800U,    0x1C00U,
          0x2000U, 0x4000U, 0x8000U, 0x10000U, 0x20000U, 0x40000U, 0x4000000U, 0x8000000U}) {
        char text[256] = {};
        ASSERT_EQ(CAN_GetErrorText(status, 0, text), kOk) << status;
        EXPECT_GT(std::strlen(text), 5U) << status;
        EXPECT_EQ(std::count(texts.begin(), texts.end(), text), 0) << text;
        texts.emplace_back(text);
    }
}

TEST_F(EntryPointsClosed, ErrorTextRefusesWhatItDoesNotKnow) {
    char text[256] = "unchanged";
    EXPECT_EQ(CAN_GetErrorText(0x3, 0, text), kIllegalValue);
    EXPECT_EQ(CAN_GetErrorText(0x20, 0x77, text), kIllegalValue);
    EXPECT_EQ(CAN_GetErrorText(0x20, 0, nullptr), kIllegalValue);
    EXPECT_STREQ(text, "unchanged");
}

}  // namespace
}  // namespace virtual_test
