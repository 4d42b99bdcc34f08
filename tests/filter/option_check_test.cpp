// Which option words are refused, and with which words.
#include <climits>

#include "filter/filter_bench.h"

namespace torvik::test {
namespace {

using namespace torvik::option;

constexpr const char* onePrototype = "must specify exactly one of -Be, -Bu, -Ch, -Re, -Pi";
constexpr const char* oneBandWithRe = "must specify exactly one of -Bp, -Bs, -Ap with -Re";
constexpr const char* notWithRe = "can't use -Lp, -Hp, -o, -p, -w, -z with -Re";
constexpr const char* noKindWithPi = "-Lp, -Hp, -Bp, -Bs, -Ap illegal in conjunction with -Pi";
constexpr const char* orderOneWithPi = "-Pi implies -o 1";
constexpr const char* oneKind = "must specify exactly one of -Lp, -Hp, -Bp, -Bs";
constexpr const char* allPassNeedsRe = "-Ap implies -Re";
constexpr const char* noOrder = "must specify -o";
constexpr const char* orderTo15 = "order must be in range 1 .. 15";
constexpr const char* noCutoffs = "must specify -a";

struct Refusal {
    const char* name;
    std::uint32_t options;
    const char* message;
    std::int32_t order = 4;
    std::uint32_t poleMask = 0;
};

void PrintTo(const Refusal& refusal, std::ostream* out) {
    *out << refusal.name;
}

class RefusedOptions : public FilterTest, public testing::WithParamInterface<Refusal> {
  protected:
    std::uint32_t design() {
        const Refusal& refusal = GetParam();
        return run(filter, {refusal.options, refusal.order, 0.1, 0.2, {.poleMask = refusal.poleMask}});
    }
};

TEST_P(RefusedOptions, GiveTheirMessage) {
    EXPECT_EQ(design(), filter_error::wrongArguments);
    EXPECT_EQ(filter.errorCode, filter_error::wrongArguments);
    EXPECT_EQ(messageOf(filter), GetParam().message);
    EXPECT_FALSE(filter.optionsOk);
    EXPECT_FALSE(filter.iirValid);
}

std::string nameOf(const testing::TestParamInfo<Refusal>& instance) {
    return instance.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    Prototypes, RefusedOptions,
    testing::Values(Refusal{"None", lowPass | given, onePrototype},
                    Refusal{"BesselAndButterworth", bessel | butterworth | lowPass | given, onePrototype},
                    Refusal{"ButterworthAndChebyshev", butterworth | chebyshev | lowPass | given, onePrototype},
                    Refusal{"BesselAndResonator", bessel | resonator | bandPass | cutoffs, onePrototype},
                    Refusal{"ResonatorAndIntegral", resonator | proportionalIntegral | bandPass | cutoffs,
                            onePrototype},
                    Refusal{"ChebyshevAndIntegral", chebyshev | proportionalIntegral | given, onePrototype, 1},
                    Refusal{"All", prototypes | bandPass | cutoffs, onePrototype}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Resonators, RefusedOptions,
    testing::Values(Refusal{"NoKind", resonator | cutoffs, oneBandWithRe},
                    Refusal{"PassAndStop", resonator | bandPass | bandStop | cutoffs, oneBandWithRe},
                    Refusal{"StopAndAllPass", resonator | bandStop | allPass | cutoffs, oneBandWithRe},
                    Refusal{"LowPassToo", resonator | bandPass | lowPass | cutoffs, notWithRe},
                    Refusal{"HighPassToo", resonator | bandStop | highPass | cutoffs, notWithRe},
                    Refusal{"Order", resonator | allPass | given, notWithRe},
                    Refusal{"PoleMask", resonator | bandPass | poleMask | cutoffs, notWithRe},
                    Refusal{"NoPrewarp", resonator | bandPass | noPrewarp | cutoffs, notWithRe},
                    Refusal{"MatchedZ", resonator | bandPass | matchedZ | cutoffs, notWithRe},
                    Refusal{"OnlyLowPass", resonator | lowPass | cutoffs, notWithRe},
                    Refusal{"NoCutoffs", resonator | bandPass, noCutoffs}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(Integrals, RefusedOptions,
                         testing::Values(Refusal{"LowPass", proportionalIntegral | lowPass | given, noKindWithPi, 1},
                                         Refusal{"HighPass", proportionalIntegral | highPass | given, noKindWithPi, 1},
                                         Refusal{"BandPass", proportionalIntegral | bandPass | given, noKindWithPi, 1},
                                         Refusal{"BandStop", proportionalIntegral | bandStop | given, noKindWithPi, 1},
                                         Refusal{"AllPass", proportionalIntegral | allPass | given, noKindWithPi, 1},
                                         Refusal{"OrderTwo", proportionalIntegral | given, orderOneWithPi, 2},
                                         Refusal{"OrderZero", proportionalIntegral | given, orderOneWithPi, 0},
                                         Refusal{"NoOrder", proportionalIntegral | cutoffs, orderOneWithPi, 1},
                                         Refusal{"LowPassAndOrderTwo", proportionalIntegral | lowPass | given,
                                                 orderOneWithPi, 2},
                                         Refusal{"NoCutoffs", proportionalIntegral | option::order, noCutoffs, 1}),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(Kinds, RefusedOptions,
                         testing::Values(Refusal{"None", butterworth | given, oneKind},
                                         Refusal{"LowAndHighPass", butterworth | lowPass | highPass | given, oneKind},
                                         Refusal{"BandPassAndStop", bessel | bandPass | bandStop | given, oneKind},
                                         Refusal{"All", chebyshev | plainKinds | given, oneKind},
                                         Refusal{"AllPass", butterworth | lowPass | allPass | given, allPassNeedsRe},
                                         Refusal{"OnlyAllPass", butterworth | allPass | given, allPassNeedsRe}),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(
    Orders, RefusedOptions,
    testing::Values(Refusal{"NotGiven", butterworth | lowPass | cutoffs, noOrder},
                    Refusal{"Zero", butterworth | lowPass | given, orderTo15, 0},
                    Refusal{"Negative", butterworth | lowPass | given, orderTo15, -1},
                    Refusal{"Sixteen", butterworth | lowPass | given, orderTo15, 16},
                    Refusal{"SixteenOfBand", chebyshev | bandPass | given, orderTo15, 16},
                    Refusal{"Largest", butterworth | lowPass | given, orderTo15, INT_MAX},
                    Refusal{"Smallest", butterworth | lowPass | given, orderTo15, INT_MIN},
                    Refusal{"BesselEleven", bessel | lowPass | given, "order must be in range 1 .. 10", 11},
                    Refusal{"BesselFifteen", bessel | bandStop | given, "order must be in range 1 .. 10", 15},
                    Refusal{"BesselSixteen", bessel | lowPass | given, orderTo15, 16},
                    Refusal{"BesselZero", bessel | lowPass | given, orderTo15, 0}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(PoleMasks, RefusedOptions,
                         testing::Values(Refusal{"FirstBitTooHigh", butterworth | lowPass | given | poleMask,
                                                 "order=4, so args to -p must be in range 0 .. 3", 4, 0x10},
                                         Refusal{"HighestBit", butterworth | highPass | given | poleMask,
                                                 "order=15, so args to -p must be in range 0 .. 14", 15, 0x80000000},
                                         Refusal{"OrderOne", bessel | bandPass | given | poleMask,
                                                 "order=1, so args to -p must be in range 0 .. 0", 1, 2}),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(
    LastFailureWins, RefusedOptions,
    testing::Values(Refusal{"Nothing", 0, noCutoffs}, Refusal{"EverythingButCutoffs", ~cutoffs, noCutoffs},
                    Refusal{"OnlyCutoffs", cutoffs, noOrder}, Refusal{"OnlyOrder", option::order, noCutoffs},
                    Refusal{"KindOverPrototype", bessel | butterworth | given, oneKind},
                    Refusal{"AllPassOverKind", butterworth | lowPass | highPass | allPass | given, allPassNeedsRe},
                    Refusal{"OrderOverAllPass", butterworth | allPass | cutoffs, noOrder},
                    Refusal{"OrderRangeOverAllPass", butterworth | allPass | given, orderTo15, 16},
                    Refusal{"MaskOverOrderRange", butterworth | lowPass | given | poleMask,
                            "order=16, so args to -p must be in range 0 .. 15", 16, 0x10000},
                    Refusal{"MaskOfNegativeOrder", butterworth | lowPass | given | poleMask,
                            "order=-3, so args to -p must be in range 0 .. -4", -3, 1},
                    Refusal{"CutoffsOverMask", butterworth | lowPass | option::order | poleMask, noCutoffs, 4, 0x10}),
    nameOf);

struct Acceptance {
    const char* name;
    std::uint32_t options;
    std::int32_t order = 4;
    DesignValues values{};
};

void PrintTo(const Acceptance& acceptance, std::ostream* out) {
    *out << acceptance.name;
}

class AcceptedOptions : public FilterTest, public testing::WithParamInterface<Acceptance> {};

TEST_P(AcceptedOptions, GoOnToTheDesign) {
    EXPECT_NE(run(filter, {GetParam().options, GetParam().order, 0.2, 0.2, GetParam().values}),
              filter_error::wrongArguments);
    EXPECT_TRUE(filter.optionsOk);
}

INSTANTIATE_TEST_SUITE_P(
    Filter, AcceptedOptions,
    testing::Values(
        Acceptance{"OrderOne", butterworth | lowPass | given, 1},
        Acceptance{"OrderFifteen", butterworth | highPass | given, 15},
        Acceptance{"BesselOne", bessel | lowPass | given, 1}, Acceptance{"BesselTen", bessel | bandPass | given, 10},
        Acceptance{"HighestMaskBit", butterworth | lowPass | given | poleMask, 15, {.poleMask = 0x7FFF}},
        Acceptance{"MaskWithoutItsOptionIsNotRead", butterworth | lowPass | given, 4, {.poleMask = 0xFFFFFFFF}},
        Acceptance{"UnusedBit", butterworth | lowPass | given | 0x800},
        Acceptance{"HighestBits", butterworth | lowPass | given | 0xFFFE0000},
        Acceptance{"ResonatorWithExtraZeros", resonator | bandPass | cutoffs | extraZeros, 0, {.qFactor = 5}},
        Acceptance{"Integral", proportionalIntegral | given, 1}),
    [](const auto& instance) { return instance.param.name; });

TEST_F(FilterTest, KnowsOfNoDesignWhenItIsNew) {
    EXPECT_EQ(filter.errorCode, 0x30000201U);
    EXPECT_FALSE(filter.iirValid);
    EXPECT_FALSE(filter.firValid);
}

TEST_F(FilterTest, ForgetsTheDesignBeforeWhenTheOptionsAreRefused) {
    make(lowPassOf(butterworth, 4, 0.1));
    filter.firValid = true;
    EXPECT_EQ(run(filter, lowPassOf(butterworth, 16, 0.1)), filter_error::wrongArguments);
    EXPECT_FALSE(filter.iirValid);
    EXPECT_FALSE(filter.firValid);
}

TEST_F(FilterTest, ForgetsTheFailureBeforeWhenADesignSucceeds) {
    ASSERT_EQ(run(filter, lowPassOf(butterworth, 16, 0.1)), filter_error::wrongArguments);
    make(lowPassOf(butterworth, 4, 0.1));
    EXPECT_EQ(filter.errorCode, filter_error::none);
    EXPECT_EQ(messageOf(filter), "");
    EXPECT_TRUE(filter.optionsOk);
}

TEST_F(FilterTest, SaysThatAFirFilterIsGoneAfterADesign) {
    filter.firValid = true;
    make(lowPassOf(butterworth, 4, 0.1));
    EXPECT_FALSE(filter.firValid);
}

}  // namespace
}  // namespace torvik::test
