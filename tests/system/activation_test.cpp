#include <array>
#include <utility>

#include "can_entry_points.h"
#include "support/bench_fixture.h"

namespace {

using namespace torvik::test;
using testing::ElementsAre;

constexpr std::uint32_t kind16 = TORVIK_FLAG_PROTOCOL_KIND_16;

struct Settings {
    std::int32_t deviceNo = device;
    std::uint8_t adapterType = TORVIK_ADAPTER_USB;
    std::uint32_t baudRate = 1000000;
    std::uint32_t commandCanId = 0x100;
    std::uint32_t answerCanId = answerId;
    std::uint32_t flags = kind16;
};

class Activation : public Bench {
  protected:
    static std::int32_t open(const Settings& settings) {
        std::uint32_t channels = 0;
        return TORVIKactivateExtended(settings.deviceNo, settings.adapterType, settings.baudRate, 100, &channels,
                                      settings.commandCanId, settings.answerCanId, settings.flags);
    }

    static void expectRefused(const Settings& settings, std::uint32_t code, std::string_view text) {
        EXPECT_EQ(open(settings), -1);
        expectLastError(settings.deviceNo, code, text);
        expectNothingSent();
    }

    static std::uint64_t calls(VirtualEntry entry) {
        VirtualCounters counters{};
        virtualGetCounters(&counters);
        return counters.calls[entry];
    }
};

TEST_F(Activation, StandardActivationFindsTheDefaultAmplifier) {
    std::uint32_t channels = 0;
    EXPECT_EQ(TORVIKactivateStd(device, &channels), 0);
    EXPECT_EQ(channels, 6u);
    expectNoError(device);
}

TEST_F(Activation, SendsExactlyItsFourQuestions) {
    ASSERT_EQ(open({}), 0);
    EXPECT_THAT(takeWritten(), ElementsAre("100: 81 8C 02", "100: 80 2B", "100: 81 49 00", "100: 81 80 00"));
}

TEST_F(Activation, OlderFirmwareTellsItsChannelsInTheModeWord) {
    answerWith(0x2B, {0, 0x00, 0x03, 0x00, 0x0A});
    answerWith(0x26, {0, 0x00, 0x00, 0x00, 0xFB});
    std::uint32_t channels = 0;
    ASSERT_EQ(TORVIKactivateStd(device, &channels), 0);
    EXPECT_EQ(channels, 3u);
    EXPECT_THAT(takeWritten(), ElementsAre("100: 81 8C 02", "100: 80 2B", "100: 80 26", "100: 81 80 00"));
}

TEST_F(Activation, RefusedModeWordIsReportedAsAFailedInternalCall) {
    answerWith(0x2B, {0, 0x00, 0x03, 0x00, 0x0A});
    answerWith(0x26, {0x70});
    EXPECT_EQ(open({}), -1);
    expectLastError(device, 0x30000105, "TORVIKLIB:  internal function call failed [805306629]");
}

TEST_F(Activation, NineChannelsAreNotUsableAndTheDeviceStaysSetUp) {
    answerWith(0x49, {0, 0, 9});
    EXPECT_EQ(open({}), -1);
    expectLastError(device, 246, "TORVIKLIB: setting active chanels failed [246]");
    EXPECT_EQ(open({}), -1);
    expectLastError(device, 243, "TORVIKLIB: the handle for the device is already init [243]");
}

TEST_F(Activation, RefusedValueIdentifierIsReplacedByItsOwnCode) {
    answerWith(0x8C, {0x70});
    EXPECT_EQ(open({}), -1);
    expectLastError(device, 249, "TORVIKLIB: error while getting CAN identifier [249]");
}

TEST_F(Activation, RefusedFirmwareVersionAndChannelCountTellTheDevicesStatus) {
    answerWith(0x2B, {0x70}, 1);
    EXPECT_EQ(open({}), -1);
    expectLastError(device, 0x70, "VARDA Device: access denied [112]");
    answerWith(0x49, {0x52}, 1);
    EXPECT_EQ(open({}), -1);
    expectLastError(device, 0x52, "VARDA Device: wrong dataparameter [82]");
    EXPECT_EQ(open({}), 0);
}

TEST_F(Activation, RefusedTransmitModeIsNotReported) {
    answerWith(0x80, {0x52});
    EXPECT_EQ(open({}), 0);
    expectNoError(device);
}

TEST_F(Activation, ActiveDeviceIsRefused) {
    ASSERT_EQ(open({}), 0);
    takeWritten();
    expectRefused({}, 243, "TORVIKLIB: the handle for the device is already init [243]");
}

TEST_F(Activation, NullChannelCountIsRefused) {
    EXPECT_EQ(TORVIKactivateStd(device, nullptr), -1);
    expectLastError(device, 0x30000100, parameterExceedance);
    EXPECT_EQ(TORVIKactivateExtended(device, 1, 1000000, 100, nullptr, 0x100, 0x101, kind16), -1);
    expectLastError(device, 0x30000100, parameterExceedance);
    expectNothingSent();
}

TEST_F(Activation, DeviceNumberFortyIsRefused) {
    expectRefused({.deviceNo = 40}, 0x30000100, parameterExceedance);
    EXPECT_EQ(calls(VIRTUAL_INITIALIZE), 0u);
}

TEST_F(Activation, DeviceZeroIsRefusedAndTheAdapterClosedAgain) {
    expectRefused({.deviceNo = 0}, 0x30000101, "TORVIKLIB: invalid devicehandle [805306625]");
    EXPECT_EQ(calls(VIRTUAL_UNINITIALIZE), 1u);
    EXPECT_EQ(open({}), 0);
}

TEST_F(Activation, WrongIdentifiersAreRefused) {
    constexpr std::string_view text = "TORVIKLIB: setting wrong identifier for response [248]";
    expectRefused({.answerCanId = 0x100}, 248, text);
    expectRefused({.commandCanId = 2048}, 248, text);
    expectRefused({.answerCanId = 2048}, 248, text);
    EXPECT_EQ(calls(VIRTUAL_INITIALIZE), 0u);
}

TEST_F(Activation, FlagsWithoutAProtocolKindAreRefused) {
    expectRefused({.flags = 0}, 247, "TORVIKLIB: the devicetype is unknown [247]");
    EXPECT_EQ(calls(VIRTUAL_INITIALIZE), 0u);
}

TEST_F(Activation, UnknownBaudRateIsRefused) {
    expectRefused({.baudRate = 30000}, 242, "TORVIKLIB: wrong baudrate [242]");
    expectRefused({.baudRate = 0}, 242, "TORVIKLIB: wrong baudrate [242]");
    EXPECT_EQ(calls(VIRTUAL_INITIALIZE), 0u);
}

TEST_F(Activation, EveryBaudRateOpensTheChannelWithItsCode) {
    constexpr std::array<std::pair<std::uint32_t, std::uint32_t>, 16> codes = {{{1000000, 0x0014},
                                                                                {800000, 0x0016},
                                                                                {500000, 0x001C},
                                                                                {250000, 0x011C},
                                                                                {125000, 0x031C},
                                                                                {100000, 0x432F},
                                                                                {95000, 0xC34E},
                                                                                {83000, 0x852B},
                                                                                {50000, 0x472F},
                                                                                {47000, 0x1414},
                                                                                {33000, 0x8B2F},
                                                                                {25000, 0x4F2F},
                                                                                {20000, 0x532F},
                                                                                {12500, 0x5F2F},
                                                                                {10000, 0x672F},
                                                                                {5000, 0x7F7F}}};
    constexpr std::uint8_t bitRateCode = 0x18;
    for (const auto& [baudRate, code] : codes) {
        ASSERT_EQ(open({.baudRate = baudRate}), 0) << baudRate;
        std::uint32_t opened = 0;
        EXPECT_EQ(CAN_GetValue(0x51, bitRateCode, &opened, sizeof opened), 0u);
        EXPECT_EQ(opened, code) << baudRate;
        TORVIKrelease(0);
    }
}

TEST_F(Activation, UnknownAdapterTypeFailsWithoutACode) {
    EXPECT_EQ(open({.adapterType = 5}), -1);
    expectNoError(device);
    EXPECT_EQ(calls(VIRTUAL_INITIALIZE), 0u);
}

TEST_F(Activation, EveryAdapterTypeOpens) {
    for (const auto type : std::to_array<std::uint8_t>({1, 2, 3, 4})) {
        EXPECT_EQ(open({.adapterType = type}), 0) << static_cast<int>(type);
        TORVIKrelease(0);
    }
}

TEST_F(Activation, AdaptersStatusIsReported) {
    virtualFailCalls(VIRTUAL_INITIALIZE, 0x1400, 0, 1);
    expectRefused({}, 0x1400, "CAN Adapter: hardware handle is invalid [5120]");
    EXPECT_EQ(open({}), 0);
}

TEST_F(Activation, SecondDeviceWithAnIdentifierInUseIsRefused) {
    ASSERT_EQ(open({}), 0);
    takeWritten();
    constexpr std::string_view text = "TORVIKLIB: CAN-ID already in use [805306644]";
    expectRefused({.deviceNo = 2, .answerCanId = 0x200}, 0x30000114, text);
    expectRefused({.deviceNo = 2, .commandCanId = 0x200}, 0x30000114, text);
    expectRefused({.deviceNo = 2, .commandCanId = valueId, .answerCanId = 0x200}, 0x30000114, text);
    std::uint32_t ident = 0;
    EXPECT_EQ(TORVIKgetInterfaceIdent(device, 0, &ident), 0) << "the first device goes on";
}

TEST_F(Activation, LaterActivationIgnoresAdapterBaudRateAndFlags) {
    ASSERT_EQ(open({}), 0);
    TORVIKrelease(device);
    EXPECT_EQ(open({.adapterType = 9, .baudRate = 1, .flags = 0}), 0);
    EXPECT_EQ(calls(VIRTUAL_INITIALIZE), 1u);
}

TEST_F(Activation, ReleasingOneDeviceLeavesTheAdapterOpen) {
    ASSERT_EQ(open({}), 0);
    EXPECT_EQ(TORVIKrelease(device), 0);
    EXPECT_EQ(calls(VIRTUAL_UNINITIALIZE), 0u);
    std::uint32_t ident = 0;
    EXPECT_EQ(TORVIKgetInterfaceIdent(device, 0, &ident), -1);
    expectLastError(device, 0x30000113, notInitialized);
}

TEST_F(Activation, FailedActivation_AfterTheReleaseOfAnInactiveDevice_LeavesTheActiveDeviceWorking) {
    ASSERT_EQ(open({}), 0);
    EXPECT_EQ(TORVIKrelease(5), 0);
    EXPECT_EQ(open({.deviceNo = 2}), -1);
    expectLastError(2, 0x30000114, "TORVIKLIB: CAN-ID already in use [805306644]");
    EXPECT_EQ(calls(VIRTUAL_UNINITIALIZE), 0u);
    settle();
}

TEST_F(Activation, ReleaseTakesAnyNumber) {
    for (const std::int32_t number : {-1, 40, 41, 255, 256, 1000})
        EXPECT_EQ(TORVIKrelease(number), 0) << number;
    ASSERT_EQ(open({}), 0);
    for (const std::int32_t number : {-1, 41, 257})
        TORVIKrelease(number);
    settle();
}

TEST_F(Activation, OneDeviceOpensAndClosesManyTimes) {
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(open({}), 0);
        TORVIKrelease(0);
    }
}

}  // namespace
