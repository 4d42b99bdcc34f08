// Settings sets, the sensor memory, and what else is peculiar to identity and mode.
#include <thread>

#include "params/params_bench.h"

namespace torvik::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(ParamsBench, DeviceNumberZeroIsNeverActive) {
    std::uint32_t serial = 0;
    EXPECT_EQ(TORVIKgetSerialNo(0, &serial), -1);
    EXPECT_EQ(takeCode(0), code::notActive);
}

TEST_F(ParamsBench, OnlyTheLowEightBitsOfTheDeviceNumberCount) {
    script({accepts(0x1F, {0, 0, 0, 5})});
    std::uint32_t serial = 0;
    EXPECT_EQ(TORVIKgetSerialNo(0x12300 + device, &serial), 0);
    EXPECT_EQ(serial, 5U);
}

class LoadSettings : public ParamsBench {
  protected:
    std::int32_t load(std::uint32_t set) {
        return run([set] { return TORVIKloadSettings(device, set); });
    }
};

TEST_F(LoadSettings, StoresSetOneAsSetZeroBeforeTheRestart) {
    script({accepts(0x09), accepts(0x0A), accepts(0x24)});
    EXPECT_EQ(load(1), 0);
    EXPECT_THAT(takeSent(), ElementsAre("81 09 01", "81 0A 00", "80 78", "80 24"));
    EXPECT_EQ(clock.elapsed(), 1000ms);
}

TEST_F(LoadSettings, WaitsFor300MillisecondsBeforeItStores) {
    script({accepts(0x09), Answer{0x0A, {0x52}}});
    auto result = std::async(std::launch::async, [] { return TORVIKloadSettings(device, 1); });
    const auto pausing = [this] { return clock.untilEarliestDeadline() == 300ms; };
    while (!pausing())
        std::this_thread::yield();
    clock.advance(299ms);
    std::this_thread::sleep_for(5ms);
    EXPECT_THAT(takeSent(), ElementsAre("81 09 01"));
    clock.advance(1ms);
    EXPECT_EQ(result.get(), -1);
    EXPECT_THAT(takeSent(), ElementsAre("81 0A 00"));
}

TEST_F(LoadSettings, SendsTheLowByteButStoresOnlySetOne) {
    script({accepts(0x09), accepts(0x24)});
    EXPECT_EQ(load(0x101), 0);
    EXPECT_THAT(takeSent(), ElementsAre("81 09 01", "80 78", "80 24"));
}

TEST_F(LoadSettings, FailsWithoutARestartWhenStoringIsRefused) {
    script({accepts(0x09), Answer{0x0A, {0x52}}});
    EXPECT_EQ(load(1), -1);
    EXPECT_EQ(takeCode(), 0x52U);
    EXPECT_THAT(takeSent(), ElementsAre("81 09 01", "81 0A 00"));
}

TEST_F(LoadSettings, FailsWithoutARestartWhenStoringIsNotAcknowledged) {
    script({accepts(0x09)});
    drop(0x0A);
    EXPECT_EQ(load(1), -1);
    EXPECT_EQ(takeCode(), code::internalCallFailed);
    EXPECT_THAT(takeSent(), ElementsAre("81 09 01", "81 0A 00"));
    EXPECT_EQ(clock.elapsed(), 2300ms);
}

TEST_F(LoadSettings, FailsWithoutARestartWhenStoringCannotBeWritten) {
    script({accepts(0x09)});
    failWriteAfter(1);
    EXPECT_EQ(load(1), -1);
    EXPECT_EQ(takeCode(), code::deviceWrite);
    EXPECT_THAT(takeSent(), ElementsAre("81 09 01"));
}

TEST_F(LoadSettings, StoresSetOneWithOldFirmwareToo) {
    activateAs({.firmware = 0x00030008});
    script({accepts(0x09), accepts(0x0A)});
    EXPECT_EQ(load(1), 0);
    EXPECT_EQ(takeCode(), code::firmwareUnsupported);
    EXPECT_THAT(takeSent(), ElementsAre("81 09 01", "81 0A 00"));
}

TEST_F(LoadSettings, LeavesAnOlderErrorWhenItRefusesAnInactiveDevice) {
    std::uint32_t serial = 0;
    ASSERT_EQ(TORVIKgetSerialNo(inactiveDevice, &serial), -1);
    EXPECT_EQ(TORVIKloadSettings(inactiveDevice, 1), -1);
    EXPECT_EQ(takeCode(inactiveDevice), code::notActive);
}

struct BitCase {
    std::uint32_t bit;
    std::uint32_t result;
};

class TedsActive : public ParamsBench, public testing::WithParamInterface<BitCase> {};

TEST_P(TedsActive, DeliversTheBit) {
    script({accepts(0x68, {0x80, 0x00, 0x00, 0x05})});
    std::uint32_t result = 77;
    EXPECT_EQ(TORVIKgetTEDSactive(device, GetParam().bit, &result), 0);
    EXPECT_EQ(result, GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(Params, TedsActive,
                         testing::Values(BitCase{0, 0x80000005}, BitCase{1, 1}, BitCase{2, 0}, BitCase{3, 1},
                                         BitCase{31, 0}, BitCase{32, 1}, BitCase{33, 1}, BitCase{34, 0},
                                         BitCase{64, 1}),
                         [](const auto& instance) { return "Bit" + std::to_string(instance.param.bit); });

class TedsData : public ParamsBench {
  protected:
    static constexpr std::uint8_t before = 0xEE;

    std::int32_t read(std::int32_t length, std::uint32_t offset) {
        bytes.assign(static_cast<std::size_t>(length) + 2, before);
        return run([&] { return TORVIKreadTEDSrawData(device, 7, bytes.data(), length, offset); });
    }

    static void answerWords() {
        script({accepts(0x65, {1, 2, 3, 4}), accepts(0x65, {5, 6, 7, 8}), accepts(0x65, {9, 10, 11, 12})});
    }

    std::vector<std::uint8_t> bytes;
};

TEST_F(TedsData, OfSixBytesKeepsTwoOfTheSecondWord) {
    answerWords();
    EXPECT_EQ(read(6, 0), 0);
    EXPECT_THAT(takeSent(), ElementsAre("83 65 07 00 00", "83 65 07 00 04"));
    EXPECT_THAT(bytes, ElementsAre(1, 2, 3, 4, 5, 6, before, before));
}

TEST_F(TedsData, BeginsAtAQuarterOfTheOffsetAndStepsByFour) {
    answerWords();
    EXPECT_EQ(read(12, 8), 0);
    EXPECT_THAT(takeSent(), ElementsAre("83 65 07 00 02", "83 65 07 00 06", "83 65 07 00 0A"));
    EXPECT_THAT(bytes, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, before, before));
}

TEST_F(TedsData, ReadsItsRestBehindTheWholeWords) {
    answerWords();
    EXPECT_EQ(read(9, 8), 0);
    EXPECT_THAT(takeSent(), ElementsAre("83 65 07 00 02", "83 65 07 00 06", "83 65 07 00 0A"));
    EXPECT_THAT(bytes, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, before, before));
}

TEST_F(TedsData, OfFewerThanFourBytesIsOneWord) {
    answerWords();
    EXPECT_EQ(read(3, 4), 0);
    EXPECT_THAT(takeSent(), ElementsAre("83 65 07 00 01"));
    EXPECT_THAT(bytes, ElementsAre(1, 2, 3, before, before));
}

TEST_F(TedsData, StaysWhereItWasReadBeforeARefusal) {
    script({accepts(0x65, {1, 2, 3, 4}), Answer{0x65, {0x53}}});
    EXPECT_EQ(read(12, 0), -1);
    EXPECT_EQ(takeCode(), 0x53U);
    EXPECT_THAT(takeSent(), ElementsAre("83 65 07 00 00", "83 65 07 00 04"));
    EXPECT_THAT(std::vector(bytes.begin(), bytes.begin() + 5), ElementsAre(1, 2, 3, 4, before));
}

TEST_F(TedsData, StaysWhereItWasReadBeforeAMissingAnswer) {
    script({accepts(0x65, {1, 2, 3, 4})});
    drop(0x65);
    EXPECT_EQ(read(6, 0), -1);
    EXPECT_EQ(takeCode(), code::answerTimeout);
    EXPECT_THAT(std::vector(bytes.begin(), bytes.begin() + 5), ElementsAre(1, 2, 3, 4, before));
    expectFree();
}

TEST_F(TedsData, RefusesArgumentsOfAnInactiveDeviceFirst) {
    bytes.assign(4, before);
    EXPECT_EQ(TORVIKreadTEDSrawData(inactiveDevice, 0, bytes.data(), 4, 2), -1);
    EXPECT_EQ(takeCode(inactiveDevice), code::parameterExceedance);
    EXPECT_THAT(takeSent(), IsEmpty());
}

}  // namespace
}  // namespace torvik::test
