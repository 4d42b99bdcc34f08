// Reading and switching the filters of a device.
#include "filter/export_bench.h"

namespace torvik::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr auto unchangedWord = untouched<std::uint32_t>();

class FilterMask : public FilterExports {
  protected:
    std::int32_t get() {
        return run([this] { return TORVIKgetDfilterOnOff(device, &mask); });
    }
    std::uint32_t mask = unchangedWord;
};

TEST_F(FilterMask, IsTheAnswersWord) {
    script({acceptsWord(0x51, 0xFEDC8001)});
    EXPECT_EQ(get(), 0);
    EXPECT_EQ(mask, 0xFEDC8001U);
    EXPECT_THAT(takeSent(), ElementsAre("80 51"));
    expectFree();
}

TEST_F(FilterMask, TakesTheLargestStatusThatIsNoRefusal) {
    script({Answer{0x51, {0x3F, 0, 0, 0, 1}}});
    EXPECT_EQ(get(), 0);
    EXPECT_EQ(mask, 1U);
}

TEST_F(FilterMask, Gives255WhenTheDeviceRefuses) {
    for (const std::uint8_t status : std::initializer_list<std::uint8_t>{0x40, 0xFF}) {
        script({Answer{0x51, {status, 0, 0, 0, 1}}});
        EXPECT_EQ(get(), 255);
        EXPECT_EQ(takeCode(), status);
        EXPECT_EQ(mask, unchangedWord);
    }
    expectFree();
}

TEST_F(FilterMask, FailsWithoutAnAnswer) {
    silence(0x51);
    expectFailure(get(), code::answerTimeout);
    EXPECT_EQ(mask, unchangedWord);
    expectFree();
}

struct SwitchCase {
    const char* name;
    std::uint32_t filterNo;
    std::int32_t flags;
    std::int32_t on;
    std::uint32_t before;
    std::uint32_t after;
};

void PrintTo(const SwitchCase& row, std::ostream* out) {
    *out << row.name;
}

class SwitchedFilter : public FilterExports, public testing::WithParamInterface<SwitchCase> {};

TEST_P(SwitchedFilter, ChangesOnlyItsBitsOfTheMask) {
    const SwitchCase& row = GetParam();
    script({acceptsWord(0x51, row.before), accepts(0x52)});
    EXPECT_EQ(run([&row] { return TORVIKsetDfilterOnOff(device, row.filterNo, row.flags, row.on); }), 0);
    EXPECT_THAT(takeSent(), ElementsAre("80 51", "84 52 " + hexOf(row.after)));
    EXPECT_EQ(takeCode(), code::none);
}

INSTANTIATE_TEST_SUITE_P(Filter, SwitchedFilter,
                         testing::Values(SwitchCase{"FirstOn", 1, 0, 1, 0xFFFF0000, 0xFFFF0001},
                                         SwitchCase{"FirstOff", 1, 0, 0, 0xFFFF00FF, 0xFFFF00FE},
                                         SwitchCase{"EighthOn", 8, 0, 1, 0x00000001, 0x00000081},
                                         SwitchCase{"FirstFirOn", 1, 0x80, 1, 0x00000001, 0x00000101},
                                         SwitchCase{"EighthFirOff", 8, 0x80, 0, 0x0000FFFF, 0x00007FFF},
                                         SwitchCase{"AnyValueIsOn", 3, 0, -2, 0x00000000, 0x00000004},
                                         SwitchCase{"OnlyBit80IsTheBank", 1, 0x17F, 1, 0x00000000, 0x00000001},
                                         SwitchCase{"HighFlagsBesideTheBank", 1, -128, 1, 0x00000000, 0x00000100},
                                         SwitchCase{"SixIirOn", 0, 0, 1, 0x00000000, 0x0000003F},
                                         SwitchCase{"SixIirOff", 0, 0, 0, 0xFFFFFFFF, 0xFFFFFFC0},
                                         SwitchCase{"EightFirOn", 0, 0x80, 1, 0x00000000, 0x0000FF00},
                                         SwitchCase{"EightFirOff", 0, 0x80, 0, 0xFFFFFFFF, 0xFFFF00FF},
                                         SwitchCase{"NinthIsTheFirstFir", 9, 0, 1, 0x00000000, 0x00000100},
                                         SwitchCase{"ThirtySecond", 32, 0, 1, 0x00000000, 0x80000000},
                                         SwitchCase{"ThirtyThirdIsTheFirst", 33, 0, 1, 0x00000000, 0x00000001},
                                         SwitchCase{"TwentyFifthFirIsNone", 25, 0x80, 1, 0x00000002, 0x00000002},
                                         SwitchCase{"Largest", 0xFFFFFFFF, 0, 1, 0x00000000, 0x40000000}),
                         [](const auto& instance) { return instance.param.name; });

class SetFilterOnOff : public FilterExports {
  protected:
    std::int32_t set() {
        return run([] { return TORVIKsetDfilterOnOff(device, 2, 0, 1); });
    }
};

TEST_F(SetFilterOnOff, StartsFromNothingWhenTheDeviceDoesNotTellItsMask) {
    script({Answer{0x51, {0x40, 0xFF, 0xFF, 0xFF, 0xFF}}, accepts(0x52)});
    EXPECT_EQ(set(), 0);
    EXPECT_THAT(takeSent(), ElementsAre("80 51", "84 52 00 00 00 02"));
    EXPECT_EQ(takeCode(), 0x40U);
}

TEST_F(SetFilterOnOff, WritesNothingWithoutAnAnswer) {
    silence(0x51);
    expectFailure(set(), code::answerTimeout);
    EXPECT_THAT(takeSent(), ElementsAre("80 51"));
}

TEST_F(SetFilterOnOff, FailsWhenTheMaskIsRefused) {
    script({acceptsWord(0x51, 0), Answer{0x52, {0x41}}});
    expectFailure(set(), 0x41);
    expectFree();
}

TEST_F(SetFilterOnOff, FailsWhenTheMaskIsNotAcknowledged) {
    script({acceptsWord(0x51, 0)});
    silence(0x52);
    expectFailure(set(), code::internalCallFailed);
    expectFree();
}

class FilterInfo : public FilterExports {
  protected:
    std::int32_t get(std::int32_t flags = 0) {
        return run([this, flags] { return TORVIKgetDfilterInfo(device, 3, flags, &type, cutoffs.data()); });
    }
    static Answer typeAnswer(std::uint8_t word) { return accepts(0x4B, {word, 0xEE, 0xEE}); }
    static Answer cutoffAnswer(float alpha) { return acceptsFloat(0x4D, alpha); }

    std::uint32_t type = unchangedWord;
    std::array<double, 2> cutoffs = {unchangedDouble, unchangedDouble};
};

TEST_F(FilterInfo, OfALowPassHasOneCutoff) {
    script({samplingFrequency(), typeAnswer(0x04), cutoffAnswer(0.25)});
    EXPECT_EQ(get(), 0);
    EXPECT_EQ(type, 4U);
    EXPECT_THAT(cutoffs, ElementsAre(250, unchangedDouble));
    EXPECT_THAT(takeSent(), ElementsAre("80 8A", "82 4B 03 00", "82 4D 03 00"));
    EXPECT_EQ(takeCode(), code::none);
    expectFree();
}

TEST_F(FilterInfo, OfABandHasTwoCutoffs) {
    for (const std::uint8_t word : std::initializer_list<std::uint8_t>{0x24, 0x34, 0xA4, 0xB4}) {
        script({samplingFrequency(), typeAnswer(word), cutoffAnswer(0.125), cutoffAnswer(0.25)});
        EXPECT_EQ(get(), 0);
        EXPECT_EQ(type, word);
        EXPECT_THAT(cutoffs, ElementsAre(125, 250));
        EXPECT_THAT(takeSent(), ElementsAre("80 8A", "82 4B 03 00", "82 4D 03 00", "82 4D 03 01"));
    }
}

TEST_F(FilterInfo, OfOtherKindsHasOneCutoff) {
    for (const std::uint8_t word : std::initializer_list<std::uint8_t>{0x14, 0x44, 0x54, 0x64, 0x74}) {
        script({samplingFrequency(), typeAnswer(word), cutoffAnswer(0.25)});
        EXPECT_EQ(get(), 0);
        EXPECT_THAT(takeSent(), SizeIs(3));
    }
}

TEST_F(FilterInfo, OfTheFirBankIsAskedForWithItsBit) {
    script({samplingFrequency(), typeAnswer(0xA4), cutoffAnswer(0.125), cutoffAnswer(0.25)});
    EXPECT_EQ(get(0x1FF), 0);
    EXPECT_THAT(takeSent(), ElementsAre("80 8A", "82 4B 03 80", "82 4D 03 80", "82 4D 03 81"));
}

TEST_F(FilterInfo, NeedsTheSamplingFrequency) {
    script({Answer{0x8A, {0x42}}});
    expectFailure(get(), 0x42);
    EXPECT_THAT(takeSent(), ElementsAre("80 8A"));
    silence(0x8A);
    expectFailure(get(), code::answerTimeout);
    EXPECT_EQ(type, unchangedWord);
}

TEST_F(FilterInfo, FailsWithoutACodeWhenTheSamplingFrequencyIsNone) {
    for (const float wrong : {0.0F, -1000.0F, -HUGE_VALF, static_cast<float>(NAN)}) {
        script({samplingFrequency(wrong)});
        expectFailure(get(), code::none);
        EXPECT_THAT(takeSent(), ElementsAre("80 8A"));
    }
}

TEST_F(FilterInfo, Gives255WhenTheTypeIsRefused) {
    script({samplingFrequency(), Answer{0x4B, {0x40, 4}}});
    EXPECT_EQ(get(), 255);
    EXPECT_EQ(takeCode(), 0x40U);
    EXPECT_EQ(type, unchangedWord);
    EXPECT_THAT(takeSent(), SizeIs(2));
    expectFree();
}

TEST_F(FilterInfo, GoesOnWithTheCallersTypeWhenTheDeviceDoesNotTellIt) {
    type = 0x24;
    script({samplingFrequency(), cutoffAnswer(0.125), cutoffAnswer(0.25)});
    silence(0x4B);
    EXPECT_EQ(get(), 0);
    EXPECT_EQ(type, 0x24U);
    EXPECT_THAT(cutoffs, ElementsAre(125, 250));
    EXPECT_EQ(takeCode(), code::answerTimeout);
    expectFree();
}

TEST_F(FilterInfo, EndsWhenTheTypeCannotBeAskedFor) {
    script({samplingFrequency()});
    failWriteAfter(1);
    expectFailure(get(), code::deviceWrite);
    EXPECT_THAT(takeSent(), ElementsAre("80 8A"));
}

TEST_F(FilterInfo, Gives255WhenACutoffIsRefused) {
    script({samplingFrequency(), typeAnswer(0x24), Answer{0x4D, {0x40}}});
    EXPECT_EQ(get(), 255);
    EXPECT_EQ(takeCode(), 0x40U);
    EXPECT_THAT(takeSent(), SizeIs(3));
    script({samplingFrequency(), typeAnswer(0x24), cutoffAnswer(0.125), Answer{0x4D, {0xFF}}});
    EXPECT_EQ(get(), 255);
    EXPECT_EQ(takeCode(), 0xFFU);
    EXPECT_THAT(cutoffs, ElementsAre(125, unchangedDouble));
}

TEST_F(FilterInfo, FailsWithoutItsOnlyCutoff) {
    script({samplingFrequency(), typeAnswer(0x04)});
    silence(0x4D);
    expectFailure(get(), code::answerTimeout);
    EXPECT_THAT(cutoffs, Each(unchangedDouble));
}

TEST_F(FilterInfo, FailsWithoutTheSecondCutoffOfABand) {
    script({samplingFrequency(), typeAnswer(0x24), cutoffAnswer(0.125)});
    silence(0x4D);
    expectFailure(get(), code::answerTimeout);
    EXPECT_THAT(cutoffs, ElementsAre(125, unchangedDouble));
}

TEST_F(FilterInfo, AsksForTheSecondCutoffOfABandAlsoWithoutTheFirst) {
    script({samplingFrequency(), typeAnswer(0x24)});
    drop(0x4D, 1);
    answerWith(0x4D, {0, 0x3E, 0x80, 0, 0}, 1);
    EXPECT_EQ(get(), 0);
    EXPECT_THAT(cutoffs, ElementsAre(unchangedDouble, 250));
    EXPECT_EQ(takeCode(), code::answerTimeout);
}

TEST_F(FilterInfo, FailsWhenTheFirstCutoffOfABandCannotBeAskedFor) {
    script({samplingFrequency(), typeAnswer(0x24), cutoffAnswer(0.125)});
    failWriteAfter(2);
    expectFailure(get(), code::deviceWrite);
    EXPECT_THAT(cutoffs, Each(unchangedDouble));
    expectFree();
}

class FilterType : public FilterExports {
  protected:
    std::int32_t get(std::int8_t flags = 0) {
        return run([this, flags] { return TORVIKgetDigiFiltType(device, 8, flags, &type); });
    }
    std::uint32_t type = unchangedWord;
};

TEST_F(FilterType, IsNeverDelivered) {
    script({accepts(0x4B, {4})});
    expectFailure(get(), code::internalCallFailed);
    EXPECT_EQ(type, unchangedWord);
    EXPECT_THAT(takeSent(), ElementsAre("82 4B 08 00"));
    expectFree();
}

TEST_F(FilterType, OfTheFirBankIsAskedForWithItsBit) {
    script({accepts(0x4B, {4})});
    expectFailure(get(-128), code::internalCallFailed);
    EXPECT_THAT(takeSent(), ElementsAre("82 4B 08 80"));
}

TEST_F(FilterType, StoresTheStatusOfARefusal) {
    script({Answer{0x4B, {0x40, 4}}});
    expectFailure(get(), 0x40);
    EXPECT_EQ(type, unchangedWord);
}

TEST_F(FilterType, FailsWithoutAnAnswer) {
    silence(0x4B);
    expectFailure(get(), code::answerTimeout);
    expectFree();
}

class StoreFilter : public FilterExports {};

TEST_F(StoreFilter, PassesBothNumbersOn) {
    script({accepts(0x7E), accepts(0x7E)});
    EXPECT_EQ(run([] { return TORVIKstoreDigitalFilter(device, 0, 8); }), 0);
    EXPECT_EQ(run([] { return TORVIKstoreDigitalFilter(device, 8, 0); }), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 7E 00 08", "82 7E 08 00"));
}

TEST_F(StoreFilter, StoresTheStatusOfARefusal) {
    script({Answer{0x7E, {0x40}}});
    expectFailure(run([] { return TORVIKstoreDigitalFilter(device, 1, 2); }), 0x40);
}

TEST_F(StoreFilter, FailsWithoutAnAcknowledgement) {
    silence(0x7E);
    expectFailure(run([] { return TORVIKstoreDigitalFilter(device, 1, 2); }), code::internalCallFailed);
    expectFree();
}

}  // namespace
}  // namespace torvik::test
