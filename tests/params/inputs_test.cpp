// Input types and ranges: their lists, both sides of the firmware's threshold, both protocol kinds.
#include "params/params_bench.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::uint32_t lastFirmwareWithoutTypes = 0x0003002E;
constexpr std::uint32_t firstFirmwareWithTypes = 0x0003002F;

class InTypeRange : public ParamsBench {
  protected:
    static std::int32_t read(std::uint32_t channel) { return TORVIKgetInTypeRange(device, channel, &type, &range); }
    static inline std::uint32_t type = 0;
    static inline double range = 0;
};

TEST_F(InTypeRange, OfChannel0IsItsOwnWithFirmware3002E) {
    activateAs({.firmware = lastFirmwareWithoutTypes});
    script({accepts(0xA2)});
    EXPECT_EQ(read(0), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 A2 00 00"));
}

TEST_F(InTypeRange, OfChannel0IsTheFirstEntryOfChannel1From3002FOn) {
    activateAs({.firmware = firstFirmwareWithTypes});
    script({accepts(0xA2)});
    EXPECT_EQ(read(0), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 A2 01 01"));
}

TEST_F(InTypeRange, OfChannel1IsThePresentEntryWithAnyFirmware) {
    activateAs({.firmware = firstFirmwareWithTypes});
    script({accepts(0xA2)});
    EXPECT_EQ(read(1), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 A2 01 00"));
}

struct RangeWord {
    const char* name;
    std::array<std::uint8_t, 4> bytes;
    std::uint32_t type;
    double range;
};

class RangeWords : public InTypeRange, public testing::WithParamInterface<RangeWord> {};

TEST_P(RangeWords, AreHundredthsAndForType3AThousandthOfThem) {
    const auto& bytes = GetParam().bytes;
    script({accepts(0xA2, {bytes[0], bytes[1], bytes[2], bytes[3]})});
    EXPECT_EQ(read(1), 0);
    EXPECT_EQ(type, GetParam().type);
    EXPECT_EQ(range, GetParam().range);
}

INSTANTIATE_TEST_SUITE_P(Params, RangeWords,
                         testing::Values(RangeWord{"Type3", {3, 0x03, 0xD0, 0x90}, 3, 2.5},
                                         RangeWord{"Type2", {2, 0x03, 0xD0, 0x90}, 2, 2500},
                                         RangeWord{"Type4", {4, 0x03, 0xD0, 0x90}, 4, 2500},
                                         RangeWord{"Type0Of0", {0, 0, 0, 0}, 0, 0},
                                         RangeWord{"Type255Largest", {255, 255, 255, 255}, 255, 167772.15},
                                         RangeWord{"Type3Smallest", {3, 0, 0, 1}, 3, 0.01 / 1000}),
                         [](const auto& instance) { return instance.param.name; });

class AllInTypesRanges : public ParamsBench {
  protected:
    // More entries than anybody asks for.
    static void offerManyEntries() { answerWith(0xA2, {0, 1, 0, 0x03, 0xE8}); }

    std::int32_t read() {
        types.fill(77);
        ranges.fill(77);
        return run([this] { return TORVIKgetAllInTypesRanges(device, 2, &count, types.data(), ranges.data()); });
    }

    void expectNothingDelivered() const {
        EXPECT_EQ(count, 77U);
        EXPECT_EQ(types[0], 77U);
        EXPECT_EQ(ranges[0], 77);
    }

    std::uint32_t count = 77;
    std::array<std::uint32_t, 11> types{};
    std::array<double, 11> ranges{};
};

TEST_F(AllInTypesRanges, AreOneWithKind16AndFirmware3002E) {
    activateAs({.firmware = lastFirmwareWithoutTypes});
    offerManyEntries();
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(count, 1U);
    EXPECT_THAT(takeSent(), ElementsAre("82 A2 02 01"));
}

TEST_F(AllInTypesRanges, AreTenWithKind16AndFirmware3002F) {
    activateAs({.firmware = firstFirmwareWithTypes});
    offerManyEntries();
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(count, 10U);
    EXPECT_EQ(types[9], 1U);
    EXPECT_EQ(types[10], 77U);
    EXPECT_EQ(ranges[9], 10);
    EXPECT_EQ(ranges[10], 77);
    EXPECT_EQ(takeCode(), code::none);
    const auto sent = takeSent();
    ASSERT_THAT(sent, SizeIs(10));
    EXPECT_EQ(sent.back(), "82 A2 02 0A");
}

TEST_F(AllInTypesRanges, AreTenWithKind32AndAnyFirmware) {
    activateAs({.firmware = 0x0003000B, .protocolFlag = TORVIK_FLAG_PROTOCOL_KIND_32});
    offerManyEntries();
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(count, 10U);
}

TEST_F(AllInTypesRanges, EndAtTheEntryThatIsRefused) {
    script({accepts(0xA2, {1, 0, 0, 100}), accepts(0xA2, {2, 0, 0, 200}), Answer{0xA2, {0x55}}});
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(types[1], 2U);
    EXPECT_EQ(types[2], 77U);
    EXPECT_EQ(takeCode(), 0x55U);
}

TEST_F(AllInTypesRanges, AreDeliveredToThosePointersThatAreGiven) {
    const auto list = {accepts(0xA2, {1, 0, 0, 100}), Answer{0xA2, {0x55}}};
    script(list);
    EXPECT_EQ(TORVIKgetAllInTypesRanges(device, 2, &count, nullptr, nullptr), 0);
    EXPECT_EQ(count, 1U);
    script(list);
    EXPECT_EQ(TORVIKgetAllInTypesRanges(device, 2, nullptr, types.data(), nullptr), 0);
    EXPECT_EQ(types[0], 1U);
    script(list);
    EXPECT_EQ(TORVIKgetAllInTypesRanges(device, 2, nullptr, nullptr, ranges.data()), 0);
    EXPECT_EQ(ranges[0], 1.0);
    script(list);
    EXPECT_EQ(TORVIKgetAllInTypesRanges(device, 2, nullptr, nullptr, nullptr), 0);
}

TEST_F(AllInTypesRanges, AreNotDeliveredWhenALaterAnswerIsMissing) {
    script({accepts(0xA2, {1, 0, 0, 100})});
    drop(0xA2);
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(takeCode(), code::answerTimeout);
    EXPECT_THAT(takeSent(), ElementsAre("82 A2 02 01", "82 A2 02 02"));
    expectNothingDelivered();
    expectFree();
}

TEST_F(AllInTypesRanges, AreNotDeliveredWhenALaterCommandCannotBeWritten) {
    script({accepts(0xA2, {1, 0, 0, 100})});
    failWriteAfter(1);
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(takeCode(), code::deviceWrite);
    expectNothingDelivered();
    expectFree();
}

class SetInType : public ParamsBench {
  protected:
    std::int32_t set(std::uint32_t channel) {
        return run([channel] { return TORVIKsetInType(device, channel, 5); });
    }
};

TEST_F(SetInType, NeedsFirmware3002F) {
    activateAs({.firmware = lastFirmwareWithoutTypes});
    EXPECT_EQ(set(1), -1);
    EXPECT_EQ(takeCode(), code::firmwareUnsupported);
    EXPECT_THAT(takeSent(), IsEmpty());
    activateAs({.firmware = firstFirmwareWithTypes});
    script({accepts(0xA3)});
    EXPECT_EQ(set(1), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 A3 01 05", "80 78", "80 24"));
}

TEST_F(SetInType, RefusesAWrongChannelBeforeOldFirmware) {
    activateAs({.firmware = lastFirmwareWithoutTypes});
    EXPECT_EQ(set(9), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
}

class SetInTypeOfAllChannels : public SetInType {
  protected:
    void SetUp() override {
        SetInType::SetUp();
        activateAs({.channels = 3});
    }
};

TEST_F(SetInTypeOfAllChannels, SendsItToEachAndRestartsOnce) {
    script({accepts(0xA3), accepts(0xA3), accepts(0xA3)});
    EXPECT_EQ(set(0), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 A3 01 05", "82 A3 02 05", "82 A3 03 05", "80 78", "80 24"));
}

TEST_F(SetInTypeOfAllChannels, PassesOverRefusalsBeforeTheLast) {
    script({Answer{0xA3, {0x52}}, Answer{0xA3, {0x53}}, accepts(0xA3)});
    EXPECT_EQ(set(0), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 A3 01 05", "82 A3 02 05", "82 A3 03 05", "80 78", "80 24"));
}

TEST_F(SetInTypeOfAllChannels, PassesOverMissingAcknowledgementsBeforeTheLast) {
    drop(0xA3, 1);
    answerWith(0xA3, {0});
    EXPECT_EQ(set(0), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 A3 01 05", "82 A3 02 05", "82 A3 03 05", "80 78", "80 24"));
}

TEST_F(SetInTypeOfAllChannels, FailsWithoutARestartWhenTheLastIsRefused) {
    script({accepts(0xA3), accepts(0xA3), Answer{0xA3, {0x52}}});
    EXPECT_EQ(set(0), -1);
    EXPECT_EQ(takeCode(), 0x52U);
    EXPECT_THAT(takeSent(), ElementsAre("82 A3 01 05", "82 A3 02 05", "82 A3 03 05"));
}

TEST_F(SetInTypeOfAllChannels, FailsWithoutARestartWhenTheLastIsNotAcknowledged) {
    script({accepts(0xA3), accepts(0xA3)});
    drop(0xA3);
    EXPECT_EQ(set(0), -1);
    EXPECT_EQ(takeCode(), code::internalCallFailed);
    EXPECT_THAT(takeSent(), ElementsAre("82 A3 01 05", "82 A3 02 05", "82 A3 03 05"));
}

TEST_F(SetInTypeOfAllChannels, EndsAtACommandThatCannotBeWritten) {
    script({accepts(0xA3), accepts(0xA3), accepts(0xA3)});
    failWriteAfter(1);
    EXPECT_EQ(set(0), -1);
    EXPECT_EQ(takeCode(), code::deviceWrite);
    EXPECT_THAT(takeSent(), ElementsAre("82 A3 01 05"));
}

TEST_F(SetInTypeOfAllChannels, OnlyRestartsWhenNoneAreKnown) {
    record().activeChannels = 0;
    EXPECT_EQ(set(0), 0);
    EXPECT_THAT(takeSent(), ElementsAre("80 78", "80 24"));
}

}  // namespace
}  // namespace torvik::test
